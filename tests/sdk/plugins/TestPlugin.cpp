// A camera interface library for tests, built three times: PLUGIN_NAME is the word in its texts.
#include "tests/sdk/plugins/TestPlugin.h"

#include <cstdio>
#include <cstring>
#include <thread>

#include "tests/support/ScriptedTransport.h"

namespace {

zel::test::TestPluginControl s_Control;

// A transport that remembers the camera object bound to it, and is seen being used after its end.
class TestTransport final : public zel::test::ScriptedTransport {
  public:
    void SetCameraObject(ZelCamera* camera) override { m_Bound = Touched(camera); }
    ZelCamera* GetCameraObject() override { return Touched(m_Bound.load()); }

    std::atomic<bool> m_Alive{false};
    std::atomic<ZelCamera*> m_Bound{nullptr};

  private:
    ZelCamera* Touched(ZelCamera* camera) const {
        if (!m_Alive) ++s_Control.misuses;
        return camera;
    }
};

// Transports live in a table and are never freed, so that a second destruction is seen and not suffered.
TestTransport s_Transports[512];

// Good until the fourth text after it.
const char* Text(const char* what, int index) {
    thread_local char texts[4][128];
    thread_local unsigned next = 0;
    char* const text = texts[next++ % 4];
    std::snprintf(text, sizeof texts[0], "%s %s %d", PLUGIN_NAME, what, index);
    return text;
}

void WaitWhileBlocked() {
    while (s_Control.block) {
        s_Control.blocked = true;
        std::this_thread::yield();
    }
}

}  // namespace

ZEL_PLUGIN_EXPORT zel::test::TestPluginControl* ZEL_CALL test_plugin_control() { return &s_Control; }

ZEL_PLUGIN_EXPORT int ZEL_CALL get_num_cameras() {
    WaitWhileBlocked();
    return s_Control.num_cameras;
}

ZEL_PLUGIN_EXPORT ICameraInterface* ZEL_CALL create_camera_interface(int cam_index, char* name) {
    std::snprintf(s_Control.last_name, sizeof s_Control.last_name, "%s", name);
    if (s_Control.overwrite_name) std::memset(name, 'o', 64);
    WaitWhileBlocked();
    ++s_Control.created;
    if (cam_index == s_Control.failing_camera || s_Control.failing_camera == zel::test::kAllCameras) return nullptr;
    TestTransport* transport = &s_Transports[s_Control.fresh_transports ? 256 + s_Control.created % 256 : cam_index];
    if (!transport->m_Alive.exchange(true)) {
        if (!s_Control.keep_transports) transport->m_Bound = nullptr;
        ++s_Control.transports;
    }
    return transport;
}

ZEL_PLUGIN_EXPORT void ZEL_CALL destroy_camera_interface(ICameraInterface* camera) {
    if (static_cast<TestTransport*>(camera)->m_Alive.exchange(false) || s_Control.unload_kills)
        --s_Control.transports;
    else
        ++s_Control.misuses;
}

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_interface_type_str() { return Text("USB type", 0); }

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_name(int cam_index) { return Text("name", cam_index); }

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_serial_num_str(int cam_index) { return Text("serial", cam_index); }

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_address_str(int cam_index, int address_select) {
    return Text("address", 10 * cam_index + address_select);
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

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_port_type(int) { return s_Control.port_type; }
