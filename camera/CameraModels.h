// The camera models that are recognised on USB, and the six values that go with each.
#ifndef CAMERA_CAMERAMODELS_H
#define CAMERA_CAMERAMODELS_H

#include <array>
#include <cstdint>

namespace zel {

using ModelValues = std::array<std::uint64_t, 6>;

inline constexpr std::uint64_t kNoModelValue = ~std::uint64_t{0};

struct CameraModel {
    const char* code;  // searched for in the model text
    const char* log_line;
    ModelValues values;
};

// The first model of the table whose code occurs in the text; null when none does.
const CameraModel* FindCameraModel(const char* model_text);

}  // namespace zel

#endif
