#include "devices/sim/firmware/FlashCommands.h"

#include <bit>
#include <charconv>
#include <optional>

#include "devices/sim/firmware/FlashDirectory.h"

namespace zel::sim {

namespace {

constexpr const char* kDone = "OK";

std::string Hex(std::uint32_t value) {
    char text[8];
    const auto end = std::to_chars(text, text + sizeof text, value, 16).ptr;
    return std::string(text, end);
}

std::optional<std::uint32_t> HexNumber(std::string_view word) {
    std::uint32_t value = 0;
    const auto result = std::from_chars(word.data(), word.data() + word.size(), value, 16);
    if (result.ec != std::errc() || result.ptr != word.data() + word.size()) return std::nullopt;
    return value;
}

std::string Error(const char* why) { return std::string("ERR ") + why; }

}  // namespace

// A command taken apart: its letter, and its numbers or, for "f" and "p", its second letter.
struct FlashCommands::Command {
    explicit Command(std::string_view text);

    char letter = 0;
    char detail = 0;
    std::vector<std::uint32_t> numbers;
    bool good = true;
};

FlashCommands::Command::Command(std::string_view text) {
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (end > 0) words.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    good = words.size() >= 2 && words[0].size() == 1;
    if (!good) return;
    letter = words[0][0];
    if (letter == 'f' || letter == 'p') {
        good = words.size() == 2 && words[1].size() == 1;
        detail = words[1][0];
        return;
    }
    for (std::size_t i = 1; i < words.size() && good; ++i) {
        const std::optional<std::uint32_t> number = HexNumber(words[i]);
        good = number.has_value();
        numbers.push_back(number.value_or(0));
    }
}

void FlashCommands::PowerCycle() {
    m_Flash.PowerCycle();
    m_SpoilNext = false;
    m_SpoiledAt = 0;
}

std::string FlashCommands::Answer(std::string_view arguments, std::chrono::microseconds& busy) {
    const Command command(arguments);
    if (!command.good) return Error("wrong arguments");
    switch (command.letter) {
        case 'f':
            return command.detail == 's' ? kDone : Error("unknown command");
        case 'p':
            if (command.detail == 's') return Hex(Flash::kPageSize);
            if (command.detail == 'n') return Hex(Flash::kPages);
            if (command.detail != 'c') return Error("unknown command");
            m_Flash.ClearBuffer();
            return kDone;
        case 'g':
        case 's':
            return Page(command, busy);
        case 'r':
            return Read(command);
        case 'w':
            return Write(command);
        default:
            return Error("unknown command");
    }
}

std::string FlashCommands::Page(const Command& command, std::chrono::microseconds& busy) {
    if (command.numbers.size() != 1) return Error("one page is needed");
    const bool load = command.letter == 'g';
    const bool done = load ? m_Flash.LoadPage(command.numbers[0]) : m_Flash.StorePage(command.numbers[0]);
    if (!done) return Error("no such page");
    busy += load ? m_Times.load : m_Times.store;
    return kDone;
}

std::string FlashCommands::Read(const Command& command) {
    if (command.numbers.size() != 2) return Error("an offset and a count are needed");
    const std::uint32_t offset = command.numbers[0];
    const std::span<const std::uint8_t> bytes = m_Flash.Read(offset, command.numbers[1]);
    if (bytes.empty()) return Error("outside the page");
    const std::optional<std::uint32_t> position = m_Flash.Position(offset);
    if (position) {
        const std::optional<std::uint32_t> gain = FirstGainOfRowAt(m_Flash.Content(), *position);
        if (gain) m_SpoiledAt = m_SpoilNext ? *gain : 0;
        if (gain) m_SpoilNext = false;
    }
    std::string text;
    for (std::uint32_t i = 0; i < bytes.size(); ++i) {
        const std::uint32_t into = position ? *position + i - m_SpoiledAt : 4;
        const bool spoiled = m_SpoiledAt != 0 && into < m_Spoiled.size();
        if (i > 0) text += ' ';
        text += Hex(spoiled ? m_Spoiled[into] : bytes[i]);
    }
    return text;
}

std::string FlashCommands::Write(const Command& command) {
    if (command.numbers.size() < 2) return Error("an offset and bytes are needed");
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 1; i < command.numbers.size(); ++i) {
        if (command.numbers[i] > 0xFF) return Error("no byte");
        bytes.push_back(static_cast<std::uint8_t>(command.numbers[i]));
    }
    return m_Flash.Write(command.numbers[0], bytes) ? kDone : Error("outside the page");
}

bool FlashCommands::BeginsRow(std::string_view arguments) const {
    const Command command(arguments);
    if (!command.good || command.letter != 'r' || command.numbers.size() != 2) return false;
    const std::optional<std::uint32_t> position = m_Flash.Position(command.numbers[0]);
    return position && FirstGainOfRowAt(m_Flash.Content(), *position);
}

void FlashCommands::SpoilNextRow(float gain) {
    const auto bits = std::bit_cast<std::uint32_t>(gain);
    for (std::size_t i = 0; i < m_Spoiled.size(); ++i) m_Spoiled[i] = static_cast<std::uint8_t>(bits >> (8 * i));
    m_SpoilNext = true;
}

}  // namespace zel::sim
