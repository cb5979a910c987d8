#include "tools/zelcam/camera/CameraParameters.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "include/ZelCamera.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

// Value of ZEL_ATTR_FLAGS for an entry that the camera does not let anyone write.
constexpr int kFlagReadOnly = 4;

// The camera keeps the bounds of the pixel clock in MHz, its value comes in hertz.
constexpr long long kHertzPerMegahertz = 1000000;

// EXPOSURE_TIME alone has a unit that is set.
bool CountsMilliseconds(ZelCamera* camera, const ParameterInfo& info) {
    return info.id == ZEL_PARAM_EXPOSURE_TIME && ReadNumber(camera, ZEL_PARAM_EXPOSURE_UNIT) == 1;
}

bool IsNumber(ValueKind kind) { return kind == ValueKind::kNumber || kind == ValueKind::kSigned; }

// The camera's name travels as a text command of its own; every other value is a parameter write.
bool Write(ZelCamera* camera, const ParameterInfo& info, const ParameterValue& value) {
    if (info.id == ZEL_PARAM_GLOBAL_CAMERA_NAME) return camera->SetCameraName(value.Text().c_str());
    return camera->SetParameter(static_cast<int>(info.id), value.Data());
}

std::optional<ParameterValue> ReadBack(ZelCamera* camera, const ParameterInfo& info) {
    if (info.id != ZEL_PARAM_GLOBAL_CAMERA_NAME) return ReadParameter(camera, info);
    std::string name = Trim(TextOrEmpty(camera->GetCameraName()));
    return ParameterValue::Parse(info, name.substr(0, 31));
}

}  // namespace

std::optional<ParameterValue> ReadParameter(ZelCamera* camera, const ParameterInfo& info) {
    if (info.access == Access::kWriteOnly || info.kind == ValueKind::kSelector) return std::nullopt;
    ParameterValue value(info.kind);
    const bool word = IsNumber(info.kind);
    if (!camera->GetParameter(info.id, word ? 4u : static_cast<unsigned>(ParameterValue::kCapacity), value.Data())) {
        return std::nullopt;
    }
    return value;
}

std::optional<int> ReadAttribute(ZelCamera* camera, unsigned id, int attribute) {
    const ZelParamAttrId selection{static_cast<int>(id), attribute};
    // Attributes of wide values fill as much room as the value does.
    alignas(8) char bytes[ParameterValue::kCapacity] = {};
    if (!camera->SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &selection) ||
        !camera->GetParameter(ZEL_PARAM_ATTR, sizeof bytes, bytes)) {
        return std::nullopt;
    }
    int word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

ValueRange ReadRange(ZelCamera* camera, const ParameterInfo& info) {
    if (!IsNumber(info.kind)) return {};
    // The exposure in microseconds has the bounds of the camera's own entry.
    const unsigned id = info.id == ZEL_PARAM_EXPOSURE_TIME_US ? ZEL_PARAM_EXPOSURE_TIME : info.id;
    const auto minimum = ReadAttribute(camera, id, ZEL_ATTR_MIN_VALUE);
    if (!minimum) return {};
    const auto maximum = ReadAttribute(camera, id, ZEL_ATTR_MAX_VALUE);
    const auto standard = ReadAttribute(camera, id, ZEL_ATTR_DEFAULT_VALUE);
    if (!maximum || !standard) return {};
    const ValueRange range = RangeFromWords(*minimum, *maximum, *standard);
    if (info.id == ZEL_PARAM_READOUT_SPEED) return ScaledRange(range, kHertzPerMegahertz, 1);
    return CountsMilliseconds(camera, info) ? ScaledRange(range, 1, 1000) : range;
}

std::string UnitOf(ZelCamera* camera, const ParameterInfo& info) {
    return CountsMilliseconds(camera, info) ? "ms" : info.unit;
}

Access ReadAccess(ZelCamera* camera, const ParameterInfo& info) {
    if (info.access != Access::kReadWrite || info.kind == ValueKind::kSelector) return info.access;
    const auto flags = ReadAttribute(camera, info.id, ZEL_ATTR_FLAGS);
    return flags == kFlagReadOnly ? Access::kReadOnly : info.access;
}

long long ReadNumber(ZelCamera* camera, unsigned id) {
    const auto value = ReadParameter(camera, ParameterById(id));
    return value ? value->Integer() : 0;
}

std::string ReadText(ZelCamera* camera, unsigned id) {
    const auto value = ReadParameter(camera, ParameterById(id));
    return value ? Trim(value->Text()) : std::string();
}

std::string WriteOutcome::Text() const {
    return fmt::format("{}: requested {} -> actual {}{}{}{}", info->name, requested,
                       actual ? actual->Text() : "not readable", unit.empty() ? "" : " ", unit,
                       range.known ? " (range " + range.Text() + ")" : "");
}

Json WriteOutcome::ToJson() const {
    Json json;
    json["name"] = info->name;
    json["requested"] = requested;
    json["actual"] = actual ? actual->ToJson() : Json();
    json["unit"] = unit;
    if (range.known) {
        json["minimum"] = range.minimum;
        json["maximum"] = range.maximum;
    }
    json["accepted"] = accepted;
    if (!accepted) json["reason"] = reason;
    return json;
}

WriteOutcome WriteParameter(ZelCamera* camera, const ParameterInfo& info, const std::string& text) {
    WriteOutcome outcome;
    outcome.info = &info;
    outcome.requested = text;
    const ParameterValue wanted = ParameterValue::Parse(info, text);
    outcome.range = ReadRange(camera, info);
    outcome.unit = UnitOf(camera, info);
    const bool written = Write(camera, info, wanted);
    if (info.access == Access::kWriteOnly) {
        outcome.accepted = written;
        if (!written) outcome.reason = "the camera did not carry it out";
        return outcome;
    }
    outcome.actual = ReadBack(camera, info);
    outcome.accepted = written && outcome.actual && *outcome.actual == wanted;
    if (outcome.accepted) return outcome;
    if (!outcome.actual) {
        outcome.reason = "this camera does not offer it or did not answer";
    } else if (ReadAccess(camera, info) == Access::kReadOnly) {
        outcome.reason = "it is read-only";
    } else if (outcome.range.known && IsNumber(info.kind) && !outcome.range.Contains(wanted.Integer())) {
        outcome.reason = "the value is out of range";
    } else {
        outcome.reason = "the camera refused or changed the value";
    }
    return outcome;
}

WriteOutcome RequireParameter(ZelCamera* camera, const ParameterInfo& info, const std::string& text) {
    WriteOutcome outcome = WriteParameter(camera, info, text);
    if (!outcome.accepted) throw Failure(outcome.Text(), outcome.reason, "nothing was started", kRefused);
    return outcome;
}

void PutUnitsFirst(std::vector<Assignment>& assignments) {
    const auto time = std::find_if(assignments.begin(), assignments.end(),
                                   [](const Assignment& a) { return a.info->id == ZEL_PARAM_EXPOSURE_TIME; });
    std::stable_partition(time, assignments.end(),
                          [](const Assignment& a) { return a.info->id == ZEL_PARAM_EXPOSURE_UNIT; });
}

Assignment ParseAssignment(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw Failure("'" + text + "'", "not of the form NAME=VALUE", "write it like EXPOSURE_TIME_US=5000", kUsage);
    }
    return {&FindParameter(text.substr(0, equals)), text.substr(equals + 1)};
}

}  // namespace zelcam
