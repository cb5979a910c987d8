#include "calibration/TapTable.h"

#include <bit>

namespace zel {

namespace {

void AppendWord(std::vector<std::uint8_t>& bytes, std::uint32_t word) {
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::uint8_t>(word >> shift));
}

void AppendFloat(std::vector<std::uint8_t>& bytes, float value) {
    AppendWord(bytes, std::bit_cast<std::uint32_t>(value));
}

std::size_t Index(int i) { return static_cast<std::size_t>(i); }

}  // namespace

int TableOfFileName(std::string_view path) {
    const std::string_view name = path.substr(path.find_last_of("/\\") + 1);
    int select = 0;
    while (select < kTapTables && name.find(kReadoutNames[select]) == std::string_view::npos) ++select;
    return select < kTapTables ? select : -1;
}

bool IsGoodRow(const TapRow& row, int taps) {
    for (int tap = 0; tap < taps; ++tap) {
        if (!IsGoodGain(row.gains[Index(tap)])) return false;
    }
    return IsGoodLevel(row.millivolts);
}

bool TapTable::IsValidShape(int rows, int columns) {
    return rows >= 1 && rows <= kMostRows && (columns == 3 || columns == 5);
}

TapTable::TapTable(int rows, int taps) : m_Taps(taps), m_Millivolts(Index(rows)) {
    for (int tap = 0; tap < taps; ++tap) m_Gains[Index(tap)].resize(Index(rows));
}

TapRow TapTable::Row(int row) const {
    TapRow values;
    values.millivolts = m_Millivolts[Index(row)];
    for (int tap = 0; tap < m_Taps; ++tap) values.gains[Index(tap)] = m_Gains[Index(tap)][Index(row)];
    return values;
}

void TapTable::SetRow(int row, const TapRow& values) {
    m_Millivolts[Index(row)] = values.millivolts;
    for (int tap = 0; tap < m_Taps; ++tap) m_Gains[Index(tap)][Index(row)] = values.gains[Index(tap)];
}

Sha1::Digest TapTable::Digest() const {
    std::vector<std::uint8_t> bytes;
    AppendWord(bytes, static_cast<std::uint32_t>(m_Taps));
    AppendWord(bytes, static_cast<std::uint32_t>(Rows()));
    for (const float value : m_Millivolts) AppendFloat(bytes, value);
    for (const std::vector<float>& column : m_Gains) {
        for (const float value : column) AppendFloat(bytes, value);
    }
    return Sha1::Of(bytes);
}

std::vector<std::uint8_t> TapTable::FlashBytes() const {
    std::vector<std::uint8_t> bytes;
    for (int row = 0; row < Rows(); ++row) {
        AppendFloat(bytes, m_Millivolts[Index(row)]);
        for (int tap = 0; tap < m_Taps; ++tap) AppendFloat(bytes, m_Gains[Index(tap)][Index(row)]);
    }
    return bytes;
}

TapRow DecodeRow(std::span<const std::uint8_t> bytes) {
    const auto value = [&](std::size_t column) {
        std::uint32_t word = 0;
        for (std::size_t i = 4; i-- > 0;) word = word << 8 | bytes[4 * column + i];
        return std::bit_cast<float>(word);
    };
    TapRow row;
    row.millivolts = value(0);
    for (std::size_t column = 1; column < bytes.size() / 4; ++column) row.gains[column - 1] = value(column);
    return row;
}

}  // namespace zel
