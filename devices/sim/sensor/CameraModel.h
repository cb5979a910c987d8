// The camera models that can be simulated, and what makes one differ from the other.
#ifndef SIM_CAMERAMODEL_H
#define SIM_CAMERAMODEL_H

#include <string>

namespace zel::sim {

struct CameraModel {
    std::string model_text;  // entry HW_MODEL
    const char* name = "";   // entry CAMERA_NAME as delivered
    std::string serial;
    int interface_type = 0;  // CAMERA_TYPE_...
    unsigned width = 0;
    unsigned height = 0;
    int bits = 14;
    bool packed = false;                   // samples travel as 12 bits
    int cfa_phase = 0;                     // 0 = monochrome
    std::string color_space = "CCIR 709";  // that its color matrices lead to
    int largest_taps_idx = 0;              // SENSOR_TAPS_IDX 0, 1, 2 = 1, 2, 4 taps
    int default_taps_idx = 0;
    bool even_taps = false;  // the taps do not differ
    int pixel_size_nm = 5500;
    int exposure_us = 10000;  // as delivered
    int gain = 0;
    double frame_us = 0.0;  // from frame to frame when that is not what exposure and readout take; 0: it is
    double link_bytes_per_second = 0.0;  // what the link can carry

    bool Color() const { return cfa_phase != 0; }
};

// Model `number` (0, 1, ...) of a plug-in's cameras; serial numbers are unique. The models of one kind of link repeat
// when more cameras are asked for than there are models.
CameraModel ModelOfLink(int interface_type, int number);

// How many cameras a plug-in has when the user does not say.
int DefaultCameraCount(int interface_type);

}  // namespace zel::sim

#endif
