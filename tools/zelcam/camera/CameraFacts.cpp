#include "tools/zelcam/camera/CameraFacts.h"

#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

CameraFacts ReadFacts(const zel::Camera& camera) {
    const auto text = [&](unsigned id) {
        const auto value = camera.parameter(id).try_value();
        return value ? Trim(value->text()) : "";
    };
    return {camera.info(), text(ZEL_PARAM_HW_MODEL), text(ZEL_PARAM_FW_VER)};
}

Json ToJson(const zel::CameraInfo& info) {
    Json json;
    json["number"] = info.number;
    json["name"] = info.name;
    json["serial"] = info.serial;
    json["interface"] = info.interface_type;
    json["addresses"] = info.addresses;
    return json;
}

Json ToJson(const CameraFacts& facts) {
    Json json = ToJson(facts.info);
    json["model"] = facts.model;
    json["firmware"] = facts.firmware;
    return json;
}

}  // namespace zelcam
