// Simulated cameras in this process: their settings, and the control export of their plug-ins.
#ifndef TESTS_ZELCAM_SIMCONTROL_H
#define TESTS_ZELCAM_SIMCONTROL_H

#include <string>

#include "devices/sim/link/SimControl.h"
#include "platform/DynamicLibrary.h"
#include "tests/support/Process.h"

namespace zelcam {

// A setting of the cameras that are simulated from now on.
inline void Simulate(const std::string& name, const std::string& value) {
    zel::platform::SetEnvironment(("ZEL_SIM_" + name).c_str(), value.c_str());
}

// Small, unpaced cameras, every other setting at its default. Must run before the SDK looks for cameras.
inline void UseFastCameras(const char* camera_link = "1", const char* ebus = "0", const char* usb = "0") {
    for (const char* name : {"CFA_PHASE", "COLOR_SPACE", "FAULTS", "FILL", "SCENE", "SEED", "TAPS"}) Simulate(name, "");
    Simulate("CL_CAMERAS", camera_link);
    Simulate("EBUS_CAMERAS", ebus);
    Simulate("USB_CAMERAS", usb);
    Simulate("SIZE", "64x48");
    Simulate("PACE", "none");
}

// Gives the Camera Link plug-in a command; true when it was carried out. The plug-in is loaded already, by the SDK.
inline bool SimCommand(const std::string& command) {
    const zel::platform::LibraryHandle library = zel::platform::LoadSharedLibrary("edt_camera_link.dll");
    const auto control = zel::platform::FindFunction<ZelSimControlFunction>(library, "zel_sim_control");
    const bool done = control && control(command.c_str(), nullptr, 0) >= 0;
    zel::platform::UnloadSharedLibrary(library);
    return done;
}

}  // namespace zelcam

#endif
