// The camera object: one per connected camera. To the application it is a ZelCamera (and ZelColorCamera), to the
// transport an IZelCameraCommon. Defined in one source file per concern:
//
//     ZelCameraControl.cpp     construction, small operations     CameraConnection.cpp   Open, Close, model detection
//     CameraParameters.cpp     GetParameter, SetParameter         CameraAttributes.cpp   the attribute answers
//     CameraHostParameters.cpp values that live in the host       CameraAcquisition.cpp  Start, Stop, calculation
//     CameraTrigger.cpp        triggering                         CameraText.cpp         text and raw exchanges
//     CameraFrames.cpp         frame hand-over                    CameraCallbacks.cpp    callbacks and events
//     CameraTapBalance.cpp     calibration of the taps            CameraColor.cpp        color set-up and pictures
//     CameraLifetime.cpp       what keeps the object alive, and its end
#ifndef CAMERA_ZELCAMERACONTROL_H
#define CAMERA_ZELCAMERACONTROL_H

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "camera/CameraModels.h"
#include "camera/ControlTurns.h"
#include "camera/ParameterTable.h"
#include "camera/SharedText.h"
#include "image/ZelCameraControlImpl.h"
#include "include/ZelCameraInternal.h"
#include "link/ICameraInterface.h"
#include "link/IZelCameraCommon.h"
#include "link/LinkKind.h"
#include "link/SyncTable.h"
#include "link/TextProtocol.h"
#include "platform/Mutex.h"
#include "platform/OperationGate.h"
#include "tapbalance/TapBalance.h"
#include "util/ProgressControl.h"

namespace zel {

// Both bases have a GetPendingImage, and they differ: the application gets a processed frame, the transport the record
// as it lies in the pool. These two layers give them names of their own.
class CameraApplicationBase : public ZelCameraInternal {
  public:
    ZelImage* GetPendingImage() final { return GetPendingImageForApplication(); }

  protected:
    virtual ZelImage* GetPendingImageForApplication() = 0;
};

class CameraCommonBase : public IZelCameraCommon {
  public:
    ZelImage* GetPendingImage() final { return GetPendingImageForTransport(); }

  protected:
    virtual ZelImage* GetPendingImageForTransport() = 0;
    ~CameraCommonBase() = default;
};

class ZelCameraControl final : public CameraApplicationBase, public CameraCommonBase, private ZelCameraControlImpl {
  public:
    // `camera` is held, never owned. `instance_name` tells this camera's loggers apart; null counts as "".
    ZelCameraControl(ICameraInterface* camera, const char* instance_name);
    ZEL_IMPLEMENTATION_DESTRUCTOR(ZelCameraControl)
    ~ZelCameraControl();

    // ZelCamera
    bool Open() override;
    bool Close() override;
    bool IsOpen(int* is_open) override;
    const char* GetCameraName() override;
    bool SetCameraName(const char* name) override;
    int GetDataTypeSize(int data_type) override;
    bool GetParameter(unsigned param_id, unsigned size, void* data) override;
    int GetParameterValue(unsigned param_id) override;
    bool SetParameterValue(int param_id, int value) override;
    bool SetParameter(int param_id, const void* data) override;
    bool ResetCamera() override;
    ZelImage* GetLastPendingImage() override;
    bool FreeAllPendingImages() override;
    bool FreeImage(ZelImage* image) override;
    bool Start(int frame_count) override;
    bool Start() override;
    bool Stop() override;
    int QueryTransportValue() override;
    bool SetTransportValue(int value) override;
    bool SetExposureToDefault() override;
    const char* GetLastErrorStr() override;
    int GetLastError() override;
    bool ClearLastError() override;
    bool SetTextCommand(const char* text) override;
    bool SetTextCommandCallback(ZelTextCommandCallback callback, void* context) override;
    bool SetCameraControlCallback(ZelCameraControlCallback callback, void* context) override;
    bool SetCameraControlCallbackEx(ZelCameraControlCallbackEx callback, void* context) override;
    bool SetImageNotificationCallback(ZelImageNotificationCallback callback, void* context) override;
    bool SetImageCallback(ZelImageCallback callback, void* context) override;
    bool StartTriggerAcquisition() override;
    bool StopTriggerAcquisition(int flag) override;
    bool SoftwareTrigger() override;

    // ZelColorCamera
    bool ConcatenateColorTransform(int operation, int bit_depth) override;
    bool ConcatenateColorMatrix(const float* matrix) override;
    bool ResetColorTransform() override;
    bool SetInputLinearizationTable(const unsigned short* entries, unsigned num_values, unsigned channels) override;
    bool SetOutputNonLinearizationTable(const unsigned short* entries, unsigned num_values, unsigned channels) override;
    bool GetColorTransform(float* matrix) override;
    ZelColorImage* GetPendingColorImage() override;
    ZelColorImage* GetLastPendingColorImage() override;
    bool FreeColorImage(ZelColorImage* image) override;

    // ZelCameraInternal
    bool TapBalanceEnable(bool enable) override;
    bool TapBalanceSelectTable(int select) override;
    bool TapBalanceLoadDataFromCamera() override;
    bool TapBalanceLoadDataFromMasterFile(const char* file_name) override;
    bool TapBalanceGetTableConfig(int* rows, int* num_taps) override;
    bool TapBalanceGetTableData(int row, float* millivolts, float* tap_gains) override;
    bool TapBalanceSetTableConfig(int table, int rows, int num_taps) override;
    bool TapBalanceSetTableData(int row, float millivolts, const float* tap_gains) override;
    bool TapBalanceWriteTableConfigToCamera() override;
    bool TapBalanceWriteDataToCamera() override;
    bool TapBalanceFlashTest() override;
    double GetLinkThroughput() override;
    double GetLinkFrameRate() override;
    double GetLinkLatency() override;
    double GetLinkUtilization() override;
    int GetCameraInterfaceType() override;
    int SendData(const unsigned char* data, int num_tx_bytes) override;
    int RecvData(unsigned char* buffer, int num_rx_bytes, int timeout_ms) override;
    int GetScratchBufferCount() override;
    bool FreeScratchBuffers() override;
    bool IsMonochrome() override;
    bool SetImageAveraging(int frame_count_max, int reset) override;
    bool SetScratchpadCallback(ZelScratchpadCallback callback, void* context) override;
    bool ConcatenateScratchpadTransform(int operation, int bit_depth) override;
    bool ConcatenateScratchpadMatrix(const float* matrix) override;
    bool ResetScratchpadTransform() override;
    bool SetScratchpadInputLinearizationTable(const unsigned short* entries, unsigned num_values,
                                              unsigned channels) override;
    bool SetScratchpadOutputNonLinearizationTable(const unsigned short* entries, unsigned num_values,
                                                  unsigned channels) override;
    bool GetScratchpadTransform(float* matrix) override;
    ICameraInterface* GetCameraInterface() override { return m_Camera; }

    // IZelCameraCommon
    int ConnectCommon() override;
    int StopCommon() override;
    int StartCommon() override;
    int StartTriggerCommon() override;
    int TextCommandCommon(const char* text, bool expect_reply) override;
    bool GetCameraParameter(int index, int* value) override;
    int* GetLastErrorPtr() override { return &m_LastError; }
    bool SyncTapBalanceGain() override;
    ZelImage* GetFreeImage() override;
    bool SetPendingImage(ZelImage* image) override;
    bool ReleaseImage(ZelImage* image) override;
    void FillImageInfo(ZelImage* image) override;
    void FreeAllInUseImages() override;

    // What the two handler functions that the transport calls do.
    void ImageCallback(ZelImage* image);
    void EventCallback(const ZelCameraEvent* event);

    // For the manager, see ZelCameraFactory.h.
    bool Inside() { return m_Gate.Inside(); }
    void BeginEnd();
    bool Retire();
    void Suspend();
    bool Suspended() const { return m_Suspended; }
    void ForgetTransport() { m_Gate.Shut(kRetired); }
    void Resume();

    // How many image notification calls were made in this process.
    static unsigned NotificationCount();

  protected:
    ZelImage* GetPendingImageForApplication() override;
    ZelImage* GetPendingImageForTransport() override;
    void ColorWasBinned() override;
    ZelColorImage* HandOverColor(const FrameLease& frame, const char* operation);

  private:
    friend struct ParameterHandlers;  // the rows of the parameter table

    using Text = SharedText::Text;

    using Gate = platform::OperationGate;

    // Life-time. Why the gate is shut:
    static constexpr unsigned kClosing = 1;
    static constexpr unsigned kEnding = 2;                // the SDK is being closed
    static constexpr unsigned kRetired = Gate::kForGood;  // the transport is not ours any more
    static constexpr unsigned kLibraryShutDown = 4;       // the transport may be gone with its library

    // A stay of the application in this object; refused while the gate is shut, which leaves an error code.
    struct Operation : Gate::Entry {
        explicit Operation(ZelCameraControl& camera);
    };
    // One that is always granted, for operations that only read or give back.
    struct Visit : Gate::Entry {
        explicit Visit(ZelCameraControl& camera) : Entry(camera.m_Gate, Gate::Kind::kAlways) {}
    };
    // A stay of the transport, which shows that it lives.
    struct Callee : Gate::Entry {
        explicit Callee(ZelCameraControl& camera, Gate::Kind kind = Gate::Kind::kAlways)
            : Entry((camera.Resume(), camera.m_Gate), kind) {}
    };
    // A turn in control of the camera. At its end what others left for it is done.
    class Turn {
      public:
        Turn(ZelCameraControl& camera, ControlTurns::Wish wish);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        bool Taken() const { return m_Answer == ControlTurns::Answer::kTurn; }
        bool Left() const { return m_Answer == ControlTurns::Answer::kLeft; }
        bool Inside() const { return m_Inside; }  // the caller was inside the camera already

      private:
        ZelCameraControl& m_Camera;
        const bool m_Inside;
        const Gate::Entry m_Entry;
        ControlTurns::Answer m_Answer = ControlTurns::Answer::kRefused;
    };
    bool ExchangesEnd();
    bool StartEnds();
    bool TransportIsOurs() { return !m_Gate.IsShut(kRetired | kLibraryShutDown); }

    // Connection
    bool OpenNow();
    bool CloseNow(bool inside);
    bool ReadText(int index, Text& text);
    void RecogniseModel();
    void SetUpColor(int bits_per_pixel);
    bool GetColorMatrixCoefficient(int index, double& value);
    ColorMatrix ReadColorMatrix(int first);
    bool ConfigureColorPipelineOutputColorSpace();
    int ReadColorFilterPhase();
    void LoadCalibration();
    void LogFpgaVersion();
    void NameCacheFiles();
    struct Calibration;
    Calibration FindCalibration();
    bool DownloadTables();

    // Parameters
    bool ReadTableParameter(int index, void* data);
    bool ReadExposure(int& microseconds);
    bool WriteExposure(int microseconds);
    bool ReadAttribute(void* data);
    bool ReadTableAttribute(int attribute, void* data);
    bool ReadRoiAttribute(int attribute, void* data);
    void SelectAttribute(const ZelParamAttrId& selection);
    bool UpdateParameters();
    void LogAttributeTranslations(const char* function_name);
    void LogSelection(const char* function_name);

    // Acquisition
    bool StartNow();
    bool StartTriggerNow();
    bool ArmForTriggers(bool started);
    bool StopNow();
    bool StopTriggerNow();
    int StoreError(int code);
    int LoadLastError();
    int ReadGeometry();
    ColorPipeline& WantedPipeline();
    int PrepareAcquisition();
    const LinkKind& Link() { return LinkKindOf(m_Camera->GetInterfaceType()); }
    bool AskForCalculation(const LinkKind& link);
    bool WaitForCalculation();
    void SetWithRetries(int index, int value, int attempts, const char* function_name, const char* retry_line,
                        int source_line);
    void EnableHWTrigger(bool on);
    void CameraCommand(const char* text);
    void SendText(const char* text);
    void SendText(const char* text, char* reply);
    void ArmBySoftware();
    int StartTriggerEBus();
    int StartTriggerUsbOrCameraLink(bool usb);
    bool EnableTriggerUsbOrCameraLink(bool usb);

    double LinkFigure(double (ICameraInterface::*figure)());

    ICameraInterface* const m_Camera;
    Gate m_Gate;
    std::atomic<bool> m_Suspended{false};
    std::atomic<bool> m_DisconnectOwed{false};  // closed while the transport could not be told
    std::atomic<int> m_InterfaceType{0};        // as the transport said last
    ControlTurns m_Turns{m_Stopped};
    // One exchange with the camera at a time, text or table; they end when the camera is being closed.
    struct CameraExchanges final : ExchangeLock {
        explicit CameraExchanges(ZelCameraControl& camera) : m_Camera(camera) {}
        bool Cancelled() override { return m_Camera.ExchangesEnd(); }
        ZelCameraControl& m_Camera;
    } m_ExchangeLock{*this};
    std::unique_ptr<SyncTable> m_SyncTable;  // the larger half of the object; a retired one has none
    TextProtocol m_TextProtocol;
    TapBalance m_TapBalance;
    ProgressControl m_Progress;                   // shown while calibration tables come from the camera
    std::atomic<bool> m_TapBalanceWanted{false};  // the application enabled it, whether there are tables yet or not

    std::atomic<int> m_CfaPhase{0};             // color filter at the sensor's top-left pixel, 0: none
    std::atomic<bool> m_HasColorFilter{false};  // frames take the color path when they arrive

    std::atomic<int> m_CameraOpened{0};
    int m_LastError = 0;                 // the transport stores codes here too: accessed through atomic_ref
    std::atomic<bool> m_Stopped{false};  // from a stop to the next start no image callback is made

    SharedText m_CameraName;
    SharedText m_FirmwareRevision;
    SharedText m_Model;
    SharedText m_FilterType;
    std::atomic<const CameraModel*> m_KnownModel{nullptr};  // a row of the model table

    // Selection for the attribute answers and values kept in the host. Shared by the application's threads as plain
    // registers: the last write holds.
    std::atomic<int> m_ZELParamIndex{0};
    std::atomic<int> m_ZELAttrID{0};
    std::atomic<int> m_SyncTableParamIndex{0};
    std::atomic<int> m_SyncTableAttrIndex{0};
    std::atomic<int> m_ExposureUnit{0};
    std::atomic<int> m_TapsIndex{0};
    std::atomic<int> m_ReadoutSpeedIndex{0};
    std::atomic<bool> m_HWTriggerEnabled{false};
    std::atomic<int> m_HWTriggerSource{0};  // chosen last by the application
    std::atomic<int> m_NumImageBuffers{8};
    int m_BuffersOfAcquisition = 0;  // what the transport was told at the last start
    // Of the frames that come in now: EXPOSURE_TIME as it was last read or written with success.
    std::atomic<unsigned> m_ExposureTimeUs{0};

    // The application's callbacks. The lock covers reading and changing them, never a call.
    struct Callbacks {
        ZelCameraControlCallback control = nullptr;
        ZelCameraControlCallbackEx control_ex = nullptr;
        // On purpose: one context for both control callbacks; the one set last holds.
        void* control_context = nullptr;
        ZelImageNotificationCallback notification = nullptr;
        void* notification_context = nullptr;
        ZelImageCallback image = nullptr;
        void* image_context = nullptr;
        ZelTextCommandCallback text = nullptr;
        void* text_context = nullptr;
    };
    Callbacks CopyCallbacks();
    bool EndedSince(bool stopped, bool open) const;
    void ReportConnection(const Callbacks& callbacks, int code, const char* what);
    template <class Function>
    void StoreCallback(const char* function_name, Function Callbacks::*slot, void* Callbacks::*context_slot,
                       Function function, void* context);
    bool RegisterEventHandler();
    platform::Mutex m_CallbackLock;
    Callbacks m_Callbacks ZEL_GUARDED_BY(m_CallbackLock);
};

// The functions given to the transport.
void ZEL_CALL zel_image_handler(ZelImage* image, ZelCamera* camera);
void ZEL_CALL zel_event_handler(const ZelCameraEvent* event, ZelCamera* camera);

}  // namespace zel

#endif
