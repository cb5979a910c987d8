#include "devices/sim/firmware/FlashDirectory.h"

#include <algorithm>
#include <bit>

namespace zel::sim {

namespace {

constexpr std::size_t kEntry = 28;
constexpr std::size_t kDirectory = 1 + 2 * kEntry;
constexpr std::size_t kOffsets[2] = {0x400, 0x1000};  // neither is the beginning of a page

void Append(std::vector<std::uint8_t>& bytes, std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

void AppendFloat(std::vector<std::uint8_t>& bytes, float value) {
    Append(bytes, std::bit_cast<std::uint32_t>(value), 4);
}

std::uint32_t Number(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;) value = value << 8 | bytes[at + i];
    return value;
}

std::vector<std::uint8_t> RowsOf(const CalibrationTable& table) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t row = 0; row < table.Rows(); ++row) {
        AppendFloat(bytes, table.millivolts[row]);
        for (const auto& column : table.gains) AppendFloat(bytes, column[row]);
    }
    return bytes;
}

}  // namespace

Sha1::Digest DigestOf(const CalibrationTable& table) {
    std::vector<std::uint8_t> message;
    Append(message, table.gains.size(), 4);
    Append(message, table.Rows(), 4);
    for (const float level : table.millivolts) AppendFloat(message, level);
    for (const auto& column : table.gains) {
        for (const float gain : column) AppendFloat(message, gain);
    }
    return Sha1::Of(message);
}

std::vector<std::uint8_t> FlashContent(const CalibrationData& data) {
    if (data.Empty()) return {};
    std::vector<std::uint8_t> content = {2};
    for (std::size_t i = 0; i < data.tables.size(); ++i) {
        const CalibrationTable& table = data.tables[i];
        Append(content, table.Rows(), 2);
        Append(content, table.gains.size() + 1, 2);
        Append(content, kOffsets[i], 4);
        const Sha1::Digest digest = DigestOf(table);
        content.insert(content.end(), digest.begin(), digest.end());
    }
    for (std::size_t i = 0; i < data.tables.size(); ++i) {
        const std::vector<std::uint8_t> rows = RowsOf(data.tables[i]);
        content.resize(std::max(content.size(), kOffsets[i]), 0xFF);
        content.insert(content.end(), rows.begin(), rows.end());
    }
    return content;
}

std::optional<std::uint32_t> FirstGainOfRowAt(std::span<const std::uint8_t> memory, std::uint32_t position) {
    if (memory.size() < kDirectory || memory[0] == 0xFF) return std::nullopt;
    for (std::size_t entry = 1; entry < kDirectory; entry += kEntry) {
        const std::uint32_t rows = Number(memory, entry, 2);
        const std::uint32_t row_size = Number(memory, entry + 2, 2) * 4;
        const std::uint32_t offset = Number(memory, entry + 4, 4);
        if (row_size == 0 || position < offset) continue;
        const std::uint32_t behind = position - offset;
        if (behind % row_size == 0 && behind / row_size < rows) return position + 4;
    }
    return std::nullopt;
}

}  // namespace zel::sim
