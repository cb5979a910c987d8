// What is said about a camera beside its pictures and in summaries.
#ifndef ZELCAM_CAMERAFACTS_H
#define ZELCAM_CAMERAFACTS_H

#include <string>

#include "tools/zelcam/camera/CameraSelector.h"
#include "tools/zelcam/text/Json.h"

namespace zelcam {

class OpenCamera;

struct CameraFacts {
    CameraEntry entry;
    std::string model;
    std::string firmware;
};

CameraFacts ReadFacts(const OpenCamera& camera);

// number, name, serial, interface, addresses
Json ToJson(const CameraEntry& entry);
// the same with model and firmware
Json ToJson(const CameraFacts& facts);

}  // namespace zelcam

#endif
