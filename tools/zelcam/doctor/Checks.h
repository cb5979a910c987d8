// The parts of an examination. None of them changes a setting of a camera or of the system.
#ifndef ZELCAM_CHECKS_H
#define ZELCAM_CHECKS_H

#include <filesystem>
#include <string>
#include <vector>

#include "platform/NetworkLinks.h"
#include "tools/zelcam/doctor/Examination.h"

namespace zelcam {

// A file of the SDK's library, and where that looks for the ones it loads by name.
struct SdkFile {
    std::string path;
    std::vector<std::string> places;
};
SdkFile FindSdkFile();

// The tool, the SDK and the logging library: where they are, and whether they belong together.
void CheckLibraries(const SdkFile& sdk, Examination& examination);

// Each plug-in by itself: whether it loads, and what it says.
struct PluginCounts {
    int loaded = 0;
    int cameras = 0;
};
PluginCounts CheckPlugins(const SdkFile& sdk, Examination& examination);

// The cameras as the SDK lists them.
struct NetworkCamera {
    int number = 0;
    std::vector<std::string> addresses;
    double bytes_per_second = 0.0;  // of its pixels, with the settings it has; 0: it was not opened
};
struct CameraCounts {
    std::vector<NetworkCamera> network;  // real ones at that link: a simulated one needs nothing of the system
    bool usb = false;
};
CameraCounts CheckCameras(const SdkFile& sdk, const PluginCounts& plugins, Examination& examination);
// Opens every camera and takes one frame with it; notes what network cameras need.
void TryCameras(CameraCounts& cameras, Examination& examination);

void CheckCalibrationFolder(Examination& examination);
// Processor, memory, limits.
void CheckSystem(const CameraCounts& cameras, Examination& examination);
// The way of network cameras to this computer, where there may be some.
void CheckNetwork(const CameraCounts& cameras, Examination& examination);
// The same for these interfaces.
void TellOfLinks(const std::vector<zel::platform::NetworkLink>& links, const CameraCounts& cameras,
                 Examination& examination);
// Whether the user expects cameras on the network.
bool NetworkIsWanted(const CameraCounts& cameras);
// What the ZEL_... variables are set to.
void CheckEnvironment(Examination& examination);

}  // namespace zelcam

#endif
