// Calibration tables in files: the cache that spares a camera's next connection the download, and master files.
#include <string_view>

#include "calibration/TableText.h"
#include "platform/Files.h"
#include "platform/User.h"
#include "tapbalance/TapBalance.h"

namespace zel {

namespace {

constexpr const char* kWrite = "TapBalance::WriteDataToFile";
constexpr const char* kLoad = "TapBalance::LoadDataFromFile";
constexpr const char* kLoadMaster = "TapBalance::LoadDataFromMasterFile";

constexpr std::size_t kLongestText = 63;
constexpr std::size_t kLargestFile = 1 << 20;  // far more than 1000 rows take

// A camera's text as part of a file name: whatever could be a path or a wildcard becomes '_'.
std::string NamePart(const char* text) {
    constexpr std::string_view kKept = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.+ ";
    std::string part = std::string(text ? text : "").substr(0, kLongestText);
    for (char& c : part) {
        if (kKept.find(c) == std::string_view::npos) c = '_';
    }
    return part;
}

void LogFault(Logger& logger, const char* function_name, const TableTextFault& fault) {
    using Kind = TableTextFault::Kind;
    const auto log = [&](const char* format, int first, int second = 0) {
        ZEL_LOG(logger, kLogError, function_name, format, first, second);
    };
    switch (fault.kind) {
        case Kind::kDigest:
            return log("***HASH PARSE ERROR***. Expected 20 bytes data and got %d", fault.number);
        case Kind::kShape:
            return log("***PARSE ERROR***. Row:0 Expected 2 cols of data and got %d", fault.number);
        case Kind::kTaps:
            return log("***PARSE ERROR***. %d taps: a table has 2 or 4", fault.number);
        case Kind::kRows:
            return log("***PARSE ERROR***. %d rows: a table has 1 to %d", fault.number, TapTable::kMostRows);
        case Kind::kRow:
            return log("***PARSE ERROR***. Row:%d Expected 5 cols of data and got %d", fault.row, fault.number);
        case Kind::kValue:
            return log("***PARSE ERROR***. Row:%d holds a value that no table can have", fault.row);
        case Kind::kMoreLines:
            return log("***PARSE ERROR***. More lines follow than the %d rows of the table", fault.number);
    }
}

}  // namespace

void TapBalance::SetCameraTexts(const char* first, const char* second) {
    const platform::ScopedLock lock(m_Lock);
    Guarded("TapBalance::SetCameraTexts", [&]() ZEL_REQUIRES(m_Lock) {
        m_CameraTexts = {NamePart(first), NamePart(second)};
        return true;
    });
}

// On purpose: without a folder the path begins with the separator.
std::string TapBalance::CacheFilePath() {
    const platform::ScopedLock lock(m_Lock);
    const int select = m_TableSelect;
    if (!IsTable(select)) {
        ZEL_LOG(m_Logger, kLogError, kWrite, "***ERROR***: select is not set to valid value");
        return "";
    }
    std::string path;
    Guarded(kWrite, [&]() ZEL_REQUIRES(m_Lock) {
        path = platform::CalibrationFolder() + platform::PathSeparator() + "zel_" + m_CameraTexts[0] + "_" +
               m_CameraTexts[1] + "_" + kReadoutNames[select] + ".txt";
        return true;
    });
    return path;
}

bool TapBalance::WriteDataToFile() {
    const platform::ScopedLock lock(m_Lock);
    return Guarded(kWrite, [&]() ZEL_REQUIRES(m_Lock) {
        const std::string path = CacheFilePath();
        if (path.empty()) return false;
        const Slot& slot = m_TapBalanceData[Index(m_TableSelect)];
        if (!slot.data) {
            ZEL_LOG(m_Logger, kLogError, kWrite, "***ERROR***: there is no table to write to %s", path.c_str());
            return false;
        }
        if (platform::ReplaceTextFile(path, FormatCacheFile(*slot.data, slot.data->Digest()))) return true;
        ZEL_LOG(m_Logger, kLogError, kWrite, "***ERROR***: %s can't be written", path.c_str());
        return false;
    });
}

// The selected table's.
std::optional<TapTable> TapBalance::ReadCacheFile(const char* file_name, bool check_camera) {
    const int select = m_TableSelect;
    if (!IsTable(select)) {
        ZEL_LOG(m_Logger, kLogError, kLoad, "***ERROR***: select is not set to valid value");
        return std::nullopt;
    }
    std::string text;
    if (!file_name || !platform::ReadTextFile(file_name, kLargestFile, text)) {
        ZEL_LOG(m_Logger, kLogError, kLoad, "***ERROR***: %s can't be read", file_name ? file_name : "(null)");
        return std::nullopt;
    }
    TableTextFault fault;
    std::optional<CacheFile> file = ParseCacheFile(text, fault);
    if (!file) {
        LogFault(m_Logger, kLoad, fault);
        return std::nullopt;
    }
    if (check_camera && !CheckAgainstCamera(file_name, select, file->digest, file->table)) return std::nullopt;
    return std::move(file->table);
}

bool TapBalance::LoadDataFromFile(const char* file_name, bool check_camera) {
    const platform::ScopedLock lock(m_Lock);
    return Guarded(kLoad, [&]() ZEL_REQUIRES(m_Lock) {
        std::optional<TapTable> table = ReadCacheFile(file_name, check_camera);
        if (!table || !StoreTable(m_TableSelect, std::move(*table))) return false;
        m_DataValid = true;
        return true;
    });
}

bool TapBalance::LoadCacheFiles() {
    const platform::ScopedLock lock(m_Lock);
    return Guarded(kLoad, [&]() ZEL_REQUIRES(m_Lock) {
        std::array<std::optional<TapTable>, kTapTables> tables;
        for (int select = 0; select < kTapTables; ++select) {
            SelectTable(select);
            tables[Index(select)] = ReadCacheFile(CacheFilePath().c_str(), true);
            if (!tables[Index(select)]) return false;
        }
        return StoreTables(tables);
    });
}

// A table that differs from the camera's is not in use any more; one that can't be compared ends the correction.
bool TapBalance::CheckAgainstCamera(const char* file_name, int select, const Sha1::Digest& file_digest,
                                    const TapTable& table) {
    Sha1::Digest camera_digest{};
    if (!GetTableHashFromCamera(select, camera_digest)) {
        ZEL_LOG(m_Logger, kLogError, kLoad,
                "TapBalance::LoadDataFromFile(filename:%s) ***ERROR***. GetTableHashFromCamera(select:%d) failed",
                file_name, select);
        ZEL_LOG(m_Logger, kLogError, kLoad, "**** DATA FAULT ****");
        m_DataValid = false;
        m_DataFault = true;
        return false;
    }
    const Sha1::Digest data_digest = table.Digest();
    if (camera_digest == file_digest && file_digest == data_digest) return true;
    ZEL_LOG(m_Logger, kLogError, kLoad, "***ERROR***. hash values do not match");
    ZEL_LOG(m_Logger, kLogError, kLoad, "camera_hash: %s", DigestText(camera_digest).c_str());
    ZEL_LOG(m_Logger, kLogError, kLoad, "data_hash : %s", DigestText(data_digest).c_str());
    ZEL_LOG(m_Logger, kLogError, kLoad, "hash : %s", DigestText(file_digest).c_str());
    DropTable(select);
    return false;
}

bool TapBalance::LoadGeneralTables() {
    const platform::ScopedLock lock(m_Lock);
    return Guarded(kLoadMaster, [&]() ZEL_REQUIRES(m_Lock) {
        std::array<std::optional<TapTable>, kTapTables> tables;
        for (int select = 0; select < kTapTables; ++select) {
            const std::string name = std::string("CameraTable_") + kReadoutNames[select] + ".txt";
            const std::string path = platform::CalibrationFolder() + platform::PathSeparator() + name;
            tables[Index(select)] = ReadMasterFile(path.c_str());
            if (!tables[Index(select)]) return false;
        }
        return StoreTables(tables);
    });
}

std::optional<TapTable> TapBalance::ReadMasterFile(const char* file_name) {
    std::string text;
    if (!platform::ReadTextFile(file_name, kLargestFile, text)) {
        ZEL_LOG(m_Logger, kLogError, kLoadMaster, "***ERROR***: %s can't be read", file_name);
        return std::nullopt;
    }
    TableTextFault fault;
    std::optional<TapTable> table = ParseMasterFile(text, Remarks::kAllowed, fault);
    if (!table) LogFault(m_Logger, kLoadMaster, fault);
    return table;
}

bool TapBalance::LoadDataFromMasterFile(const char* file_name) {
    return Guarded(kLoadMaster, [&] {
        const int select = TableOfFileName(file_name ? file_name : "");
        if (!IsTable(select)) {
            ZEL_LOG(m_Logger, kLogError, kLoadMaster, "***ERROR***: neither 20MHz nor 40MHz in the name \"%s\"",
                    file_name ? file_name : "(null)");
            return false;
        }
        std::optional<TapTable> table = ReadMasterFile(file_name);
        if (!table) return false;
        const platform::ScopedLock lock(m_Lock);
        SelectTable(select);
        if (!StoreTable(select, std::move(*table))) return false;
        m_DataValid = true;
        return true;
    });
}

}  // namespace zel
