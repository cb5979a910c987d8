// What a test sets in a test plug-in and reads back from it. The plug-in exports one of these through
// test_plugin_control(); a library that was unloaded and loaded again starts with a fresh one.
#ifndef TESTS_SDK_PLUGINS_TESTPLUGIN_H
#define TESTS_SDK_PLUGINS_TESTPLUGIN_H

#include <atomic>

#include "link/CameraInterfaceLibrary.h"

namespace zel::test {

inline constexpr int kAllCameras = -2;

struct TestPluginControl {
    std::atomic<const char*> lacks{""};  // names of exports that are not there (tests/sdk/LibraryLoads.h)
    std::atomic<int> num_cameras{0};
    std::atomic<int> failing_camera{-1};        // create_camera_interface answers null for this one, or for kAllCameras
    std::atomic<bool> fresh_transports{false};  // a new transport for each call; otherwise one per camera
    std::atomic<bool> keep_transports{false};   // destroy_camera_interface leaves the transport and its binding alone
    std::atomic<bool> overwrite_name{false};    // create_camera_interface fills the 64 bytes it is given
    std::atomic<const char*> port_type{"USB 3.0"};
    std::atomic<const char*> version{nullptr};
    std::atomic<bool> unload_kills{false};    // lib_unload takes the transports with it, which it must not
    std::atomic<bool> unload_reports{false};  // lib_unload reports one more event
    std::atomic<bool> block{false};           // get_num_cameras and create_camera_interface wait while this is set

    std::atomic<bool> blocked{false};
    std::atomic<int> loads{0};  // that were not taken back
    std::atomic<int> unloads{0};
    std::atomic<int> transports{0};  // alive
    std::atomic<int> created{0};     // answers of create_camera_interface
    std::atomic<int> misuses{0};     // operations, and destructions, of transports that are not alive
    std::atomic<ConnectionEventCallback> callback{nullptr};
    std::atomic<int> context{-2};
    char last_name[64] = "";  // what create_camera_interface was given
};

using TestPluginControlFunction = TestPluginControl*(ZEL_CALL*)();

}  // namespace zel::test

#endif
