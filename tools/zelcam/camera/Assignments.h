// Parameters as they come from the command line, and as they are told in JSON.
#ifndef ZELCAM_ASSIGNMENTS_H
#define ZELCAM_ASSIGNMENTS_H

#include <string>
#include <vector>

#include "tools/zelcam/text/Json.h"
#include "zel/Camera.h"

namespace zelcam {

// A parameter and the text of its wanted value.
struct Assignment {
    unsigned id;
    std::string value;
};

// "NAME=VALUE"; throws Failure.
Assignment ParseAssignment(const std::string& text);

// Moves writes of EXPOSURE_UNIT before those of EXPOSURE_TIME, so that a time is meant in that unit in either order.
void PutUnitsFirst(std::vector<Assignment>& assignments);

// Writes a value before a run; throws Failure with what became of it when the camera did not take it.
zel::SetResult Require(const zel::Camera& camera, const Assignment& assignment);

Json ToJson(const zel::ParameterValue& value);
Json ToJson(const zel::SetResult& result);

}  // namespace zelcam

#endif
