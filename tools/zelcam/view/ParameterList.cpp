#include "tools/zelcam/view/ParameterList.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tools/zelcam/camera/Assignments.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

// Values that have names.
struct Choice {
    unsigned id;
    long long value;
    const char* text;
};
constexpr Choice kChoices[] = {
    {ZEL_PARAM_EXPOSURE_UNIT, 0, "microseconds"},
    {ZEL_PARAM_EXPOSURE_UNIT, 1, "milliseconds"},
    {ZEL_PARAM_READOUT_SPEED_INDEX, 0, "20 MHz"},
    {ZEL_PARAM_READOUT_SPEED_INDEX, 1, "40 MHz"},
    {ZEL_PARAM_TAPS_INDEX, 0, "1 tap"},
    {ZEL_PARAM_TAPS_INDEX, 1, "2 taps"},
    {ZEL_PARAM_TAPS_INDEX, 2, "4 taps"},
    {ZEL_PARAM_HW_TRIG_POLARITY, 0, "active high"},
    {ZEL_PARAM_HW_TRIG_POLARITY, 1, "active low"},
};

constexpr unsigned kLogarithmic[] = {ZEL_PARAM_EXPOSURE_TIME, ZEL_PARAM_EXPOSURE_TIME_US, ZEL_PARAM_GAIN,
                                     ZEL_PARAM_VGA_GAIN};

// The camera's own entries of the region and the taps, and what the SDK looks at when it starts.
constexpr unsigned kAtStart[] = {
    ZEL_PARAM_ROI_BIN,
    ZEL_PARAM_XORIGIN,
    ZEL_PARAM_YORIGIN,
    ZEL_PARAM_XPIXELS,
    ZEL_PARAM_YPIXELS,
    ZEL_PARAM_XBIN,
    ZEL_PARAM_YBIN,
    ZEL_PARAM_FRAME_COUNT,
    ZEL_PARAM_READOUT_SPEED_INDEX,
    ZEL_PARAM_TAPS_INDEX,
    ZEL_PARAM_HW_TRIGGER_ACTIVE,
    ZEL_PARAM_HW_TRIG_SOURCE,
    ZEL_PARAM_HW_TRIG_POLARITY,
    ZEL_PARAM_NUM_IMAGE_BUFFERS,
    ZEL_PARAM_OP_MODE,
};

bool IsOneOf(std::span<const unsigned> ids, unsigned id) { return std::find(ids.begin(), ids.end(), id) != ids.end(); }

Json ChoicesOf(unsigned id, const zel::ValueRange& range) {
    Json choices = Json::array();
    for (const Choice& choice : kChoices) {
        if (choice.id != id || (range.known && !range.contains(choice.value))) continue;
        choices.push_back({{"value", choice.value}, {"text", choice.text}});
    }
    return choices.empty() ? Json() : choices;
}

}  // namespace

Json DescribeParameter(const zel::Camera& camera, const zel::ParameterInfo& info) {
    const zel::Parameter parameter = camera.parameter(info.id);
    const auto value = parameter.try_value();
    const zel::ValueRange range =
        value || info.access == zel::Access::write_only ? parameter.range() : zel::ValueRange{};
    const zel::Access access = value ? parameter.access() : info.access;
    const bool known = value || access == zel::Access::write_only;
    const std::string unit = parameter.unit();
    Json choices = parameter.is_number() ? ChoicesOf(info.id, range) : Json();
    const bool two = range.known && range.minimum == 0 && range.maximum == 1;
    const bool writable = known && access != zel::Access::read_only;
    const char* const kind = !parameter.is_number() ? "text"
                             : !choices.is_null()   ? "choice"
                             : two && writable      ? "switch"
                                                    : "number";
    Json json;
    json["name"] = info.name;
    json["kind"] = kind;
    json["value"] = value ? ToJson(*value) : Json();
    json["text"] = value ? Json(Trim(value->text())) : Json();
    json["unit"] = unit.empty() ? Json() : Json(unit);
    json["writable"] = writable;
    json["minimum"] = range.known ? Json(range.minimum) : Json();
    json["maximum"] = range.known ? Json(range.maximum) : Json();
    json["step"] = parameter.is_number() ? Json(1) : Json();
    json["default"] = range.known ? Json(range.standard) : Json();
    json["choices"] = std::move(choices);
    json["log"] = IsOneOf(kLogarithmic, info.id);
    json["help"] = info.description;
    return json;
}

bool NeedsRestart(unsigned id) { return IsOneOf(kAtStart, id); }

void ParameterList::Read(const zel::Camera& camera) {
    m_Rows.clear();
    m_Left = 0;
    for (const zel::ParameterInfo& info : zel::all_parameters()) {
        if (info.kind == zel::ValueKind::selector) continue;
        Json described = DescribeParameter(camera, info);
        // What this camera does not have is not shown.
        if (described["value"].is_null() && info.access != zel::Access::write_only) continue;
        m_Rows.push_back({&info, std::move(described)});
    }
}

Json ParameterList::ToJson() const {
    Json list = Json::array();
    for (const Row& row : m_Rows) list.push_back(row.described);
    return list;
}

Json ParameterList::ReadRow(const zel::Camera& camera, Row& row) {
    Json described = DescribeParameter(camera, *row.info);
    if (described == row.described) return nullptr;
    row.described = std::move(described);
    return row.described;
}

Json ParameterList::ReadNext(const zel::Camera& camera) {
    const std::size_t at = m_Rows.size() - m_Left;
    --m_Left;
    return ReadRow(camera, m_Rows[at]);
}

Json ParameterList::ReadOne(const zel::Camera& camera, unsigned id) {
    const auto row = std::find_if(m_Rows.begin(), m_Rows.end(), [&](const Row& entry) { return entry.info->id == id; });
    return row == m_Rows.end() ? nullptr : ReadRow(camera, *row);
}

}  // namespace zelcam
