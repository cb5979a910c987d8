// Which camera the user means: a number as `list` shows it, or a serial number.
#ifndef ZELCAM_CAMERASELECTOR_H
#define ZELCAM_CAMERASELECTOR_H

#include <string>
#include <vector>

namespace zelcam {

// One camera as the search describes it, without opening it.
struct CameraEntry {
    int number = 0;
    std::string name;
    std::string serial;
    std::string interface_type;
    std::vector<std::string> addresses;
};

// The number of the camera that `wanted` names. A camera number goes before an equal serial number; serial numbers are
// compared without regard to case. Throws Failure, which names the cameras there are, when there is no such camera or
// more than one.
int SelectCamera(const std::vector<CameraEntry>& cameras, const std::string& wanted);

}  // namespace zelcam

#endif
