#include "devices/sim/sensor/CameraModel.h"

#include "link/ICameraInterface.h"

namespace zel::sim {

namespace {

CameraModel Model(int interface_type, const char* model_text, const char* name, unsigned width, unsigned height) {
    CameraModel model;
    model.interface_type = interface_type;
    model.model_text = model_text;
    model.name = name;
    model.width = width;
    model.height = height;
    return model;
}

CameraModel CameraLinkModel() {
    CameraModel model = Model(CAMERA_TYPE_EDT_CAMERA_LINK, "L2048-4M", "Simulated L2048-4M", 2048, 2048);
    model.largest_taps_idx = 2;
    model.default_taps_idx = 2;
    model.link_bytes_per_second = 680.0e6;
    return model;
}

CameraModel EbusModel() {
    CameraModel model = Model(CAMERA_TYPE_PLEORA_EBUS, "E150-2M", "Simulated E150-2M", 1600, 1200);
    model.bits = 12;
    model.packed = true;
    model.largest_taps_idx = 1;
    model.default_taps_idx = 1;
    model.pixel_size_nm = 7400;
    model.link_bytes_per_second = 115.0e6;
    return model;
}

CameraModel UsbModel(bool color) {
    CameraModel model = color ? Model(CAMERA_TYPE_USB, "C400-C", "Simulated C400-C", 1280, 960)
                              : Model(CAMERA_TYPE_USB, "A30-M", "Simulated A30-M", 1280, 1024);
    model.cfa_phase = color ? 4 : 0;
    model.pixel_size_nm = 4650;
    model.link_bytes_per_second = 350.0e6;
    return model;
}

}  // namespace

CameraModel ModelOfLink(int interface_type, int number) {
    CameraModel model = interface_type == CAMERA_TYPE_EDT_CAMERA_LINK ? CameraLinkModel()
                        : interface_type == CAMERA_TYPE_PLEORA_EBUS   ? EbusModel()
                                                                      : UsbModel(number % 2 == 0);
    model.serial = std::to_string(interface_type * 100000 + 101 + number);
    return model;
}

int DefaultCameraCount(int interface_type) { return interface_type == CAMERA_TYPE_USB ? 2 : 1; }

}  // namespace zel::sim
