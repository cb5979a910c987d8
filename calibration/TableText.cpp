#include "calibration/TableText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <span>

namespace zel {

namespace {

constexpr std::size_t kRowNumbers = 1 + kMostTaps;
constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kWhiteSpace = " \t\r\n";

void AppendSevenDecimals(std::string& text, float value) {
    std::array<char, 64> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, 7);
    text.append(digits.data(), end.ptr);
}

// The lines of a text one after the other.
class Lines {
  public:
    explicit Lines(std::string_view text) : m_Rest(text) {}

    bool AtEnd() const { return m_Rest.find_first_not_of(kWhiteSpace) == std::string_view::npos; }
    std::string_view Next() {
        m_Ended = m_Rest.empty();
        if (!m_Ended) ++m_Line;
        const std::size_t end = m_Rest.find('\n');
        const std::string_view line = m_Rest.substr(0, end);
        m_Rest.remove_prefix(end == std::string_view::npos ? m_Rest.size() : end + 1);
        return line;
    }
    TableTextFault Fault(TableTextFault::Kind kind, int number, int row = 0) const {
        return {kind, number, row, m_Line, m_Ended};
    }

  private:
    std::string_view m_Rest;
    int m_Line = 0;
    bool m_Ended = false;
};

// The numbers that a line begins with, into `numbers`; how many there are. One more when something follows them that
// may not.
template <class Number>
int ParseNumbers(std::string_view line, std::span<Number> numbers, Remarks remarks) {
    int count = 0;
    for (Number& number : numbers) {
        line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
        if (line.starts_with('+') && !line.starts_with("+-")) line.remove_prefix(1);
        const auto [stop, error] = std::from_chars(line.data(), line.data() + line.size(), number);
        if (error != std::errc()) break;
        const bool separated = stop == line.data() + line.size() || kBlanks.find(*stop) != std::string_view::npos;
        if (!separated) break;
        line.remove_prefix(static_cast<std::size_t>(stop - line.data()));
        ++count;
    }
    const bool whole = remarks == Remarks::kAllowed || line.find_first_not_of(kBlanks) == std::string_view::npos;
    return count == static_cast<int>(numbers.size()) && !whole ? count + 1 : count;
}

bool FitsFloat(double value) { return std::abs(value) <= double{std::numeric_limits<float>::max()}; }

// "ROWS TAPS" and the rows. Number: the precision in which the file is read.
template <class Number>
std::optional<TapTable> ParseTable(Lines& lines, Remarks remarks, TableTextFault& fault) {
    using Kind = TableTextFault::Kind;
    const auto fail = [&](Kind kind, int number, int row = 0) {
        fault = lines.Fault(kind, number, row);
        return std::nullopt;
    };
    std::array<int, 2> shape{};
    if (const int got = ParseNumbers<int>(lines.Next(), shape, remarks); got != 2) return fail(Kind::kShape, got);
    const auto [rows, taps] = shape;
    if (taps != 2 && taps != 4) return fail(Kind::kTaps, taps);
    if (!TapTable::IsValidShape(rows, taps + 1)) return fail(Kind::kRows, rows);
    TapTable table(rows, taps);
    for (int row = 0; row < rows; ++row) {
        std::array<Number, kRowNumbers> numbers{};
        const int got = ParseNumbers<Number>(lines.Next(), numbers, remarks);
        if (got != static_cast<int>(kRowNumbers)) return fail(Kind::kRow, got, row + 1);
        const auto unfit = std::ranges::find_if_not(numbers, [](Number number) { return FitsFloat(double{number}); });
        if (unfit != numbers.end()) return fail(Kind::kValue, static_cast<int>(unfit - numbers.begin()), row + 1);
        TapRow values;
        values.millivolts = static_cast<float>(numbers[0]);
        for (std::size_t tap = 0; tap < kMostTaps; ++tap) values.gains[tap] = static_cast<float>(numbers[tap + 1]);
        table.SetRow(row, values);
    }
    if (remarks == Remarks::kNone && !lines.AtEnd()) return fail(Kind::kMoreLines, rows);
    return table;
}

}  // namespace

std::string FormatCacheFile(const TapTable& table, const Sha1::Digest& digest) {
    std::string text;
    for (std::size_t i = 0; i < digest.size(); ++i) {
        text += std::to_string(digest[i]);
        text += i + 1 < digest.size() ? ' ' : '\n';
    }
    text += std::to_string(table.Rows()) + " " + std::to_string(table.Taps()) + "\n";
    for (int row = 0; row < table.Rows(); ++row) {
        const TapRow values = table.Row(row);
        AppendSevenDecimals(text, values.millivolts);
        for (int tap = 0; tap < table.Taps(); ++tap) {
            text += ' ';
            AppendSevenDecimals(text, values.gains[static_cast<std::size_t>(tap)]);
        }
        text += table.Taps() == 2 ? " 0 0\n" : "\n";
    }
    return text;
}

std::optional<CacheFile> ParseCacheFile(std::string_view text, TableTextFault& fault) {
    Lines lines(text);
    std::array<int, std::tuple_size_v<Sha1::Digest>> numbers{};
    int got = ParseNumbers<int>(lines.Next(), numbers, Remarks::kNone);
    Sha1::Digest digest{};
    for (int i = 0; i < std::min(got, static_cast<int>(digest.size())); ++i) {
        const int number = numbers[static_cast<std::size_t>(i)];
        if (number < 0 || number > 255) got = i;
        digest[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(number);
    }
    if (got != static_cast<int>(digest.size())) {
        fault = lines.Fault(TableTextFault::Kind::kDigest, got);
        return std::nullopt;
    }
    std::optional<TapTable> table = ParseTable<float>(lines, Remarks::kNone, fault);
    if (!table) return std::nullopt;
    return CacheFile{digest, std::move(*table)};
}

std::optional<TapTable> ParseMasterFile(std::string_view text, Remarks remarks, TableTextFault& fault) {
    Lines lines(text);
    return ParseTable<double>(lines, remarks, fault);
}

std::string DigestText(const Sha1::Digest& digest) {
    std::string text;
    for (const std::uint8_t byte : digest) {
        std::array<char, 4> digits{};
        std::snprintf(digits.data(), digits.size(), "%x", byte);
        text += digits.data();
    }
    return text;
}

}  // namespace zel
