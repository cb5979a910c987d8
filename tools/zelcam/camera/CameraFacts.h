// What is said about a camera beside its pictures and in summaries.
#ifndef ZELCAM_CAMERAFACTS_H
#define ZELCAM_CAMERAFACTS_H

#include <string>

#include "tools/zelcam/text/Json.h"
#include "zel/Camera.h"

namespace zelcam {

struct CameraFacts {
    zel::CameraInfo info;
    std::string model;
    std::string firmware;
};

CameraFacts ReadFacts(const zel::Camera& camera);

// number, name, serial, interface, addresses
Json ToJson(const zel::CameraInfo& info);
// the same with model and firmware
Json ToJson(const CameraFacts& facts);

}  // namespace zelcam

#endif
