// A camera interface library for tests, built several times: PLUGIN_NAME is the word in its texts, the other macros
// leave exports out.
#include "tests/sdk/plugins/TestPlugin.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <thread>

#include "link/ICameraInterface.h"

namespace {

constexpr int kMaxTransports = 4096;

zel::test::TestPluginControl s_Control;
[[maybe_unused]] std::mutex s_NameLock;  // a search and an event may ask for transports at the same time

// A transport that remembers the camera object bound to it, and is seen being used after its end.
class TestTransport final : public ICameraInterface {
  public:
    void SetCameraCommon(IZelCameraCommon*) override { Touch(0); }
    int Connect() override { return Touch(0); }
    int Disconnect() override { return Touch(0); }
    int SendData(int, const unsigned char*) override { return Touch(0); }
    int RecvData(int, unsigned char*, int) override { return Touch(0); }
    int Start() override { return Touch(0); }
    int Stop() override { return Touch(0); }
    int GetInterfaceType() override { return Touch(CAMERA_TYPE_USB); }
    int PrepareAcquisition(int*) override { return Touch(0); }
    void SetFrameCount(int) override { Touch(0); }
    bool SetImageHandler(ZelImageHandler, ZelCamera*) override { return Touch(true); }
    bool SetEventHandler(ZelEventHandler, ZelCamera*) override { return Touch(true); }
    bool EnableEvents(int) override { return Touch(true); }
    int GetStatusValue() override { return Touch(1); }
    int GetDroppedFrames() override { return Touch(0); }
    int StartTrigger() override { return Touch(0); }
    bool StopTrigger() override { return Touch(true); }
    bool SetStatusValue(int) override { return Touch(true); }
    bool GetLedState(unsigned char*) override { return Touch(false); }
    bool SetLedState(bool) override { return Touch(false); }
    void SetCameraObject(ZelCamera* camera) override { m_Bound = Touch(camera); }
    ZelCamera* GetCameraObject() override { return Touch(m_Bound.load()); }

    std::atomic<bool> m_Alive{false};
    std::atomic<ZelCamera*> m_Bound{nullptr};

  private:
    template <class Result>
    Result Touch(Result result) const {
        if (!m_Alive) ++s_Control.calls_of_the_dead;
        return result;
    }
};

// Transports live in a table and are never freed, so that a second destruction is seen and not suffered.
[[maybe_unused]] TestTransport s_Transports[kMaxTransports];
[[maybe_unused]] std::atomic<int> s_NextFresh{256};

[[maybe_unused]] const char* Text(char* buffer, std::size_t size, const char* what, int cam_index) {
    switch (s_Control.text_kind.load()) {
        case zel::test::TextKind::kNull:
            return nullptr;
        case zel::test::TextKind::kLong:
            std::memset(buffer, 'x', 100);
            buffer[100] = '\0';
            return buffer;
        case zel::test::TextKind::kIndexed:
            break;
    }
    std::snprintf(buffer, size, "%s %s %d", PLUGIN_NAME, what, cam_index);
    return buffer;
}

[[maybe_unused]] void WaitWhileBlocked() {
    while (s_Control.block) {
        s_Control.blocked = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

}  // namespace

ZEL_PLUGIN_EXPORT zel::test::TestPluginControl* ZEL_CALL test_plugin_control() { return &s_Control; }

#ifndef PLUGIN_WITHOUT_COUNT
ZEL_PLUGIN_EXPORT int ZEL_CALL get_num_cameras() {
    WaitWhileBlocked();
    return s_Control.num_cameras;
}
#endif

#ifndef PLUGIN_WITHOUT_CREATE
ZEL_PLUGIN_EXPORT ICameraInterface* ZEL_CALL create_camera_interface(int cam_index, char* name) {
    {
        const std::lock_guard guard(s_NameLock);
        std::snprintf(s_Control.last_name, sizeof s_Control.last_name, "%s", name);
    }
    if (s_Control.overwrite_name) std::memset(name, 'o', 64);
    WaitWhileBlocked();
    ++s_Control.created;
    if (cam_index == s_Control.failing_camera || s_Control.failing_camera == zel::test::kAllCameras) return nullptr;
    const int slot = s_Control.fresh_transports ? s_NextFresh.fetch_add(1) : cam_index % 256;
    TestTransport* transport = &s_Transports[slot % kMaxTransports];
    if (!transport->m_Alive.exchange(true)) {
        if (!s_Control.keep_transports) transport->m_Bound = nullptr;
        ++s_Control.transports;
    }
    return transport;
}
#endif

#ifndef PLUGIN_WITHOUT_DESTROY
ZEL_PLUGIN_EXPORT void ZEL_CALL destroy_camera_interface(ICameraInterface* camera) {
    if (static_cast<TestTransport*>(camera)->m_Alive.exchange(false) || s_Control.unload_kills)
        --s_Control.transports;
    else
        ++s_Control.double_destructions;
}
#endif

#if defined(PLUGIN_OPTIONAL) || defined(PLUGIN_TYPE_ONLY)
ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_interface_type_str() {
    static char text[128];
    return Text(text, sizeof text, "USB type", 0);
}
#endif

#ifdef PLUGIN_OPTIONAL
ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_name(int cam_index) {
    thread_local char text[128];
    return Text(text, sizeof text, "name", cam_index);
}

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_serial_num_str(int cam_index) {
    thread_local char text[128];
    return Text(text, sizeof text, "serial", cam_index);
}

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_address_str(int cam_index, int address_select) {
    thread_local char text[128];
    return Text(text, sizeof text, "address", 10 * cam_index + address_select);
}

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_version_str() { return s_Control.version; }

ZEL_PLUGIN_EXPORT void ZEL_CALL lib_unload() {
    ++s_Control.unloads;
    const ConnectionEventCallback callback = s_Control.callback;
    if (s_Control.unload_reports && callback) callback(ICAMERA_INTERFACE_EVENT_ID_CONNECT, 0, s_Control.context);
    if (!s_Control.unload_kills) return;
    for (TestTransport& transport : s_Transports) transport.m_Alive = false;
}

ZEL_PLUGIN_EXPORT void ZEL_CALL set_camera_connection_event_callback(ConnectionEventCallback callback, int context) {
    s_Control.callback = callback;
    s_Control.context = context;
}
#endif

#ifdef PLUGIN_PORT_TYPE
ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_port_type(int) { return s_Control.port_type; }
#endif
