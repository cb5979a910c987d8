// The texts between the viewer's page and its server (docs/viewer-protocol.md). What a page says may come from anybody:
// every member is checked before it is used.
#ifndef ZELCAM_VIEWMESSAGES_H
#define ZELCAM_VIEWMESSAGES_H

#include <optional>
#include <string>
#include <string_view>

#include "tools/zelcam/text/Json.h"
#include "tools/zelcam/view/FrameStatistics.h"
#include "tools/zelcam/view/Picture.h"

namespace zelcam {

// What a page has measured of each frame.
struct Probe {
    struct Point {
        unsigned x, y;
    };
    std::optional<Point> pointer;
    std::optional<std::array<Point, 2>> line;
    std::optional<Area> region;
};

// An object with a `type`. Throws Failure.
Json ParseMessage(std::string_view text);

// Members that a request must have; throw Failure.
unsigned NumberIn(const Json& message, const char* name, unsigned least, unsigned most);
double RealIn(const Json& message, const char* name, double least, double most);
bool FlagIn(const Json& message, const char* name);
std::string TextIn(const Json& message, const char* name, std::size_t longest);
// A member that may be missing or null.
bool Has(const Json& message, const char* name);
Area AreaIn(const Json& object);

ViewRequest ViewIn(const Json& message);
Probe ProbeIn(const Json& message);

Json StatisticsMessage(std::uint32_t frame, const FrameStatistics& statistics);
// Adds what is measured where the page wants it; what is not within the frame is left out.
void AddProbe(Json& message, const Probe& probe, const Samples& frame);

std::string MessageText(const Json& message);
Json EventMessage(const char* level, const std::string& text);

}  // namespace zelcam

#endif
