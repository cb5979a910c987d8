#include "tools/zelcam/view/ViewMessages.h"

#include <algorithm>
#include <utility>

#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/view/LiveFrame.h"

namespace zelcam {

namespace {

// Beyond every frame and every screen.
constexpr unsigned kMostPixels = 65536;

[[noreturn]] void RefuseMember(const std::string& what, const std::string& why) {
    throw Failure(what, why, "", kUsage);
}

const Json& Member(const Json& message, const char* name) {
    const auto found = message.is_object() ? message.find(name) : message.end();
    if (!message.is_object() || found == message.end()) RefuseMember(std::string("'") + name + "'", "it is missing");
    return *found;
}

Probe::Point PointIn(const Json& object, const char* x, const char* y) {
    return {NumberIn(object, x, 0, kMostPixels), NumberIn(object, y, 0, kMostPixels)};
}

bool IsWithin(const Probe::Point& point, const Samples& frame) {
    return point.x < frame.width && point.y < frame.height;
}

Json PixelJson(const std::vector<std::uint16_t>& pixel) { return pixel.size() == 1 ? Json(pixel[0]) : Json(pixel); }

}  // namespace

Json ParseMessage(std::string_view text) {
    Json message = Json::parse(text, nullptr, false);
    if (!message.is_object()) RefuseMember("the message", "it is no JSON object");
    if (!Member(message, "type").is_string()) RefuseMember("'type'", "it is no text");
    return message;
}

bool Has(const Json& message, const char* name) {
    const auto found = message.find(name);
    return found != message.end() && !found->is_null();
}

double RealIn(const Json& message, const char* name, double least, double most) {
    const Json& member = Member(message, name);
    if (!member.is_number()) RefuseMember(std::string("'") + name + "'", "it is no number");
    const auto value = member.get<double>();
    // Also when it is no number at all.
    if (!(value >= least && value <= most)) {
        const auto whole = [](double bound) { return std::to_string(static_cast<long long>(bound)); };
        RefuseMember(std::string("'") + name + "'", "outside " + whole(least) + ".." + whole(most));
    }
    return value;
}

unsigned NumberIn(const Json& message, const char* name, unsigned least, unsigned most) {
    return static_cast<unsigned>(RealIn(message, name, least, most));
}

bool FlagIn(const Json& message, const char* name) {
    const Json& member = Member(message, name);
    if (!member.is_boolean()) RefuseMember(std::string("'") + name + "'", "it is neither true nor false");
    return member.get<bool>();
}

std::string TextIn(const Json& message, const char* name, std::size_t longest) {
    const Json& member = Member(message, name);
    if (!member.is_string()) RefuseMember(std::string("'") + name + "'", "it is no text");
    const auto& text = member.get_ref<const std::string&>();
    if (text.size() > longest || text.find('\0') != std::string::npos) {
        RefuseMember(std::string("'") + name + "'", "it is too long, or has a zero in it");
    }
    return text;
}

Area AreaIn(const Json& object) {
    return {NumberIn(object, "x", 0, kMostPixels), NumberIn(object, "y", 0, kMostPixels),
            NumberIn(object, "width", 0, kMostPixels), NumberIn(object, "height", 0, kMostPixels)};
}

ViewRequest ViewIn(const Json& message) {
    return {NumberIn(message, "view", 0, 0xffffffffu), AreaIn(message), NumberIn(message, "columns", 1, kMostPixels),
            NumberIn(message, "rows", 1, kMostPixels)};
}

Probe ProbeIn(const Json& message) {
    Probe probe;
    if (Has(message, "pointer")) probe.pointer = PointIn(message["pointer"], "x", "y");
    if (Has(message, "line")) {
        probe.line = {PointIn(message["line"], "x0", "y0"), PointIn(message["line"], "x1", "y1")};
    }
    if (Has(message, "region")) probe.region = AreaIn(message["region"]);
    return probe;
}

Json StatisticsMessage(std::uint32_t frame, const FrameStatistics& statistics) {
    Json json;
    json["type"] = "statistics";
    json["frame"] = frame;
    json["bits"] = statistics.bits;
    json["bins"] = statistics.bin;
    json["histogram"] = statistics.histogram;
    if (!statistics.channels.empty()) json["channels"] = statistics.channels;
    json["mean"] = statistics.mean;
    json["sigma"] = statistics.sigma;
    json["minimum"] = statistics.minimum;
    json["maximum"] = statistics.maximum;
    json["saturated"] = statistics.saturated;
    json["black"] = statistics.black;
    json["percentiles"] = {{"p0_1", statistics.p0_1}, {"p50", statistics.p50}, {"p99_9", statistics.p99_9}};
    json["focus"] = statistics.focus;
    return json;
}

void AddProbe(Json& message, const Probe& probe, const Samples& frame) {
    if (probe.pointer && IsWithin(*probe.pointer, frame)) {
        const auto [x, y] = *probe.pointer;
        message["pointer"] = {{"x", x}, {"y", y}, {"value", PixelJson(PixelAt(frame, x, y))}};
    }
    if (probe.line && IsWithin((*probe.line)[0], frame) && IsWithin((*probe.line)[1], frame)) {
        const auto& [from, to] = *probe.line;
        message["line"] = {{"x0", from.x}, {"y0", from.y}, {"x1", to.x}, {"y1", to.y}};
        const auto values = LineProfile(frame, from.x, from.y, to.x, to.y);
        Json list = Json::array();
        for (std::size_t i = 0; i < values.size(); i += frame.channels) {
            list.push_back(PixelJson({values.begin() + static_cast<std::ptrdiff_t>(i),
                                   values.begin() + static_cast<std::ptrdiff_t>(i + frame.channels)}));
        }
        message["line"]["values"] = std::move(list);
    }
    if (probe.region && IsWithin({probe.region->x, probe.region->y}, frame)) {
        Area area = *probe.region;
        area.width = std::min(area.width, frame.width - area.x);
        area.height = std::min(area.height, frame.height - area.y);
        if (area.width == 0 || area.height == 0) return;
        const Moments moments = MeasureArea(frame, area);
        message["region"] = {{"x", area.x},
                             {"y", area.y},
                             {"width", area.width},
                             {"height", area.height},
                             {"mean", moments.mean},
                             {"sigma", moments.sigma},
                             {"snr", moments.sigma > 0.0 ? Json(moments.mean / moments.sigma) : Json()},
                             {"minimum", moments.minimum},
                             {"maximum", moments.maximum},
                             {"focus", moments.focus}};
    }
}

std::string MessageText(const Json& message) { return JsonText(message, -1); }

Json EventMessage(const char* level, const std::string& text) {
    return {{"type", "event"}, {"level", level}, {"message", text}, {"at", WallClockMs()}};
}

}  // namespace zelcam
