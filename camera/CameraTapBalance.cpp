// Calibration of the taps: the operations on the tap balance object, and how its tables get there at connection.
#include <cstdlib>
#include <cstring>
#include <exception>

#include "camera/ZelCameraControl.h"
#include "platform/UserTexts.h"

namespace zel {

namespace {
constexpr const char* kConnect = "ZelCameraControl::ConnectCommon";
}  // namespace

// Without tables the answer is false; a camera that is opened later gets its tables then.
bool ZelCameraControl::TapBalanceEnable(bool enable) {
    const Operation entry(*this);
    if (!entry) return false;
    m_TapBalanceWanted = enable;
    return m_TapBalance.Enable(enable);
}

bool ZelCameraControl::TapBalanceSelectTable(int select) {
    const Operation entry(*this);
    return entry && m_TapBalance.SelectTable(select);
}

// Tables are calculated for a gain: the one that the camera has now.
bool ZelCameraControl::TapBalanceLoadDataFromCamera() {
    const Operation entry(*this);
    if (!entry) return false;
    if (m_CameraOpened == 1) SyncTapBalanceGain();
    return m_Camera && m_TapBalance.LoadDataFromCamera();
}

bool ZelCameraControl::TapBalanceLoadDataFromMasterFile(const char* file_name) {
    const Operation entry(*this);
    if (!entry) return false;
    if (m_CameraOpened == 1) SyncTapBalanceGain();
    try {
        return m_TapBalance.LoadDataFromMasterFile(platform::Utf8FromSystem(file_name).c_str());
    } catch (const std::exception&) {
        return false;
    }
}

bool ZelCameraControl::TapBalanceGetTableConfig(int* rows, int* num_taps) {
    const Operation entry(*this);
    if (!entry) return false;
    return m_Camera && m_TapBalance.GetTableConfig(rows, num_taps);
}

bool ZelCameraControl::TapBalanceGetTableData(int row, float* millivolts, float* tap_gains) {
    const Operation entry(*this);
    if (!entry) return false;
    return m_Camera && m_TapBalance.GetTableData(row, millivolts, tap_gains);
}

bool ZelCameraControl::TapBalanceSetTableConfig(int table, int rows, int num_taps) {
    const Operation entry(*this);
    if (!entry) return false;
    return m_Camera && m_TapBalance.SetTableConfig(table, rows, num_taps);
}

bool ZelCameraControl::TapBalanceSetTableData(int row, float millivolts, const float* tap_gains) {
    const Operation entry(*this);
    if (!entry) return false;
    return m_TapBalance.SetTableData(row, millivolts, tap_gains);
}

bool ZelCameraControl::TapBalanceWriteTableConfigToCamera() {
    const Operation entry(*this);
    if (!entry) return false;
    return m_Camera && m_TapBalance.WriteTableConfigToCamera();
}

bool ZelCameraControl::TapBalanceWriteDataToCamera() {
    const Operation entry(*this);
    return entry && m_Camera && m_TapBalance.WriteDataToCamera();
}
bool ZelCameraControl::TapBalanceFlashTest() {
    const Operation entry(*this);
    return entry && m_Camera && m_TapBalance.FlashTest();
}

// What a connection's search for tables found: both of them, and where they came from, or the reason for none.
struct ZelCameraControl::Calibration {
    bool found;
    const char* text;
};

void ZelCameraControl::LoadCalibration() {
    LogFpgaVersion();
    NameCacheFiles();
    SyncTapBalanceGain();
    const Calibration calibration = FindCalibration();
    if (calibration.found && m_TapBalance.Enable(true)) {
        ZEL_LOG(m_Logger, kLogTrace, kConnect, "calibration in use: %s", calibration.text);
        return;
    }
    m_TapBalance.Enable(false);
    ZEL_LOG(m_Logger, kLogError, kConnect,
            "***ERROR***: no calibration in use, the taps of this camera are not balanced: %s",
            calibration.found ? "its digests could not be read before" : calibration.text);
}

// Both cache files when they hold what the camera holds, otherwise the camera's tables, which then go into the files.
// General master files serve a camera that says that it has no tables; one that doesn't answer may have its own.
ZelCameraControl::Calibration ZelCameraControl::FindCalibration() {
    if (m_TapBalance.LoadCacheFiles()) return {true, "the cache files of this camera"};
    if (m_TapBalance.DataFault()) return {false, "its digests can't be read"};
    m_TapBalance.SelectTable(TAP_BALANCE_SELECT_20MHZ);
    if (m_TapBalance.GetTableConfig(nullptr, nullptr)) {
        if (DownloadTables()) return {true, "the camera's flash memory"};
        return {false, "the tables in its flash memory did not come whole"};
    }
    if (!m_TapBalance.FlashTellsOfNoTables()) return {false, "its flash memory can't be read"};
    if (m_TapBalance.LoadGeneralTables()) return {true, "the general files of this computer"};
    return {false, "its flash memory holds no tables, and the two general files are not there or not good"};
}

// "... FPGA: 118 ..." in the camera's description.
void ZelCameraControl::LogFpgaVersion() {
    constexpr const char* kLabel = "FPGA:";
    char info[TextProtocol::kReplyCapacity] = {};
    SendText("info\r\n", info);
    ZEL_LOG(m_Logger, kLogTrace, kConnect, "info returned :%s \n", info);
    const char* found = std::strstr(info, kLabel);
    if (!found) return;
    found += std::strlen(kLabel);
    ZEL_LOG(m_Logger, kLogTrace, kConnect, "fpga version str:%s\n", found);
    ZEL_LOG(m_Logger, kLogTrace, kConnect, "fpga version    :%d\n", static_cast<int>(std::strtol(found, nullptr, 10)));
}

void ZelCameraControl::NameCacheFiles() {
    Text serial_number{};
    ReadText(SERIAL_NUMBER, serial_number);
    m_TapBalance.SetCameraTexts(m_Model.Get().data(), serial_number.data());
}

bool ZelCameraControl::DownloadTables() {
    StartProgress(&m_Progress);
    SetProgressText(&m_Progress, 0, "Stopping camera...");
    StopCommon();
    m_TapBalance.SetPercentCompleteCallback(&UpdateProgress, &m_Progress);
    const auto table_begins = [](void* progress, int select) {
        SetProgressText(static_cast<ProgressControl*>(progress), 0,
                        select == TAP_BALANCE_SELECT_20MHZ ? "Loading primary data..." : "Loading secondary data...");
    };
    const bool loaded = m_TapBalance.LoadDataFromCamera(table_begins, &m_Progress);
    m_TapBalance.SetPercentCompleteCallback(nullptr, nullptr);
    EndProgress(&m_Progress);
    if (!loaded || !m_TapBalance.CheckDownload()) return false;
    // A file that can't be written only costs the next connection another download.
    for (int select = 0; select < kTapTables; ++select) {
        m_TapBalance.SelectTable(select);
        m_TapBalance.WriteDataToFile();
    }
    return true;
}

}  // namespace zel
