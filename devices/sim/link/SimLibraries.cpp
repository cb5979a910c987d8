#include "devices/sim/link/SimLibraries.h"

#include "devices/sim/sensor/CameraModel.h"
#include "link/ICameraInterface.h"

namespace zel::sim {

namespace {

constexpr SimLibrary kLibraries[] = {
    {"edt_camera_link", CAMERA_TYPE_EDT_CAMERA_LINK, "ZEL_SIM_CL_CAMERAS"},
    {"pleora_ebus", CAMERA_TYPE_PLEORA_EBUS, "ZEL_SIM_EBUS_CAMERAS"},
    {"zel_usb", CAMERA_TYPE_USB, "ZEL_SIM_USB_CAMERAS"},
};

}  // namespace

std::span<const SimLibrary> SimLibraries() { return kLibraries; }

std::vector<int> CamerasCalled(const std::string& word, const SimLibrary& library, int cameras) {
    std::vector<int> numbers;
    for (int i = 0; i < cameras; ++i) {
        const CameraModel model = ModelOfLink(library.interface_type, i);
        const std::string number = std::to_string(i);
        if (word == number || word == library.name + ('/' + number) || word == model.serial || word == model.model_text)
            numbers.push_back(i);
    }
    return numbers;
}

}  // namespace zel::sim
