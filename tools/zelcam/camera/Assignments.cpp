#include "tools/zelcam/camera/Assignments.h"

#include <algorithm>

#include "tools/zelcam/text/Failure.h"

namespace zelcam {

Assignment ParseAssignment(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw Failure("'" + text + "'", "not of the form NAME=VALUE", "write it like EXPOSURE_TIME_US=5000", kUsage);
    }
    return {zel::find_parameter(text.substr(0, equals)).id, text.substr(equals + 1)};
}

void PutUnitsFirst(std::vector<Assignment>& assignments) {
    const auto time = std::find_if(assignments.begin(), assignments.end(),
                                   [](const Assignment& a) { return a.id == ZEL_PARAM_EXPOSURE_TIME; });
    std::stable_partition(time, assignments.end(), [](const Assignment& a) { return a.id == ZEL_PARAM_EXPOSURE_UNIT; });
}

zel::SetResult Require(const zel::Camera& camera, const Assignment& assignment) {
    zel::SetResult result = camera.parameter(assignment.id).try_set(assignment.value);
    if (!result) throw Failure(result.text(), result.reason, "nothing was started", kRefused);
    return result;
}

Json ToJson(const zel::ParameterValue& value) {
    switch (value.kind()) {
        case zel::ValueKind::text:
            return value.text();
        case zel::ValueKind::wide:
            return value.is_none() ? Json() : Json(static_cast<std::uint64_t>(value.integer()));
        case zel::ValueKind::region: {
            const ZelRoiBin r = value.region();
            return {{"x", r.XOrigin},      {"y", r.YOrigin}, {"width", r.XPixels},
                    {"height", r.YPixels}, {"xbin", r.XBin}, {"ybin", r.YBin}};
        }
        case zel::ValueKind::matrix:
            return value.matrix();
        default:
            return value.integer();
    }
}

Json ToJson(const zel::SetResult& result) {
    Json json;
    json["name"] = result.info->name;
    json["requested"] = result.requested;
    json["actual"] = result.actual ? ToJson(*result.actual) : Json();
    json["unit"] = result.unit;
    if (result.range.known) {
        json["minimum"] = result.range.minimum;
        json["maximum"] = result.range.maximum;
    }
    json["accepted"] = result.accepted;
    if (!result.accepted) json["reason"] = result.reason;
    return json;
}

}  // namespace zelcam
