// Evens out the taps of a multi-tap sensor. The camera keeps one calibration table per readout speed in its flash; from
// the table of the current readout and the analog gain come lookup tables, one per tap, that every frame's samples go
// through. Defined in one source file per concern:
//
//     TapBalance.cpp            state, gain, selection      TapBalanceFlash.cpp  tables coming from the camera
//     TapBalanceCorrection.cpp  frames                      TapBalanceFiles.cpp  cache and master files
//     TapBalanceWriting.cpp     tables going to the camera
//
// Any thread may call anything. One lock covers the tables and the flash access, for one row or one page sequence at a
// time; it is never held while the percent-complete callback runs. Frames do not wait for it: lookup tables are made
// aside and replaced as a whole, so that a frame sees one complete set.
#ifndef TAPBALANCE_TAPBALANCE_H
#define TAPBALANCE_TAPBALANCE_H

#include <array>
#include <atomic>
#include <exception>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

#include "calibration/TableDirectory.h"
#include "calibration/TapTable.h"
#include "platform/Locks.h"
#include "sdk/Logger.h"
#include "tapbalance/FlashPages.h"
#include "tapbalance/LookupTables.h"

namespace zel {

class TapBalance {
  public:
    using PercentCompleteCallback = void (*)(void* context, std::int32_t done, std::int32_t total);
    using TableCallback = void (*)(void* context, int select);

    TapBalance(TextProtocol& text_protocol, const char* instance_name);

    // ---- Correction ----
    // False, and switched off, while no table set was loaded or the camera's digest could not be read.
    bool Enable(bool enable);
    bool Enabled() const { return m_Enabled; }
    bool DataFault() const { return m_DataFault; }
    // The sensor's bit depth, 0 to 16.
    bool SetBitsPerPixel(int bits_per_pixel);
    bool SetGain(float gain);
    // Makes the lookup tables of every configured table anew.
    bool CalculateLUT();
    // Corrects w * h samples in place, two taps side by side or four in quadrants. True without a change while
    // correction is off; a geometry or table that does not fit answers false and leaves the samples alone.
    bool TranslatePixels(int w, int h, int num_taps, int select, unsigned short* pixels);
    // The lookup tables that TranslatePixels would use now, for callers that look up samples themselves: two-tap
    // frames mask the result, too. Empty while correction is off or there is no table. Logs nothing.
    TapTables TablesFor(int select) const;

    // ---- Tables from the camera ----
    // Remembers the selection even when it is no table; what follows then fails.
    bool SelectTable(int select);
    // What is known of the camera's flash belongs to the past: asked for again at the next use.
    void ForgetFlash();
    // Whether the camera's directory, when it was asked for last, said that no table was ever written. A flash memory
    // that can't be read says nothing.
    bool FlashTellsOfNoTables() const { return m_NoTables; }
    // The selected table's rows and taps as the camera's directory tells them, whether they make sense or not.
    bool GetTableConfig(int* rows, int* num_taps);
    // One row of the selected table.
    bool GetTableData(int row, float* millivolts, float* tap1, float* tap2);
    bool GetTableData(int row, float* millivolts, float* tap1, float* tap2, float* tap3, float* tap4);
    bool GetTableData(int row, float* millivolts, float* tap_gains);  // as many gains as the table has taps
    bool GetTableHashFromCamera(int select, Sha1::Digest& digest);
    bool LoadDataTableFromCamera(int select);
    // Both tables or, when a row can't be had, neither. `table_begins` is called before the rows of each.
    bool LoadDataFromCamera(TableCallback table_begins = nullptr, void* context = nullptr);
    // Whether both tables in memory are the ones that the camera's directory names. Those that differ came damaged over
    // the link, or lie damaged in the flash, and are not used.
    bool CheckDownload();
    // Called with each row of a table that is loaded.
    void SetPercentCompleteCallback(PercentCompleteCallback callback, void* context);

    // ---- Files ----
    // The two texts that name this camera's cache files; at most 63 characters each count.
    void SetCameraTexts(const char* first, const char* second);
    // Where the selected table's cache file stands; empty for a selection that is no table.
    std::string CacheFilePath();
    bool WriteDataToFile();
    // check_camera: digest line, data and the camera's digest must agree.
    bool LoadDataFromFile(const char* file_name, bool check_camera);
    // Both cache files, checked against the camera, or neither.
    bool LoadCacheFiles();
    // A name that contains "20MHz" or "40MHz" selects the table.
    bool LoadDataFromMasterFile(const char* file_name);
    // Both tables or neither, from the calibration folder's "CameraTable_20MHz.txt" and "CameraTable_40MHz.txt", for
    // cameras that hold none of their own.
    bool LoadGeneralTables();

    // ---- Tables to the camera ----
    // Begins a table anew, all zeros, and lays the tables out in flash: the first from page 1 on, the second from the
    // next page after it. False when they do not fit.
    bool SetTableConfig(int table, int rows, int num_taps);
    // One row of the selected table, in memory. Values that no calibration has are refused.
    bool SetTableData(int row, float millivolts, const float* tap_gains);
    // Both tables' directory entries with the digests of the tables in memory. The rest of page 0 stays.
    bool WriteTableConfigToCamera();
    bool WriteDataToCamera();
    // Writes, reads and restores the flash's last page, which must not hold a table.
    bool FlashTest();

    bool PrintTable();

  private:
    struct Slot {
        std::optional<TapTable> data;
        bool configured = false;
        bool filled = false;       // loaded or written; a table of zeros is not corrected with
        std::uint32_t offset = 0;  // in flash
    };

    static std::size_t Index(int select) { return static_cast<std::size_t>(select); }
    static bool IsTable(int select) { return select >= 0 && select < kTapTables; }

    template <class Action>
    bool Guarded(const char* function_name, Action action) ZEL_NO_THREAD_SAFETY_ANALYSIS;
    bool AllocateTable(int select, const TableEntry& entry) ZEL_REQUIRES(m_Lock);
    bool ReadDirectory(TableDirectory& directory) ZEL_REQUIRES(m_Lock);
    void LogDirectory(const TableDirectory& directory);
    bool ReadTableConfig(TableDirectory& directory);
    bool ReadRow(int select, int row, TapRow& values);
    bool GetRowOfTaps(int row, float* millivolts, std::initializer_list<float*> taps);
    std::optional<TapTable> ReadTable(int select, const TableEntry& entry);
    void ReportProgress(int done, int total);
    bool CheckAgainstCamera(const char* file_name, int select, const Sha1::Digest& file_digest, const TapTable& table)
        ZEL_REQUIRES(m_Lock);
    std::optional<TapTable> ReadCacheFile(const char* file_name, bool check_camera) ZEL_REQUIRES(m_Lock);
    std::optional<TapTable> ReadMasterFile(const char* file_name);
    bool StoreTable(int select, TapTable table) ZEL_REQUIRES(m_Lock);
    bool StoreTables(std::array<std::optional<TapTable>, kTapTables>& tables);
    void DropTable(int select) ZEL_REQUIRES(m_Lock);
    bool MakeLUT(int select) ZEL_REQUIRES(m_Lock);
    void Publish(int select, std::shared_ptr<const LookupTables> tables);
    std::shared_ptr<const LookupTables> Published(int select) const;
    void LayOut() ZEL_REQUIRES(m_Lock);
    bool FitsFlash() const ZEL_REQUIRES(m_Lock);
    bool ReadyToWrite(const char* function_name) ZEL_REQUIRES(m_Lock);
    std::uint64_t TablesEnd() const ZEL_REQUIRES(m_Lock);
    bool TestPage(int page, std::span<const std::uint8_t> content) ZEL_REQUIRES(m_Lock);

    Logger m_Logger;
    std::atomic<bool> m_Enabled{false};
    std::atomic<bool> m_DataValid{false};
    std::atomic<bool> m_DataFault{false};
    std::atomic<bool> m_NoTables{false};
    std::atomic<int> m_TableSelect{TAP_BALANCE_SELECT_20MHZ};

    mutable platform::RecursiveLock m_Lock;
    FlashPages m_Flash ZEL_GUARDED_BY(m_Lock);
    std::array<Slot, kTapTables> m_TapBalanceData ZEL_GUARDED_BY(m_Lock);
    int m_BitsPerPixel ZEL_GUARDED_BY(m_Lock) = 14;
    float m_Gain ZEL_GUARDED_BY(m_Lock) = 0;
    std::array<std::string, 2> m_CameraTexts ZEL_GUARDED_BY(m_Lock);
    PercentCompleteCallback m_PercentCompleteCallback ZEL_GUARDED_BY(m_Lock) = nullptr;
    void* m_PercentCompleteContext ZEL_GUARDED_BY(m_Lock) = nullptr;

    // Covers copying these pointers.
    mutable platform::Mutex m_PublishLock;
    std::array<std::shared_ptr<const LookupTables>, kTapTables> m_Published ZEL_GUARDED_BY(m_PublishLock);
};

// Runs an operation that may run out of memory. Not checked here: actions that need the lock are written where it is
// held.
template <class Action>
bool TapBalance::Guarded(const char* function_name, Action action) {
    try {
        return action();
    } catch (const std::exception& problem) {
        ZEL_LOG(m_Logger, kLogError, function_name, "***ERROR***: %s", problem.what());
        return false;
    }
}

}  // namespace zel

#endif
