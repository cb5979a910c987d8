// Calibration tables going to the camera's flash.
#include <algorithm>
#include <vector>

#include "tapbalance/TapBalance.h"

namespace zel {

namespace {

constexpr const char* kSetConfig = "TapBalance::SetTableConfig";
constexpr const char* kSetData = "TapBalance::SetTableData";
constexpr const char* kWriteConfig = "TapBalance::WriteTableConfigToCamera";
constexpr const char* kWriteData = "TapBalance::WriteDataToCamera";
constexpr const char* kTest = "TapBalance::FlashTest";

std::uint64_t SizeInBytes(const TapTable& table) {
    return std::uint64_t{static_cast<unsigned>(table.Rows())} * static_cast<unsigned>(RowBytes(table.Columns()));
}

}  // namespace

// Table 0 begins with page 1, table 1 with the next page behind it.
void TapBalance::LayOut() {
    const auto page_size = static_cast<unsigned>(m_Flash.PageSize());
    std::uint64_t position = page_size;
    for (Slot& slot : m_TapBalanceData) {
        slot.offset = static_cast<std::uint32_t>(position);
        if (slot.data) position += (SizeInBytes(*slot.data) + page_size - 1) / page_size * page_size;
    }
}

// The end of the last table that LayOut makes room for.
std::uint64_t TapBalance::TablesEnd() const {
    std::uint64_t end = 0;
    for (const Slot& slot : m_TapBalanceData) {
        if (slot.data) end = std::max(end, slot.offset + SizeInBytes(*slot.data));
    }
    return end;
}

// The directory fits page 0, and the tables the flash.
bool TapBalance::FitsFlash() const {
    return m_Flash.PageSize() >= static_cast<int>(TableDirectory::kSize) && TablesEnd() <= m_Flash.Size();
}

bool TapBalance::SetTableConfig(int table, int rows, int num_taps) {
    const platform::ScopedLock lock(m_Lock);
    if (!IsTable(table) || rows < 1 || rows > TapTable::kMostRows) {
        ZEL_LOG(m_Logger, kLogError, kSetConfig, "***ERROR***: table:%d rows:%d is out of bounds", table, rows);
        return false;
    }
    if (num_taps != 2 && num_taps != 4) {
        ZEL_LOG(m_Logger, kLogError, kSetConfig, "***ERROR***: m_Numcols is invalid");
        return false;
    }
    if (!m_Flash.Prepare()) return false;
    return Guarded(kSetConfig, [&]() ZEL_REQUIRES(m_Lock) {
        std::optional<TapTable> fresh(std::in_place, rows, num_taps);
        Slot& slot = m_TapBalanceData[Index(table)];
        slot.data.swap(fresh);
        LayOut();
        if (!FitsFlash()) {
            ZEL_LOG(m_Logger, kLogError, kSetConfig, "***ERROR***: table:%d rows:%d num_taps:%d does not fit the flash",
                    table, rows, num_taps);
            slot.data.swap(fresh);
            LayOut();
            return false;
        }
        slot.configured = true;
        slot.filled = false;
        Publish(table, nullptr);
        return true;
    });
}

bool TapBalance::SetTableData(int row, float millivolts, const float* tap_gains) {
    const platform::ScopedLock lock(m_Lock);
    const int select = m_TableSelect;
    if (!IsTable(select) || !m_TapBalanceData[Index(select)].configured || !m_TapBalanceData[Index(select)].data) {
        ZEL_LOG(m_Logger, kLogError, kSetData, "***ERROR***: table %d is not configured", select);
        return false;
    }
    TapTable& table = *m_TapBalanceData[Index(select)].data;
    TapRow values;
    values.millivolts = millivolts;
    if (tap_gains) std::copy_n(tap_gains, table.Taps(), values.gains.begin());
    if (!tap_gains || row < 0 || row >= table.Rows() || !IsGoodRow(values, table.Taps())) {
        ZEL_LOG(m_Logger, kLogError, kSetData, "***ERROR***: row:%d mV:%f is no row of this table", row,
                double{millivolts});
        return false;
    }
    table.SetRow(row, values);
    return true;
}

// Both tables have their place in the flash.
bool TapBalance::ReadyToWrite(const char* function_name) {
    if (!m_Flash.Prepare()) return false;
    LayOut();
    for (const Slot& slot : m_TapBalanceData) {
        if (slot.configured && slot.data && FitsFlash()) continue;
        ZEL_LOG(m_Logger, kLogError, function_name, "***ERROR***: table %d is not configured or does not fit the flash",
                static_cast<int>(&slot - m_TapBalanceData.data()));
        return false;
    }
    return true;
}

bool TapBalance::WriteTableConfigToCamera() {
    const platform::ScopedLock lock(m_Lock);
    return Guarded(kWriteConfig, [&]() ZEL_REQUIRES(m_Lock) {
        if (!ReadyToWrite(kWriteConfig)) return false;
        TableDirectory directory;
        directory.num_tables = kTapTables;
        for (int select = 0; select < kTapTables; ++select) {
            const Slot& slot = m_TapBalanceData[Index(select)];
            directory.entries[Index(select)] = {slot.data->Rows(), slot.data->Columns(), slot.offset,
                                                slot.data->Digest()};
        }
        return m_Flash.ReadPageFromFlash(0) && m_Flash.WriteData(0, directory.Encode()) && m_Flash.WritePageToFlash(0);
    });
}

bool TapBalance::WriteDataToCamera() {
    const platform::ScopedLock lock(m_Lock);
    return Guarded(kWriteData, [&]() ZEL_REQUIRES(m_Lock) {
        if (!ReadyToWrite(kWriteData)) return false;
        for (Slot& slot : m_TapBalanceData) {
            const int first_page = static_cast<int>(slot.offset / static_cast<unsigned>(m_Flash.PageSize()));
            if (!m_Flash.WritePages(first_page, slot.data->FlashBytes())) return false;
            slot.filled = true;
        }
        return CalculateLUT();
    });
}

bool TapBalance::TestPage(int page, std::span<const std::uint8_t> content) {
    if (!m_Flash.WritePages(page, content)) return false;
    // Another page goes through the buffer in between, so that what is read next comes from the flash.
    std::vector<std::uint8_t> read(content.size());
    if (!m_Flash.ReadPageFromFlash(0) || !m_Flash.ReadPageFromFlash(page) || !m_Flash.ReadData(0, read)) return false;
    return std::ranges::equal(read, content);
}

bool TapBalance::FlashTest() {
    const platform::ScopedLock lock(m_Lock);
    if (!m_Flash.Prepare()) return false;
    return Guarded(kTest, [&]() ZEL_REQUIRES(m_Lock) {
        const int page = m_Flash.NumPages() - 1;
        if (page == 0) {
            ZEL_LOG(m_Logger, kLogError, kTest, "***ERROR***: a flash of one page has none for the test");
            return false;
        }
        const auto page_size = static_cast<std::size_t>(m_Flash.PageSize());
        const std::uint64_t start = std::uint64_t{static_cast<unsigned>(page)} * page_size;
        TableDirectory directory;
        // An empty directory is no obstacle.
        if (ReadDirectory(directory)) {
            for (const TableEntry& entry : directory.entries) {
                const int row_bytes = RowBytes(entry.columns);
                const std::uint64_t size =
                    std::uint64_t{static_cast<unsigned>(entry.rows)} * static_cast<unsigned>(row_bytes);
                if (entry.offset + size > start) {
                    ZEL_LOG(m_Logger, kLogError, kTest, "***ERROR***: the last page holds a table");
                    return false;
                }
            }
        }
        std::vector<std::uint8_t> before(page_size);
        if (!m_Flash.ReadAt(start, before)) return false;
        std::vector<std::uint8_t> pattern(page_size);
        bool passed = true;
        for (const unsigned first : {0x55u, 0xAAu}) {
            for (std::size_t i = 0; i < page_size; ++i) pattern[i] = static_cast<std::uint8_t>(first + 7 * i);
            passed = passed && TestPage(page, pattern);
        }
        const bool restored = TestPage(page, before);
        ZEL_LOG(m_Logger, passed && restored ? kLogTrace : kLogError, kTest, "page %d: %s, %s", page,
                passed ? "passed" : "***ERROR***: failed", restored ? "restored" : "***ERROR***: not restored");
        return passed && restored;
    });
}

}  // namespace zel
