/// @file
/// A parameter's value, whatever its layout, and its translation to and from text.
#ifndef ZEL_LAYER_PARAMETERVALUE_H
#define ZEL_LAYER_PARAMETERVALUE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "ZelParameters.h"
#include "zel/Error.h"
#include "zel/ParameterInfo.h"
#include "zel/Region.h"
#include "zel/detail/Texts.h"

namespace zel {

/// Nine numbers, row by row.
using Matrix = std::array<double, 9>;

/// The whole number in `text`, decimal or 0x..., between the two bounds. Throws Error (invalid_argument) naming `what`.
inline long long parse_integer(std::string_view what, std::string_view text, long long lowest, long long highest) {
    const std::string digits = detail::trimmed(text);
    const std::string name = std::string(what) + " '" + std::string(text) + "'";
    const bool hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
    char* end = nullptr;
    const long long value = std::strtoll(digits.c_str(), &end, hexadecimal ? 16 : 10);
    if (digits.empty() || *end != '\0') {
        throw Error(ErrorKind::invalid_argument, name, "not a whole number", "write it like 5000 or 0x1388");
    }
    if (value < lowest || value > highest) {
        throw Error(ErrorKind::invalid_argument, name,
                    "outside " + std::to_string(lowest) + ".." + std::to_string(highest));
    }
    return value;
}

/// One value in the layout that the SDK reads and writes.
class ParameterValue {
  public:
    /// Bytes that the widest value takes: nine doubles.
    static constexpr std::size_t kCapacity = 72;

    /// A value of this kind, all zeros.
    explicit ParameterValue(ValueKind kind) : m_Kind(kind) {}

    /// The value as a user writes it: a number (decimal or 0x...), "x,y,width,height,xbin,ybin", or a text of up to 31
    /// characters. Throws Error (invalid_argument).
    static ParameterValue parse(const ParameterInfo& info, std::string_view text) {
        ParameterValue value(info.kind);
        switch (info.kind) {
            case ValueKind::number:
            case ValueKind::signed_number:
                value.store_number(0, info.name, text);
                break;
            case ValueKind::region:
                value.store_region(info.name, text);
                break;
            case ValueKind::text:
                if (text.size() >= kTextBytes) {
                    throw Error(ErrorKind::invalid_argument, std::string(info.name) + " '" + std::string(text) + "'",
                                "longer than 31 characters");
                }
                std::memcpy(value.data(), text.data(), text.size());
                break;
            default:
                throw Error(ErrorKind::invalid_argument, info.name, "can't be written");
        }
        return value;
    }

    /// What it is.
    ValueKind kind() const { return m_Kind; }
    /// The bytes that GetParameter() and SetParameter() take, kCapacity of them.
    void* data() { return m_Bytes.data(); }
    /// The same for a value that is only read.
    const void* data() const { return m_Bytes.data(); }

    /// Numbers and the wide kind as one integer; the first word of the others.
    long long integer() const {
        switch (m_Kind) {
            case ValueKind::signed_number:
                return load<std::int32_t>(0);
            case ValueKind::wide:
                return load<std::int64_t>(0);
            default:
                return load<std::uint32_t>(0);
        }
    }
    /// Region of interest and binning, of the kind `region`.
    ZelRoiBin region() const { return load<ZelRoiBin>(0); }
    /// Nine doubles, of the kind `matrix`.
    Matrix matrix() const { return load<Matrix>(0); }
    /// Whether a model-dependent 64-bit value is there at all.
    bool is_none() const { return m_Kind == ValueKind::wide && integer() == kNoWideValue; }

    /// The value as text, in the form that parse() takes where it can be written.
    std::string text() const {
        switch (m_Kind) {
            case ValueKind::text:
                return {m_Bytes.data(), std::find(m_Bytes.data(), m_Bytes.data() + kTextBytes, '\0')};
            case ValueKind::matrix:
                return matrix_text();
            case ValueKind::wide:
                return is_none() ? "none" : std::to_string(load<std::uint64_t>(0));
            case ValueKind::region:
                return text_of(region());
            default:
                return std::to_string(integer());
        }
    }

    /// Of the same kind, with the same text.
    bool operator==(const ParameterValue& other) const { return m_Kind == other.m_Kind && text() == other.text(); }

  private:
    static constexpr std::size_t kTextBytes = 32;
    // All ones: the model has no such value.
    static constexpr long long kNoWideValue = -1;
    static constexpr std::size_t kRegionWords = 6;

    template <class Value>
    Value load(std::size_t index) const {
        Value value;
        std::memcpy(&value, m_Bytes.data() + index * sizeof value, sizeof value);
        return value;
    }

    void store_number(std::size_t index, std::string_view what, std::string_view text) {
        constexpr long long kLowest = (std::numeric_limits<std::int32_t>::min)();
        constexpr long long kHighest = (std::numeric_limits<std::uint32_t>::max)();
        const auto word = static_cast<std::uint32_t>(parse_integer(what, text, kLowest, kHighest));
        std::memcpy(m_Bytes.data() + index * sizeof word, &word, sizeof word);
    }

    void store_region(std::string_view what, std::string_view text) {
        std::size_t start = 0;
        for (std::size_t i = 0; i < kRegionWords; ++i) {
            const std::size_t end = text.find(',', start);
            const bool last = i + 1 == kRegionWords;
            if ((end == std::string_view::npos) != last) {
                throw Error(ErrorKind::invalid_argument, std::string(what) + " '" + std::string(text) + "'",
                            "not six numbers x,y,width,height,xbin,ybin");
            }
            store_number(i, what, text.substr(start, end - start));
            start = end + 1;
        }
    }

    std::string matrix_text() const {
        std::string text;
        const Matrix elements = matrix();
        for (std::size_t i = 0; i < elements.size(); ++i) {
            char number[32];
            std::snprintf(number, sizeof number, "%.4g", elements[i]);
            text += (i == 0 ? "" : i % 3 == 0 ? "; " : " ") + std::string(number);
        }
        return text;
    }

    ValueKind m_Kind;
    // Zeroed, so that an operation that answers without writing leaves a defined value.
    alignas(8) std::array<char, kCapacity> m_Bytes{};
};

}  // namespace zel

#endif
