#include "tests/campaign/Session.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <set>
#include <thread>

#include "camera/ZelCameraControl.h"
#include "include/ZelParameters.h"
#include "platform/Clock.h"
#include "tests/campaign/Side.h"

namespace zel::campaign {

namespace {

constexpr int kFrames = 50, kBuffers = 52, kImages = 8, kTriggers = 3;

}  // namespace

// One call into the SDK. A null object answers as one that refuses.
int Session::Do(const char* name, const std::function<int()>& call) {
    current = name;
    m_Faults.BetweenCalls();
    int answer = 0;
    const std::uint32_t begin = platform::MillisecondClock();
    try {
        const Crossing crossing(Side::kSdk);
        answer = call();
    } catch (const std::exception& problem) {
        Complain(std::string("exception from ") + name + ": " + problem.what());
    }
    const std::uint32_t took = platform::MillisecondClock() - begin;
    if (took > m_Slowest.milliseconds) m_Slowest = {name, took};
    m_Answers.push_back({name, answer});
    if (traced)
        std::printf("  %s: %d, %.1f s%s\n", name, answer, took / 1000.0, m_Faults.Happened() ? "" : " (before)");
    return answer;
}

// For what a sound camera does. With one that isn't, until nothing has moved for a moment.
bool Session::Await(const std::function<bool()>& holds) {
    using Clock = std::chrono::steady_clock;
    auto end = Clock::now() + std::chrono::milliseconds(2);
    for (int moves = m_Moves; !holds();) {
        if (moves != m_Moves) end = Clock::now() + std::chrono::milliseconds(2);
        moves = m_Moves;
        if (!m_Sound && m_Faults.Happened() && Clock::now() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

void ZEL_CALL Session::OnImage(ZelImage* image, void* session) {
    const Crossing crossing(Side::kAround);
    auto& self = *static_cast<Session*>(session);
    if (image->w > 64 || image->h > 48 || !image->pixels) self.Complain("an image of another size");
    ++self.m_Images;
    ++self.m_Moves;
}

const std::vector<Session::Answer>& Session::Run(bool sound, bool close_sdk) {
    m_Sound = sound;
    m_Answers.clear();
    m_Slowest = {};
    m_Complaint.clear();
    Calls(close_sdk);
    current = "";
    return m_Answers;
}

void Session::Calls(bool close_sdk) {
    Search();
    if (m_Camera) {
        ZelCameraInternal& camera = *m_Camera;
        Do("TapBalanceEnable", [&] { return camera.TapBalanceEnable(!m_Link.color) || true; });
        if (Do("Open", [&] { return camera.Open(); }) || m_Faults.Happened()) {
            Do("GetCameraName", [&] { return camera.GetCameraName() != nullptr; });
            Do("SetCameraName", [&] { return camera.SetCameraName("campaign"); });
            Do("SetTextCommandCallback", [&] { return camera.SetTextCommandCallback(OnText, this); });
            Do("SetTextCommand", [&] { return camera.SetTextCommand("info"); });
            Parameters();
            Settings();
            Frames();
            Triggers();
            Do("ResetCamera", [&] { return camera.ResetCamera(); });
        }
        CheckRecords();
        if (!m_Sound) Do("GetNumberOfCameras", [&] { return m_Sdk->GetNumberOfCameras(); });
        const bool closed = Do("Close", [&] { return camera.Close(); });
        int open = 0;
        camera.IsOpen(&open);
        if (closed && open) Complain("it was closed and is open");
        // On failure the camera stays open, and can be used.
        const auto usable = [&] { return camera.GetParameter(ZEL_PARAM_CAMSTATE, sizeof open, &open); };
        if (!closed && open && m_Faults.OperationFailed() && !Do("GetParameter", usable))
            Complain("a camera that could not be closed can't be used");
        if (!closed) Do("Close", [&] { return camera.Close(); });
    }
    if (m_Sdk && close_sdk) Do("ZelSDK::Close", [&] { return m_Sdk->Close(); });
}

void Session::DestroySdk() {
    Do("zel_destroy_sdk", [&] { return zel_destroy_sdk(m_Sdk), 1; });
    m_Sdk = nullptr;
    m_Camera = nullptr;
}

void Session::Search() {
    m_Camera = nullptr;
    Do("zel_create_sdk", [&] { return (m_Sdk = zel_create_sdk()) != nullptr; });
    if (!m_Sdk) return;
    Do("ZelSDK::Open", [&] { return m_Sdk->Open(); });
    Do("zel_set_camera_connect_callback", [&] { return zel_set_camera_connect_callback(OnConnect, this); });
    Do("GetNumberOfCameras", [&] { return m_Sdk->GetNumberOfCameras(); });
    const int number = m_Link.camera;
    Do("GetCameraInterfaceTypeStr", [&] { return m_Sdk->GetCameraInterfaceTypeStr(number) != nullptr; });
    for (int select = 0; select < 5; ++select)
        Do("GetCameraAddressStr", [&] { return m_Sdk->GetCameraAddressStr(number, select) != nullptr; });
    Do("ZelSDK::GetCameraName", [&] { return m_Sdk->GetCameraName(number) != nullptr; });
    Do("GetCameraSerialNumStr", [&] { return m_Sdk->GetCameraSerialNumStr(number) != nullptr; });
    Do("GetCamera", [&] {
        m_Camera = static_cast<ZelCameraInternal*>(m_Sdk->GetCamera(number));
        return m_Camera != nullptr;
    });
}

// Each is read and written with what a new camera has; then its attributes are read.
void Session::Parameters() {
    for (int id = 0; id < ZEL_MAX_PARAMS; ++id) {
        alignas(8) std::array<unsigned char, 128> value{};
        const bool read = Do("GetParameter", [&] {
            return m_Camera->GetParameter(static_cast<unsigned>(id), sizeof value, value.data());
        });
        auto& delivered = m_Delivered[static_cast<std::size_t>(id)];
        if (!m_KnowsDelivered && read) delivered = value;
        if (id != ZEL_PARAM_CMD_ID_ATTR_ID)
            Do("SetParameter", [&] { return m_Camera->SetParameter(id, delivered.data()); });
        for (int attribute = ZEL_ATTR_NAME; attribute <= ZEL_ATTR_DEFAULT_VALUE; ++attribute) {
            const ZelParamAttrId selection{id, attribute};
            Do("SetParameter (selection)",
               [&] { return m_Camera->SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &selection); });
            Do("GetParameter (attribute)",
               [&] { return m_Camera->GetParameter(ZEL_PARAM_ATTR, sizeof value, value.data()); });
        }
    }
    Do("GetParameterValue", [&] { return m_Camera->GetParameterValue(ZEL_PARAM_MODEL_VALUE_1), 1; });
    Do("SetExposureToDefault", [&] { return m_Camera->SetExposureToDefault(); });
    m_KnowsDelivered = true;
}

void Session::Settings() {
    ZelCameraInternal& camera = *m_Camera;
    const auto set = [&](int id, int value) {
        Do("SetParameterValue", [&] { return camera.SetParameterValue(id, value); });
    };
    set(ZEL_PARAM_TAPS_INDEX, m_Link.taps_index);
    set(ZEL_PARAM_EXPOSURE_TIME_US, 100);
    set(ZEL_PARAM_NUM_IMAGE_BUFFERS, kBuffers);
    set(ZEL_PARAM_HW_TRIGGER_ACTIVE, 0);
    set(ZEL_PARAM_UPDATE_PARAMETERS, 1);
    set(ZEL_PARAM_TAP_BALANCE_ENABLE, m_Link.color ? 0 : 1);
    const unsigned bin = m_Link.color ? 1 : 2;
    const ZelRoiBin region{8, 4, 48, 40, bin, bin};
    Do("SetParameter (region)", [&] { return camera.SetParameter(ZEL_PARAM_ROI_BIN, &region); });
    Do("SetImageAveraging", [&] { return camera.SetImageAveraging(3, 1); });
    Do("SetCameraControlCallback", [&] { return camera.SetCameraControlCallback(OnControl, this); });
    Do("SetImageNotificationCallback", [&] { return camera.SetImageNotificationCallback(OnNotification, this); });
    Do("SetImageCallback", [&] { return camera.SetImageCallback(nullptr, nullptr); });
    if (m_Link.color) Colors();
}

void Session::Colors() {
    ZelCameraInternal& camera = *m_Camera;
    static constexpr float kMatrix[9] = {0.9f, 0.1f, 0, 0, 0.9f, 0.1f, 0.1f, 0, 0.9f};
    static constexpr unsigned short kTable[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    float matrix[9];
    Do("ResetColorTransform", [&] { return camera.ResetColorTransform(); });
    Do("ResetScratchpadTransform", [&] { return camera.ResetScratchpadTransform(); });
    for (const int operation : {0, 1, 2, 3, 8, 9, 10}) {
        Do("ConcatenateColorTransform", [&] { return camera.ConcatenateColorTransform(operation, 0); });
        Do("ConcatenateScratchpadTransform", [&] { return camera.ConcatenateScratchpadTransform(operation, 0); });
    }
    Do("ConcatenateColorMatrix", [&] { return camera.ConcatenateColorMatrix(kMatrix); });
    Do("ConcatenateScratchpadMatrix", [&] { return camera.ConcatenateScratchpadMatrix(kMatrix); });
    Do("GetColorTransform", [&] { return camera.GetColorTransform(matrix); });
    Do("GetScratchpadTransform", [&] { return camera.GetScratchpadTransform(matrix); });
    Do("SetInputLinearizationTable", [&] { return camera.SetInputLinearizationTable(kTable, 4, 3); });
    Do("SetOutputNonLinearizationTable", [&] { return camera.SetOutputNonLinearizationTable(kTable, 4, 3); });
    Do("SetScratchpadInputLinearizationTable",
       [&] { return camera.SetScratchpadInputLinearizationTable(kTable, 4, 3); });
    Do("SetScratchpadOutputNonLinearizationTable",
       [&] { return camera.SetScratchpadOutputNonLinearizationTable(kTable, 4, 3); });
    Do("SetScratchpadCallback", [&] { return camera.SetScratchpadCallback(OnScratchpad, this); });
}

// Frames that the application takes, in color where there is any, and then some that come to its callback.
void Session::Frames() {
    ZelCameraInternal& camera = *m_Camera;
    Do("SetParameterValue", [&] { return camera.SetParameterValue(ZEL_PARAM_FRAME_COUNT, kFrames); });
    if (Do("Start", [&] { return camera.Start(); })) TakeFrames(kFrames);
    Do("QueryTransportValue", [&] { return camera.QueryTransportValue(); });
    Do("GetLinkThroughput", [&] { return camera.GetLinkThroughput() >= 0; });
    if (Do("Stop", [&] { return camera.Stop(); })) CheckRecords();
    Do("SetImageCallback", [&] { return camera.SetImageCallback(OnImage, this); });
    m_Images = 0;
    if (Do("Start", [&] { return camera.Start(kImages); })) {
        Await([&] { return m_Images >= kImages; });
        m_Answers.push_back({"images", std::min<int>(m_Images, kImages)});
    }
    const bool stopped = Do("Stop", [&] { return camera.Stop(); });
    Do("SetImageCallback", [&] { return camera.SetImageCallback(nullptr, nullptr); });
    Do("FreeAllPendingImages", [&] { return camera.FreeAllPendingImages(); });
    if (stopped) CheckRecords();
    Do("FreeScratchBuffers", [&] { return camera.FreeScratchBuffers(); });
}

int Session::TakeFrames(int count) {
    ZelCameraInternal& camera = *m_Camera;
    int taken = 0;
    const auto take = [&] {
        const Crossing crossing(Side::kSdk);
        ZelImage* const image = m_Link.color ? camera.GetPendingColorImage() : camera.GetPendingImage();
        if (!image) return false;
        ++taken;
        if (image->w > 64 || image->h > 48 || !image->pixels) Complain("a frame of another size");
        if (m_Sound && taken == 1) m_Answers.push_back({"frame", static_cast<int>(image->w * 1000 + image->h)});
        if (!camera.FreeImage(image)) Complain("a frame can't be given back");
        ++m_Moves;
        return taken == count;
    };
    Await(take);
    m_Answers.push_back({"frames", taken});
    return taken;
}

void Session::Triggers() {
    ZelCameraInternal& camera = *m_Camera;
    Do("SetParameterValue", [&] { return camera.SetParameterValue(ZEL_PARAM_FRAME_COUNT, 0); });
    if (Do("StartTriggerAcquisition", [&] { return camera.StartTriggerAcquisition(); })) {
        for (int i = 0; i < kTriggers; ++i) {
            if (Do("SoftwareTrigger", [&] { return camera.SoftwareTrigger(); }) && TakeFrames(1) == 0) break;
        }
        Do("StopTriggerAcquisition", [&] { return camera.StopTriggerAcquisition(1); });
    }
    Do("StopTriggerAcquisition", [&] { return camera.StopTriggerAcquisition(0); });
    Do("Stop", [&] { return camera.Stop(); });
    if (!m_Sound) Do("Stop", [&] { return camera.Stop(); });
}

// Every record of the pool can be had exactly once, so each is in one list.
void Session::CheckRecords() {
    // The base that has the pool is the camera object's own affair, which this kind of cast overlooks.
    ImageManager& pool = ((ZelCameraControlImpl&)static_cast<ZelCameraControl&>(*m_Camera)).Pool();
    const int records = pool.RegisteredCount();
    if (pool.FreeCount() + pool.PendingCount() + pool.InUseCount() != records) Complain("records are missing");
    pool.FreeAllInUseImages();
    std::set<const ZelImage*> seen;
    while (ZelImage* const image = pool.GetFreeImage()) {
        if (!seen.insert(image).second) break;
    }
    if (static_cast<int>(seen.size()) != records) Complain("a record is in two lists or none");
    pool.FreeAllInUseImages();
}

}  // namespace zel::campaign
