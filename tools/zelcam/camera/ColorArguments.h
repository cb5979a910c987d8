// Color frames: what the user asks for.
#ifndef ZELCAM_COLORARGUMENTS_H
#define ZELCAM_COLORARGUMENTS_H

#include <string>
#include <vector>

#include "tools/zelcam/text/Json.h"
#include "zel/Camera.h"

namespace CLI {
class App;
}

namespace zelcam {

struct ColorArguments {
    bool color = false;
    std::string space = "srgb";
    std::string format = "16";

    void Declare(CLI::App& command);
    // Has the camera make color frames. Throws Failure.
    zel::ColorSetting SetUp(zel::Camera& camera) const;
};

// The names on the command line, in the order of the layer's.
extern const std::vector<std::string> kColorFormats;
extern const std::vector<std::string> kColorSpaces;

Json ToJson(const zel::ColorSetting& setting);

}  // namespace zelcam

#endif
