#include "tools/zelcam/camera/CameraFacts.h"

#include "include/ZelParameters.h"
#include "tools/zelcam/camera/CameraParameters.h"
#include "tools/zelcam/camera/Session.h"

namespace zelcam {

CameraFacts ReadFacts(const OpenCamera& camera) {
    return {camera.Entry(), ReadText(camera.Get(), ZEL_PARAM_HW_MODEL), ReadText(camera.Get(), ZEL_PARAM_FW_VER)};
}

Json ToJson(const CameraEntry& entry) {
    Json json;
    json["number"] = entry.number;
    json["name"] = entry.name;
    json["serial"] = entry.serial;
    json["interface"] = entry.interface_type;
    json["addresses"] = entry.addresses;
    return json;
}

Json ToJson(const CameraFacts& facts) {
    Json json = ToJson(facts.entry);
    json["model"] = facts.model;
    json["firmware"] = facts.firmware;
    return json;
}

}  // namespace zelcam
