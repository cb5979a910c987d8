// Calibration tables coming from the camera's flash.
#include <algorithm>

#include "calibration/TableText.h"
#include "tapbalance/TapBalance.h"

namespace zel {

namespace {

constexpr const char* kConfig = "TapBalance::GetTableConfig";
constexpr const char* kData = "TapBalance::GetTableData";
constexpr const char* kHash = "TapBalance::GetTableHashFromCamera";
constexpr const char* kLoadTable = "TapBalance::LoadDataTableFromCamera";
constexpr const char* kLoad = "TapBalance::LoadDataFromCamera";

// As failures name the readouts.
constexpr const char* kSpacedNames[kTapTables] = {"20 mhz", "40 mhz"};

void LogBadRow(Logger& logger, const TapRow& row, int taps) {
    const double mv = double{row.millivolts};
    const auto gain = [&](std::size_t tap) { return double{row.gains[tap]}; };
    if (taps == 2) {
        ZEL_LOG(logger, kLogError, kLoadTable, "***ERROR***: BAD DATA - mV:%f  tap1_gain:%f  tap2_gain:%f\n", mv,
                gain(0), gain(1));
    } else {
        ZEL_LOG(logger, kLogError, kLoadTable,
                "***ERROR***: BAD DATA - mV:%f  tap1_gain:%f  tap2_gain:%f  tap3_gain:%f  tap4_gain:%f\n", mv, gain(0),
                gain(1), gain(2), gain(3));
    }
    ZEL_LOG(logger, kLogError, kLoadTable, "Re-reading the data\n");
}

}  // namespace

void TapBalance::ForgetFlash() {
    const platform::ScopedLock lock(m_Lock);
    m_Flash.Forget();
}

void TapBalance::LogDirectory(const TableDirectory& directory) {
    ZEL_LOG(m_Logger, kLogTrace, kConfig, "num_tables:%d", directory.num_tables);
    int number = 0;
    for (const TableEntry& entry : directory.entries) {
        ZEL_LOG(m_Logger, kLogTrace, kConfig, "table %d - num_rows:%d 0x%08x", number, entry.rows,
                static_cast<unsigned>(entry.rows));
        ZEL_LOG(m_Logger, kLogTrace, kConfig, "table %d - num_cols:%d 0x%08x", number, entry.columns,
                static_cast<unsigned>(entry.columns));
        ZEL_LOG(m_Logger, kLogTrace, kConfig, "table %d - offset  :%d 0x%08x", number, static_cast<int>(entry.offset),
                entry.offset);
        ZEL_LOG(m_Logger, kLogTrace, kConfig, "hash - %s", DigestText(entry.digest).c_str());
        ++number;
    }
}

bool TapBalance::ReadDirectory(TableDirectory& directory) {
    ZEL_LOG(m_Logger, kLogTrace, kConfig, "PAGE_TABLE_ENTRY size:%d", static_cast<int>(TableEntry::kSize));
    ZEL_LOG(m_Logger, kLogTrace, kConfig, "PAGE_TABLE_DIR size:%d", static_cast<int>(TableDirectory::kSize));
    TableDirectory::Bytes bytes{};
    m_NoTables = false;
    // Page 0 is loaded even when the camera has it in its buffer.
    if (!m_Flash.Prepare() || !m_Flash.ReadPageFromFlash(0) || !m_Flash.ReadAt(0, bytes)) return false;
    directory = TableDirectory::Decode(bytes);
    if (directory.num_tables >= TableDirectory::kEmpty) {
        m_NoTables = true;
        ZEL_LOG(m_Logger, kLogError, kConfig, "***ERROR***: Invalid table data.");
        return false;
    }
    if (m_Logger.Enabled()) LogDirectory(directory);
    return true;
}

// The camera's directory, with room made for the tables that it names.
bool TapBalance::ReadTableConfig(TableDirectory& directory) {
    const platform::ScopedLock lock(m_Lock);
    if (!IsTable(m_TableSelect)) {
        ZEL_LOG(m_Logger, kLogError, kConfig, "***ERROR***: TapBalance::GetTableConfig() - m_TableSelect is invalid");
        return false;
    }
    return Guarded(kConfig, [&]() ZEL_REQUIRES(m_Lock) {
        if (!ReadDirectory(directory)) return false;
        for (int table = 0; table < kTapTables; ++table) AllocateTable(table, directory.entries[Index(table)]);
        return true;
    });
}

bool TapBalance::GetTableConfig(int* rows, int* num_taps) {
    const platform::ScopedLock lock(m_Lock);
    TableDirectory directory;
    if (!ReadTableConfig(directory)) return false;
    const TableEntry& entry = directory.entries[Index(m_TableSelect)];
    if (rows) *rows = entry.rows;
    if (num_taps) *num_taps = entry.columns - 1;
    return true;
}

bool TapBalance::GetTableHashFromCamera(int select, Sha1::Digest& digest) {
    if (!IsTable(select)) {
        ZEL_LOG(m_Logger, kLogError, kHash, "***ERROR***: table %d is none", select);
        return false;
    }
    const platform::ScopedLock lock(m_Lock);
    return Guarded(kHash, [&]() ZEL_REQUIRES(m_Lock) {
        TableDirectory directory;
        if (!ReadDirectory(directory)) return false;
        digest = directory.entries[Index(select)].digest;
        return true;
    });
}

bool TapBalance::ReadRow(int select, int row, TapRow& values) {
    const platform::ScopedLock lock(m_Lock);
    if (!IsTable(select)) {
        ZEL_LOG(m_Logger, kLogError, kData, "TapBalance::GetTableData() m_TableSelect:%d is bad\n", select);
        return false;
    }
    const Slot& slot = m_TapBalanceData[Index(select)];
    if (!slot.configured || !slot.data) {
        ZEL_LOG(m_Logger, kLogError, kData, "TapBalance::GetTableData() m_TableConfigured[m_TableSelect:%d] == false\n",
                select);
        return false;
    }
    if (row < 0 || row >= slot.data->Rows()) {
        ZEL_LOG(m_Logger, kLogError, kData, "***ERROR***: TapBalance::GetTableData() - row:%d of %d", row,
                slot.data->Rows());
        return false;
    }
    std::array<std::uint8_t, RowBytes(1 + kMostTaps)> bytes{};
    const std::span stored = std::span(bytes).first(static_cast<std::size_t>(RowBytes(slot.data->Columns())));
    const std::uint64_t position = slot.offset + std::uint64_t{static_cast<unsigned>(row)} * stored.size();
    if (!m_Flash.ReadAt(position, stored)) return false;
    values = DecodeRow(stored);
    return true;
}

bool TapBalance::GetTableData(int row, float* millivolts, float* tap_gains) {
    const platform::ScopedLock lock(m_Lock);
    const int select = m_TableSelect;
    TapRow values;
    if (!ReadRow(select, row, values)) return false;
    if (millivolts) *millivolts = values.millivolts;
    const int taps = m_TapBalanceData[Index(select)].data->Taps();
    if (tap_gains) std::copy_n(values.gains.begin(), taps, tap_gains);
    return true;
}

bool TapBalance::GetTableData(int row, float* millivolts, float* tap1, float* tap2) {
    return GetRowOfTaps(row, millivolts, {tap1, tap2});
}

bool TapBalance::GetTableData(int row, float* millivolts, float* tap1, float* tap2, float* tap3, float* tap4) {
    return GetRowOfTaps(row, millivolts, {tap1, tap2, tap3, tap4});
}

// A row of a table that has exactly as many taps as there are places for gains; null places are left out.
bool TapBalance::GetRowOfTaps(int row, float* millivolts, std::initializer_list<float*> taps) {
    const platform::ScopedLock lock(m_Lock);
    const int select = m_TableSelect;
    if (IsTable(select) && m_TapBalanceData[Index(select)].data &&
        m_TapBalanceData[Index(select)].data->Taps() != static_cast<int>(taps.size())) {
        ZEL_LOG(m_Logger, kLogError, kData, "***ERROR***: m_Numcols is invalid");
        return false;
    }
    std::array<float, kMostTaps> gains{};
    if (!GetTableData(row, millivolts, gains.data())) return false;
    const float* gain = gains.data();
    for (float* const tap : taps) {
        if (tap) *tap = *gain;
        ++gain;
    }
    return true;
}

void TapBalance::SetPercentCompleteCallback(PercentCompleteCallback callback, void* context) {
    const platform::ScopedLock lock(m_Lock);
    m_PercentCompleteCallback = callback;
    m_PercentCompleteContext = context;
}

void TapBalance::ReportProgress(int done, int total) {
    PercentCompleteCallback callback = nullptr;
    void* context = nullptr;
    {
        const platform::ScopedLock lock(m_Lock);
        callback = m_PercentCompleteCallback;
        context = m_PercentCompleteContext;
    }
    if (!callback) return;
    ZEL_LOG(m_Logger, kLogTrace, kLoadTable, "Calling m_PercentCompleteCallback()");
    callback(context, done, total);
}

// Reads a whole table aside: a table in use keeps its place until this one is complete.
std::optional<TapTable> TapBalance::ReadTable(int select, const TableEntry& entry) {
    const int rows = entry.rows;
    const int taps = entry.columns - 1;
    if (rows <= 0 || rows > TapTable::kMostRows || taps <= 0 || taps > kMostTaps) {
        ZEL_LOG(m_Logger, kLogError, kLoadTable,
                "***ERROR***: rows:%d (<= 0 || > 1000) || num_taps:%d (<= 0 || > 4) is out of bounds returning false",
                rows, taps);
        return std::nullopt;
    }
    TapTable table(rows, taps);
    for (int row = 0; row < rows; ++row) {
        TapRow values;
        if (!ReadRow(select, row, values)) return std::nullopt;
        if (!IsGoodRow(values, taps)) {
            // On purpose: the second reading is taken whatever it holds.
            LogBadRow(m_Logger, values, taps);
            if (!ReadRow(select, row, values)) return std::nullopt;
        }
        table.SetRow(row, values);
        ReportProgress(row, rows);
    }
    return table;
}

bool TapBalance::LoadDataTableFromCamera(int select) {
    TableDirectory directory;
    if (!SelectTable(select) || !ReadTableConfig(directory)) {
        ZEL_LOG(m_Logger, kLogError, kLoadTable, "***ERROR***: GetTableConfig()");
        return false;
    }
    return Guarded(kLoadTable, [&] {
        std::optional<TapTable> table = ReadTable(select, directory.entries[Index(select)]);
        const platform::ScopedLock lock(m_Lock);
        return table && StoreTable(select, std::move(*table));
    });
}

// The directory is read once: nothing changes it while the tables come.
bool TapBalance::LoadDataFromCamera(TableCallback table_begins, void* context) {
    ZEL_LOG(m_Logger, kLogTrace, kLoad, "TapBalance::LoadDataFromCamera()\n");
    TableDirectory directory;
    if (!SelectTable(TAP_BALANCE_SELECT_20MHZ)) {
        ZEL_LOG(m_Logger, kLogError, kLoad, "SelectTable(TAP_BALANCE_SELECT_20MHZ) failed");
        return false;
    }
    if (!ReadTableConfig(directory)) {
        ZEL_LOG(m_Logger, kLogError, kLoad, "***ERROR***: GetTableConfig()");
        return false;
    }
    for (int select = 0; select < kTapTables; ++select) {
        const int rows = directory.entries[Index(select)].rows;
        const int taps = directory.entries[Index(select)].columns - 1;
        ZEL_LOG(m_Logger, kLogTrace, kLoad, "TapBalance::LoadDataFromCamera() - %s rows:%d num_taps:%d\n",
                kReadoutNames[select], rows, taps);
        if (rows < 1 || taps < 1) {
            ZEL_LOG(m_Logger, kLogError, kLoad, "***ERROR***: %s - rows (%d) < 0  || num_taps (%d) < 0",
                    kSpacedNames[select], rows, taps);
            return false;
        }
    }
    return Guarded(kLoad, [&] {
        std::array<std::optional<TapTable>, kTapTables> tables;
        for (int select = 0; select < kTapTables; ++select) {
            SelectTable(select);
            if (table_begins) table_begins(context, select);
            tables[Index(select)] = ReadTable(select, directory.entries[Index(select)]);
            if (!tables[Index(select)]) return false;
        }
        return StoreTables(tables);
    });
}

bool TapBalance::CheckDownload() {
    const platform::ScopedLock lock(m_Lock);
    return Guarded(kLoad, [&]() ZEL_REQUIRES(m_Lock) {
        TableDirectory directory;
        bool same = ReadDirectory(directory);
        for (int select = 0; select < kTapTables; ++select) {
            const Slot& slot = m_TapBalanceData[Index(select)];
            if (same && slot.data && slot.data->Digest() == directory.entries[Index(select)].digest) continue;
            ZEL_LOG(m_Logger, kLogError, kLoad,
                    "***ERROR***: table %d is not the one that the camera's directory names", select);
            DropTable(select);
            same = false;
        }
        if (!same) m_DataValid = false;
        return same;
    });
}

}  // namespace zel
