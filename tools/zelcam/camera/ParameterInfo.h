// What the tool knows about each parameter beside what the camera tells: its name, how its value is laid out, its unit
// and one line of description.
#ifndef ZELCAM_PARAMETERINFO_H
#define ZELCAM_PARAMETERINFO_H

#include <string>
#include <vector>

namespace zelcam {

enum class ValueKind {
    kNumber,    // 32-bit integer, unsigned
    kSigned,    // 32-bit integer, signed
    kText,      // zero-terminated text of up to 32 bytes
    kRegion,    // ZelRoiBin
    kMatrix,    // nine doubles
    kWide,      // 64-bit integer
    kSelector,  // part of the attribute mechanism, no value of its own
};

enum class Access { kReadWrite, kReadOnly, kWriteOnly };

struct ParameterInfo {
    unsigned id;
    const char* name;  // without the leading ZEL_PARAM_
    ValueKind kind;
    Access access;
    const char* unit;  // empty when there is none
    const char* description;
};

// Every parameter in order of id, the model-dependent 64-bit values last.
const std::vector<ParameterInfo>& AllParameters();

// The parameter that the user names: "EXPOSURE_TIME_US", "exposure-time-us", "ZEL_PARAM_EXPOSURE_TIME_US" or "58".
// Throws Failure with the nearest names for an unknown one.
const ParameterInfo& FindParameter(const std::string& wanted);
// The row of an id that is known to be there.
const ParameterInfo& ParameterById(unsigned id);

const char* AccessText(Access access);
const char* KindText(ValueKind kind);

}  // namespace zelcam

#endif
