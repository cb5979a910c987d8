#include "record/FactsText.h"

#include <nlohmann/json.hpp>

namespace zel::record {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(RecordingFacts, width, height, bits, cfa_phase, x_origin, y_origin,
                                                x_bin, y_bin, averaged, corrected, pixel_um, frames_per_second, camera,
                                                serial, model, firmware, link, software, started, session)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(FrameFacts, number, exposure_us, gain, arrival_ms, host_ns)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(RecordingEnd, reason, frames, lost_link, lost_buffer, lost_disk,
                                                passed_over)

namespace {

using Json = nlohmann::json;

// A text in another encoding than UTF-8 is told with marks for what is none.
template <class Facts>
std::string TextOf(const Facts& facts) {
    return Json(facts).dump(-1, ' ', false, Json::error_handler_t::replace);
}

// Whether every number is one that its member can be made of: a fraction fits into few of them.
bool NumbersFit(const Json& json) {
    for (const auto& [key, value] : json.items()) {
        if (value.is_number_float() && key != "pixel_um" && key != "frames_per_second") return false;
    }
    return true;
}

template <class Facts>
bool FactsOf(const std::string& text, Facts& facts) {
    try {
        const Json json = Json::parse(text);
        if (!json.is_object() || !NumbersFit(json)) return false;
        facts = json.get<Facts>();
        return true;
    } catch (const Json::exception&) {
        return false;
    }
}

}  // namespace

std::string ToText(const RecordingFacts& facts) { return TextOf(facts); }
std::string ToText(const FrameFacts& facts) { return TextOf(facts); }
std::string ToText(const RecordingEnd& end) { return TextOf(end); }

bool FromText(const std::string& text, RecordingFacts& facts) { return FactsOf(text, facts); }
bool FromText(const std::string& text, FrameFacts& facts) { return FactsOf(text, facts); }
bool FromText(const std::string& text, RecordingEnd& end) { return FactsOf(text, end); }

}  // namespace zel::record
