#include "devices/sim/link/Faults.h"

#include <algorithm>
#include <charconv>
#include <sstream>

#include "devices/kit/Entry.h"

namespace zel::sim {

namespace {

struct FaultRow {
    const char* name;
    FaultKind kind;
    FaultOccasion occasion;
    bool needs_argument;
};

constexpr FaultRow kFaults[] = {
    {"short-send", FaultKind::kShortSend, FaultOccasion::kExchange, false},
    {"one-byte", FaultKind::kOneByte, FaultOccasion::kExchange, false},
    {"no-reply", FaultKind::kNoReply, FaultOccasion::kExchange, false},
    {"delay", FaultKind::kDelay, FaultOccasion::kExchange, true},
    {"truncate", FaultKind::kTruncate, FaultOccasion::kExchange, true},
    {"garbage", FaultKind::kGarbage, FaultOccasion::kExchange, false},
    {"garble", FaultKind::kGarble, FaultOccasion::kExchange, false},
    {"bad-gain", FaultKind::kBadGain, FaultOccasion::kTableRow, false},
    {"nan-gain", FaultKind::kNanGain, FaultOccasion::kTableRow, false},
    {"oversize", FaultKind::kOversize, FaultOccasion::kExchange, false},
    {"exception", FaultKind::kException, FaultOccasion::kExchange, true},
    {"unplug", FaultKind::kUnplug, FaultOccasion::kExchange, false},
    {"lose", FaultKind::kLose, FaultOccasion::kFrame, false},
    {"stall", FaultKind::kStall, FaultOccasion::kFrame, true},
    {"unplug-frame", FaultKind::kUnplugFrame, FaultOccasion::kFrame, false},
    {"unplug-connect", FaultKind::kUnplugConnect, FaultOccasion::kConnect, false},
    {"unplug-start", FaultKind::kUnplugStart, FaultOccasion::kStart, false},
    {"unplug-stop", FaultKind::kUnplugStop, FaultOccasion::kStop, false},
    {"unplug-close", FaultKind::kUnplugClose, FaultOccasion::kClose, false},
};

const FaultRow* FindRow(std::string_view name) {
    for (const FaultRow& row : kFaults) {
        if (name == row.name) return &row;
    }
    return nullptr;
}

FaultOccasion OccasionOf(FaultKind kind) {
    for (const FaultRow& row : kFaults) {
        if (row.kind == kind) return row.occasion;
    }
    return FaultOccasion::kExchange;
}

bool ReadNumber(std::string_view text, int& number) {
    const bool hexadecimal = text.substr(0, 2) == "0x";
    if (hexadecimal) text.remove_prefix(2);
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, hexadecimal ? 16 : 10);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && number >= 0;
}

bool ReadOption(std::string_view word, Fault& fault) {
    const std::size_t equals = word.find('=');
    const std::string_view name = word.substr(0, equals);
    std::string value(equals == std::string_view::npos ? "" : word.substr(equals + 1));
    if (name == "after") return ReadNumber(value, fault.after);
    if (name == "times") return ReadNumber(value, fault.times);
    if (name == "text") {
        std::replace(value.begin(), value.end(), '_', ' ');
        fault.text = value;
        return !value.empty();
    }
    if (name != "entry") return false;
    fault.entry = kit::EntryIndex(value);
    return fault.entry >= 0;
}

}  // namespace

std::optional<Fault> ParseFault(std::string_view line, std::string& error) {
    std::istringstream words{std::string(line)};
    std::string word;
    words >> word;
    const FaultRow* const row = FindRow(word);
    if (!row) {
        error = "unknown fault '" + word + "'";
        return std::nullopt;
    }
    Fault fault{row->kind};
    bool has_argument = false;
    while (words >> word) {
        const bool good = word.find('=') != std::string::npos    ? ReadOption(word, fault)
                          : has_argument || !row->needs_argument ? false
                                                                 : (has_argument = ReadNumber(word, fault.argument));
        if (good) continue;
        error = "bad argument '" + word + "'";
        return std::nullopt;
    }
    if (row->needs_argument && !has_argument) {
        error = std::string(row->name) + " needs a number";
        return std::nullopt;
    }
    return fault;
}

void Faults::Add(const Fault& fault) {
    const platform::ScopedLock lock(m_Lock);
    m_Faults.push_back(fault);
}

void Faults::Clear() {
    const platform::ScopedLock lock(m_Lock);
    m_Faults.clear();
    ++m_Clears;
}

bool Faults::Empty() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Faults.empty();
}

unsigned Faults::Clears() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Clears;
}

std::optional<Fault> Faults::Next(FaultOccasion occasion, int entry, std::string_view text) {
    const platform::ScopedLock lock(m_Lock);
    std::optional<Fault> happens;
    for (auto fault = m_Faults.begin(); fault != m_Faults.end();) {
        const bool concerned = OccasionOf(fault->kind) == occasion && (fault->entry < 0 || fault->entry == entry) &&
                               text.substr(0, fault->text.size()) == fault->text;
        if (!concerned) {
            ++fault;
        } else if (fault->after > 0) {
            --fault->after;
            ++fault;
        } else if (happens) {
            ++fault;
        } else {
            happens = *fault;
            if (fault->times > 0 && --fault->times == 0) {
                fault = m_Faults.erase(fault);
            } else {
                ++fault;
            }
        }
    }
    return happens;
}

}  // namespace zel::sim
