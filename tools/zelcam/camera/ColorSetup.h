// Color frames: what the user asks for, and setting the SDK's color processing up for it.
#ifndef ZELCAM_COLORSETUP_H
#define ZELCAM_COLORSETUP_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/zelcam/text/Json.h"

class ZelCamera;

namespace CLI {
class App;
}

namespace zelcam {

enum class ColorFormat {
    k16,     // three 16-bit channels
    k8,      // three 8-bit channels
    kRgba8,  // four 8-bit channels, the fourth opaque
};

enum class ColorSpace {
    kSrgb,    // as ordinary picture files: the primaries of CCIR 709 and the curve that viewers expect
    kRgb,     // CCIR 709, linear light
    kXyz,     // linear
    kSensor,  // what the sensor's channels say, black level included
};

// How the color frames of an acquisition are made.
struct ColorSetting {
    ColorFormat format = ColorFormat::k16;
    ColorSpace space = ColorSpace::kSrgb;
    unsigned bits = 0;         // of the mosaic
    unsigned black_level = 0;  // counts taken off before anything else

    unsigned Channels() const { return format == ColorFormat::kRgba8 ? 4 : 3; }
    unsigned BytesPerChannel() const { return format == ColorFormat::k16 ? 2 : 1; }
    // Bits of a channel that the values fill.
    unsigned OutputBits() const;
    Json ToJson() const;
};

struct ColorOptions {
    bool color = false;
    std::string space = "srgb";
    std::string format = "16";

    void Declare(CLI::App& command);
    // Sets the camera's color pipeline up. Throws Failure.
    ColorSetting SetUp(ZelCamera* camera, const std::string& label) const;
};

// The names on the command line; empty for one that there is not.
extern const std::vector<std::string> kColorFormats;
extern const std::vector<std::string> kColorSpaces;

// Tables of the pipeline, three equal channels per value: what lies above the black level, and the curve of ordinary
// picture files over full 16 or 8 bits.
std::vector<std::uint16_t> BlackLevelTable(unsigned bits, unsigned black_level);
std::vector<std::uint16_t> CurveTable(const ColorSetting& setting);

}  // namespace zelcam

#endif
