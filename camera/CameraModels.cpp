#include "camera/CameraModels.h"

#include <cstring>

namespace zel {

namespace {
// In the order of the search: a text that holds two codes is the first of them.
constexpr CameraModel kCameraModels[] = {
    {"A30", "A30\n", {35000000, 63400000, kNoModelValue, 68900000, 123000000, kNoModelValue}},
    {"B150", "B150\n", {34700000, kNoModelValue, kNoModelValue, 66500000, kNoModelValue, kNoModelValue}},
    {"C400", "C400\n", {34300000, 62000000, 124000000, 64500000, 109000000, 216000000}},
    {"D800", "D800\n", {37000000, 72300000, 144050000, 74900000, 138600000, 278000000}},
};
}  // namespace

const CameraModel* FindCameraModel(const char* model_text) {
    for (const CameraModel& model : kCameraModels) {
        if (std::strstr(model_text, model.code)) return &model;
    }
    return nullptr;
}

}  // namespace zel
