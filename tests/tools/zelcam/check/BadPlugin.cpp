// A plug-in for the check of plug-ins to find fault with: the simulated USB cameras with what ZEL_TEST_FAULT names gone
// wrong, or with nothing wrong when that is empty. It prints to the standard output, as a maker's library may.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "include/ZelImage.h"
#include "link/CameraInterfaceLibrary.h"
#include "link/IZelCameraCommon.h"
#include "link/SyncTableIndex.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/check/ForwardingTransport.h"
#include "tools/zelcam/check/PluginLibrary.h"

namespace zelcam::check {
namespace {

using namespace std::chrono_literals;

// Asked for at the very end, too, when nothing that has a destructor is left.
bool Fault(const char* name) {
    static const auto* const s_Fault = new std::string(zel::platform::EnvironmentVariable("ZEL_TEST_FAULT"));
    return *s_Fault == name;
}

const PluginLibrary& Good() {
    static const PluginLibrary s_Good("zel_usb.dll");
    return s_Good;
}

class BadTransport final : public ForwardingTransport, private IZelCameraCommon {
  public:
    using ForwardingTransport::ForwardingTransport;

    void SetCameraCommon(IZelCameraCommon* camera) override {
        IZelCameraCommon* const before = m_Host;
        if (camera) m_Host = camera;
        Next().SetCameraCommon(camera ? this : nullptr);
        if (!camera && before && Fault("call-after-null")) CallLate(*before);
    }
    int Connect() override {
        if (Fault("exit-in-connect")) std::_Exit(3);
        const int code = Next().Connect();
        return Fault("connect-code-lost") ? 0 : code;
    }
    int Disconnect() override {
        const int code = Next().Disconnect();
        if (m_Host && Fault("call-after-disconnect")) CallLate(*m_Host);
        return code;
    }
    int Start() override {
        if (Fault("start-crashes")) *m_Nowhere = 1;
        if (Fault("handle-lost")) m_Lost = std::fopen(zel::platform::ProgramFile().c_str(), "rb");
        const int code = Next().Start();
        return Fault("start-code-lost") ? 0 : code;
    }
    int Stop() override {
        while (Fault("stop-hangs")) std::this_thread::sleep_for(1s);
        const int code = Next().Stop();
        if (m_Host && Fault("frame-after-stop")) CallLate(*m_Host);
        return code;
    }
    int GetInterfaceType() override {
        return Fault("type-changes") ? 3 + 2 * (++m_Asked % 2) : Next().GetInterfaceType();
    }
    void SetFrameCount(int frames) override { Next().SetFrameCount(Fault("sequence-ignored") ? 0 : frames); }
    int GetDroppedFrames() override { return Fault("drops-uncounted") ? 0 : Next().GetDroppedFrames(); }
    bool GetLedState(unsigned char* on) override {
        const bool done = Next().GetLedState(on);
        if (done && Fault("led-stuck")) *on = 0;
        return done;
    }
    ZelCamera* GetCameraObject() override {
        return Fault("camera-object-lost") || m_Dead ? nullptr : Next().GetCameraObject();
    }
    double GetLinkUtilization() override { return Fault("utilization-high") ? 1.5 : Next().GetLinkUtilization(); }
    bool SetImageHandler(ZelImageHandler handler, ZelCamera* camera) override {
        m_ImageHandler = handler, m_ImageCamera = camera;
        if (m_Host && Fault("call-before-connect")) m_Host->GetLastErrorPtr();
        return Next().SetImageHandler(handler ? OnImage : nullptr, Identity());
    }
    bool SetEventHandler(ZelEventHandler handler, ZelCamera* camera) override {
        m_EventHandler = handler, m_EventCamera = camera;
        return Next().SetEventHandler(handler ? OnEvent : nullptr, Identity());
    }

    int SendData(int len, const unsigned char* data) override {
        std::vector<unsigned char> datagram(data, data + len);
        const bool set = len == 14 && data[0] == 0 && data[3] == zel::SYNC_TABLE_CMD_SET;
        if (set && data[6] == zel::FRAME_COUNT && Fault("sequence-ignored")) datagram[10] = 0;
        if (len == 10 && data[6] == zel::CLOCK_SPEED_VAL && Fault("clock-missing")) datagram[6] = 200;
        const std::unique_lock lock = Locked();
        if (set && data[6] == zel::SW_TRIG && Fault("trigger-twice")) Exchange(datagram);
        m_Reply.clear();
        const int sent = Exchange(datagram);
        const bool get = len == 10 && data[3] == zel::SYNC_TABLE_CMD_GET;
        if (get && data[6] == zel::EXPOSURE_TIME && Fault("write-ignored")) m_Reply[7] = 0x55;
        return Fault("short-send") ? sent - 1 : sent;
    }
    int RecvData(int len, unsigned char* buffer, int timeout_ms) override {
        if (m_Reply.empty()) {
            if (!Fault("receive-at-once")) std::this_thread::sleep_for(std::chrono::milliseconds(timeout_ms));
            return Fault("receive-negative") ? -1 : 0;
        }
        int count = 0;
        for (; count < len && !m_Reply.empty(); m_Reply.pop_front()) buffer[count++] = m_Reply.front();
        if (Fault("receive-too-many")) buffer[count++] = 0;
        if (Fault("receive-drops")) m_Reply.clear();
        return count;
    }

    void Die() { m_Dead = true; }

  private:
    ZelCamera* Identity() { return reinterpret_cast<ZelCamera*>(this); }
    static BadTransport& Self(ZelCamera* camera) { return *reinterpret_cast<BadTransport*>(camera); }

    // Held while the host is called, which it must not be.
    std::unique_lock<std::mutex> Locked() {
        return Fault("lock-held") ? std::unique_lock(m_Lock) : std::unique_lock<std::mutex>();
    }
    void CallLate(IZelCameraCommon& host) {
        m_Late = std::jthread([&host] {
            std::this_thread::sleep_for(60ms);
            host.GetLastErrorPtr();
        });
    }

    // Takes bytes of the real reply.
    std::vector<unsigned char> Receive(std::size_t size) {
        std::vector<unsigned char> bytes(size);
        for (std::size_t got = 0; got < size;) {
            const int count = Next().RecvData(static_cast<int>(size - got), bytes.data() + got, 500);
            if (count <= 0) return {};
            got += static_cast<std::size_t>(count);
        }
        return bytes;
    }
    std::vector<unsigned char> ReceiveDatagram() {
        std::vector<unsigned char> datagram = Receive(3);
        if (datagram.empty()) return datagram;
        const auto payload = Receive(std::size_t{datagram[1]} * 256 + datagram[2]);
        datagram.insert(datagram.end(), payload.begin(), payload.end());
        return datagram;
    }
    void Answer(const std::vector<unsigned char>& bytes) { m_Reply.insert(m_Reply.end(), bytes.begin(), bytes.end()); }

    int Exchange(const std::vector<unsigned char>& datagram) {
        const int sent = Next().SendData(static_cast<int>(datagram.size()), datagram.data());
        if (sent <= 0) return sent;
        auto reply = ReceiveDatagram();
        if (datagram[0] == 9) {
            if (Fault("text-unended") && reply.size() > 5) reply.resize(reply.size() - 3), reply[2] -= 3;
            Answer(reply);
            return sent;
        }
        if (Fault("header-swapped")) std::swap(reply[1], reply[2]);
        Answer(reply);
        auto exception = ReceiveDatagram();
        const int code = exception.size() > 5 ? exception[5] : 0;
        const bool kept = code == zel::kExceptionWriteToConst || code == zel::kExceptionWriteToReadOnly;
        if ((Fault("const-accepted") && kept) || (Fault("range-accepted") && code == zel::kExceptionChange))
            exception = {0, 0, 0};
        if (code == 0 || !Fault("exception-unsent")) Answer(exception);
        if (Fault("byte-behind")) m_Reply.push_back(0);
        return sent;
    }

    static void ZEL_CALL OnImage(ZelImage* image, ZelCamera* camera) {
        BadTransport& self = Self(camera);
        std::unique_lock lock = self.Locked();
        self.m_ImageHandler(image, self.m_ImageCamera);
        if (lock) lock.unlock();
        if (Fault("event-late")) self.m_EventHandler(&self.m_LateEvent, self.m_EventCamera);
    }
    static void ZEL_CALL OnEvent(const ZelCameraEvent* event, ZelCamera* camera) {
        BadTransport& self = Self(camera);
        const bool ready = event->id == CAMERA_EVENT_IMAGE_READY;
        if (Fault("event-late")) self.m_LateEvent = *event;
        if (ready && (Fault("event-missing") || Fault("event-late"))) return;
        if (event->id == CAMERA_EVENT_DISCONNECT && Fault("link-lost-untold")) return;
        self.m_EventHandler(event, self.m_EventCamera);
    }

    // IZelCameraCommon
    int ConnectCommon() override { return m_Host->ConnectCommon(); }
    int StopCommon() override { return m_Host->StopCommon(); }
    int StartCommon() override { return Fault("start-uncalled") ? 0 : m_Host->StartCommon(); }
    int StartTriggerCommon() override { return m_Host->StartTriggerCommon(); }
    int TextCommandCommon(const char* text, bool reply) override { return m_Host->TextCommandCommon(text, reply); }
    bool GetCameraParameter(int index, int* value) override { return m_Host->GetCameraParameter(index, value); }
    int* GetLastErrorPtr() override { return m_Host->GetLastErrorPtr(); }
    bool SyncTapBalanceGain() override { return m_Host->SyncTapBalanceGain(); }
    ZelImage* GetFreeImage() override {
        if (Fault("record-lost") && m_Asked++ == 0) m_Host->GetFreeImage();
        return m_Host->GetFreeImage();
    }
    ZelImage* GetPendingImage() override { return m_Host->GetPendingImage(); }
    bool SetPendingImage(ZelImage* image) override {
        auto* const bytes = reinterpret_cast<unsigned char*>(image->pixels);
        const unsigned size = static_cast<ZelColorImage*>(image)->buffer_size;
        if (Fault("frame-too-long")) bytes[size] = 0;
        if (Fault("samples-too-high")) image->pixels[1] = 0xFFFF;
        if (Fault("numbers-repeat")) image->image_number = 7;
        return m_Host->SetPendingImage(image);
    }
    bool ReleaseImage(ZelImage* image) override { return m_Host->ReleaseImage(image); }
    void FillImageInfo(ZelImage* image) override { m_Host->FillImageInfo(image); }
    void FreeAllInUseImages() override { m_Host->FreeAllInUseImages(); }

    IZelCameraCommon* m_Host = nullptr;
    int* volatile m_Nowhere = nullptr;
    std::FILE* m_Lost = nullptr;
    ZelImageHandler m_ImageHandler = nullptr;
    ZelCamera* m_ImageCamera = nullptr;
    ZelEventHandler m_EventHandler = nullptr;
    ZelCamera* m_EventCamera = nullptr;
    ZelCameraEvent m_LateEvent{};
    std::deque<unsigned char> m_Reply;
    std::mutex m_Lock;
    std::jthread m_Late;
    int m_Asked = 0;
    bool m_Dead = false;
};

std::map<ICameraInterface*, std::unique_ptr<BadTransport>> s_Transports;
ConnectionEventCallback s_Callback = nullptr;
bool s_Unloaded = false;

void ZEL_CALL WithoutContext(int id, int camera, int) { s_Callback(id, camera, 0); }

// Loaded once in a process, and a second time in vain.
bool LoadedBefore() {
    static const std::string s_Before = zel::platform::EnvironmentVariable("ZEL_TEST_LOADED");
    zel::platform::SetEnvironment("ZEL_TEST_LOADED", "1");
    return !s_Before.empty();
}

struct AtTheEnd {
    ~AtTheEnd() {
        if (Fault("end-badly")) std::_Exit(3);  // Windows makes nothing of a crash here
    }
} s_AtTheEnd;

}  // namespace
}  // namespace zelcam::check

using namespace zelcam::check;

ZEL_PLUGIN_EXPORT int ZEL_CALL get_num_cameras() {
    std::fputs("chatter without a line end", stdout);
    static int s_Asked = 0;
    // Each load on Windows would take handles along, which is a fault.
    if (!Fault("second-load-fails")) zel::platform::KeepThisLibraryLoaded();
    if (Fault("second-load-fails") && LoadedBefore()) return -1;
    if (Fault("dead-after-unload") && s_Unloaded) return 0;
    return Good().get_num_cameras() + (Fault("count-changes") ? ++s_Asked : 0);
}

ZEL_PLUGIN_EXPORT ICameraInterface* ZEL_CALL create_camera_interface(int camera, char* name) {
    ICameraInterface* const made = Good().create_camera_interface(Fault("any-camera") ? 0 : camera, name);
    if (!made) return nullptr;
    std::unique_ptr<BadTransport>& transport = s_Transports[made];
    if (transport && Fault("new-transport")) return new BadTransport(*made);
    if (!transport) transport = std::make_unique<BadTransport>(*made);
    return transport.get();
}

ZEL_PLUGIN_EXPORT void ZEL_CALL destroy_camera_interface(ICameraInterface* transport) {
    ICameraInterface* const made = &static_cast<BadTransport*>(transport)->Next();
    s_Transports.erase(made);
    Good().destroy_camera_interface(made);
}

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_name(int camera) {
    static std::string s_Name;
    if (Fault("text-changes")) return (s_Name += "x").c_str();
    return Fault("text-too-long") ? (s_Name = std::string(64, 'x')).c_str() : Good().get_camera_name(camera);
}

ZEL_PLUGIN_EXPORT void ZEL_CALL lib_unload() {
    s_Unloaded = true;
    if (Fault("dies-with-unload")) {
        for (const auto& [made, transport] : s_Transports) transport->Die();
    }
    if (!Fault("events-after-unload")) Good().lib_unload();
}

ZEL_PLUGIN_EXPORT void ZEL_CALL set_camera_connection_event_callback(ConnectionEventCallback callback, int context) {
    s_Callback = callback;
    Good().set_camera_connection_event_callback(callback && Fault("context-lost") ? WithoutContext : callback, context);
}

ZEL_PLUGIN_EXPORT int ZEL_CALL zel_sim_control(const char* command, char* reply, int size) {
    int(ZEL_CALL * control)(const char*, char*, int);
    PluginLibrary("zel_usb.dll").Bind(control, "zel_sim_control");
    return control(command, reply, size);
}
