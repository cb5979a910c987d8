#include "tools/zelcam/camera/ParameterValue.h"

#include <fmt/format.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "include/ZelParameters.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

constexpr std::size_t kTextBytes = 32;
// All ones: the model has no such value.
constexpr long long kNoWideValue = -1;
constexpr std::size_t kRegionWords = 6;
constexpr std::size_t kMatrixElements = 9;
constexpr const char* kRegionNames[kRegionWords] = {"x", "y", "width", "height", "xbin", "ybin"};

template <class Value>
Value Load(const void* bytes, std::size_t index) {
    Value value;
    std::memcpy(&value, static_cast<const char*>(bytes) + index * sizeof value, sizeof value);
    return value;
}

template <class Value>
void Store(void* bytes, std::size_t index, Value value) {
    std::memcpy(static_cast<char*>(bytes) + index * sizeof value, &value, sizeof value);
}

void StoreNumber(void* bytes, std::size_t index, const std::string& what, const std::string& text) {
    constexpr long long kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr long long kHighest = std::numeric_limits<std::uint32_t>::max();
    Store(bytes, index, static_cast<std::uint32_t>(ParseInteger(what, text, kLowest, kHighest)));
}

void StoreRegion(void* bytes, const std::string& text) {
    const std::string form = "six numbers x,y,width,height,xbin,ybin";
    std::size_t start = 0;
    for (std::size_t i = 0; i < kRegionWords; ++i) {
        const std::size_t end = text.find(',', start);
        const bool last = i + 1 == kRegionWords;
        if ((end == std::string::npos) != last) throw Failure("ROI_BIN '" + text + "'", "not " + form, "", kUsage);
        StoreNumber(bytes, i, "ROI_BIN", text.substr(start, end - start));
        start = end + 1;
    }
}

std::string MatrixText(const void* bytes) {
    std::string text;
    for (std::size_t i = 0; i < kMatrixElements; ++i) {
        text += fmt::format("{}{:.4g}", i == 0 ? "" : i % 3 == 0 ? "; " : " ", Load<double>(bytes, i));
    }
    return text;
}

}  // namespace

long long ParseInteger(const std::string& what, const std::string& text, long long lowest, long long highest) {
    const std::string digits = Trim(text);
    const bool hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
    char* end = nullptr;
    const long long value = std::strtoll(digits.c_str(), &end, hexadecimal ? 16 : 10);
    if (digits.empty() || *end != '\0') {
        throw Failure(what + " '" + text + "'", "not a whole number", "write it like 5000 or 0x1388", kUsage);
    }
    if (value < lowest || value > highest) {
        throw Failure(what + " '" + text + "'", "outside " + std::to_string(lowest) + ".." + std::to_string(highest),
                      "", kUsage);
    }
    return value;
}

ParameterValue ParameterValue::Parse(const ParameterInfo& info, const std::string& text) {
    ParameterValue value(info.kind);
    switch (info.kind) {
        case ValueKind::kNumber:
        case ValueKind::kSigned:
            StoreNumber(value.Data(), 0, info.name, text);
            break;
        case ValueKind::kRegion:
            StoreRegion(value.Data(), text);
            break;
        case ValueKind::kText:
            if (text.size() >= kTextBytes) {
                throw Failure(std::string(info.name) + " '" + text + "'", "longer than 31 characters", "", kUsage);
            }
            std::memcpy(value.Data(), text.data(), text.size());
            break;
        default:
            throw Failure(info.name, "can't be written", "", kUsage);
    }
    return value;
}

long long ParameterValue::Integer() const {
    switch (m_Kind) {
        case ValueKind::kSigned:
            return Load<std::int32_t>(Data(), 0);
        case ValueKind::kWide:
            return Load<std::int64_t>(Data(), 0);
        default:
            return Load<std::uint32_t>(Data(), 0);
    }
}

std::string ParameterValue::Text() const {
    switch (m_Kind) {
        case ValueKind::kText:
            return {m_Bytes.data(), strnlen(m_Bytes.data(), kTextBytes)};
        case ValueKind::kMatrix:
            return MatrixText(Data());
        case ValueKind::kWide:
            return Integer() == kNoWideValue ? "none" : std::to_string(Load<std::uint64_t>(Data(), 0));
        case ValueKind::kRegion: {
            std::string text;
            for (std::size_t i = 0; i < kRegionWords; ++i) {
                text += (i ? "," : "") + std::to_string(Load<std::uint32_t>(Data(), i));
            }
            return text;
        }
        default:
            return std::to_string(Integer());
    }
}

Json ParameterValue::ToJson() const {
    switch (m_Kind) {
        case ValueKind::kText:
            return Text();
        case ValueKind::kWide:
            return Integer() == kNoWideValue ? Json() : Json(Load<std::uint64_t>(Data(), 0));
        case ValueKind::kRegion: {
            Json json;
            for (std::size_t i = 0; i < kRegionWords; ++i) json[kRegionNames[i]] = Load<std::uint32_t>(Data(), i);
            return json;
        }
        case ValueKind::kMatrix: {
            Json json = Json::array();
            for (std::size_t i = 0; i < kMatrixElements; ++i) json.push_back(Load<double>(Data(), i));
            return json;
        }
        default:
            return Integer();
    }
}

std::string ValueRange::Text() const {
    return known ? std::to_string(minimum) + ".." + std::to_string(maximum) : "unknown";
}

ValueRange RangeFromWords(int minimum, int maximum, int standard) {
    if (maximum >= minimum) return {true, minimum, maximum, standard};
    return {true, static_cast<std::uint32_t>(minimum), static_cast<std::uint32_t>(maximum),
            static_cast<std::uint32_t>(standard)};
}

ValueRange ScaledRange(const ValueRange& range, long long factor, long long divisor) {
    ValueRange scaled = range;
    scaled.minimum = (range.minimum * factor + divisor - 1) / divisor;
    scaled.maximum = range.maximum * factor / divisor;
    scaled.standard = range.standard * factor / divisor;
    return scaled;
}

}  // namespace zelcam
