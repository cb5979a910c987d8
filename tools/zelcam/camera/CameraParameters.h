// Reading and writing the parameters of an open camera.
#ifndef ZELCAM_CAMERAPARAMETERS_H
#define ZELCAM_CAMERAPARAMETERS_H

#include <optional>
#include <string>
#include <vector>

#include "tools/zelcam/camera/ParameterInfo.h"
#include "tools/zelcam/camera/ParameterValue.h"

class ZelCamera;

namespace zelcam {

// Null when the camera has no such parameter or did not answer.
std::optional<ParameterValue> ReadParameter(ZelCamera* camera, const ParameterInfo& info);

// One of the attributes ZEL_ATTR_... as a 32-bit word; null when the camera does not tell.
std::optional<int> ReadAttribute(ZelCamera* camera, unsigned id, int attribute);

// Minimum, maximum and default of a number; not known for other kinds.
ValueRange ReadRange(ZelCamera* camera, const ParameterInfo& info);

// The unit that the parameter's value has with the camera's present settings; empty when it has none.
std::string UnitOf(ZelCamera* camera, const ParameterInfo& info);

// Whether the parameter can be written: what the table says, unless the camera says that its entry is read-only.
Access ReadAccess(ZelCamera* camera, const ParameterInfo& info);

// A number that is nice to have: 0 when it can't be read.
long long ReadNumber(ZelCamera* camera, unsigned id);
std::string ReadText(ZelCamera* camera, unsigned id);

// What became of one write.
struct WriteOutcome {
    const ParameterInfo* info = nullptr;
    std::string requested;
    std::optional<ParameterValue> actual;  // as read back; null for write-only parameters
    ValueRange range;
    std::string unit;
    bool accepted = false;
    std::string reason;  // why not

    // "EXPOSURE_TIME_US: requested 5 -> actual 10 us (range 10..60000000)"
    std::string Text() const;
    Json ToJson() const;
};

// Writes a value and reads it back.
WriteOutcome WriteParameter(ZelCamera* camera, const ParameterInfo& info, const std::string& text);

// Writes a value; throws Failure with the outcome's text when the camera did not take it.
WriteOutcome RequireParameter(ZelCamera* camera, const ParameterInfo& info, const std::string& text);

// A parameter and the text of its wanted value.
struct Assignment {
    const ParameterInfo* info;
    std::string value;
};

// "NAME=VALUE"; throws Failure.
Assignment ParseAssignment(const std::string& text);

// Moves writes of EXPOSURE_UNIT before those of EXPOSURE_TIME, so that a time is meant in that unit in either order.
void PutUnitsFirst(std::vector<Assignment>& assignments);

}  // namespace zelcam

#endif
