// Pictures on disk, each with a .json beside it that says what the picture is.
#ifndef ZELCAM_PICTURESAVER_H
#define ZELCAM_PICTURESAVER_H

#include <filesystem>
#include <optional>
#include <string>

#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/camera/ColorSetup.h"
#include "tools/zelcam/text/Json.h"

class ZelColorImage;

namespace CLI {
class App;
}

namespace zelcam {

// Name of the clock behind the time stamps of an image record.
extern const char* const kFrameClock;

class OpenCamera;
struct AcquisitionSettings;

struct PictureOptions {
    std::string folder = ".";
    std::string prefix;  // empty: "camera" and the camera's number
    std::string format;  // empty: tiff, or 16 for color frames
    bool scale = false;

    void Declare(CLI::App& command);
    // Settles the format of grey or color pictures. Throws Failure when the one asked for is of the other kind.
    void SettleFormat(bool color);
};

// Settings that an image record does not carry.
struct PictureSettings {
    long long gain = 0;
    int average = 0;                      // frames that each picture is the mean of; 0: one
    std::optional<ColorSetting> color{};  // of color frames
};

// Reads them from the camera, and sets its color processing up when color frames are asked for. Throws Failure.
PictureSettings PicturesOf(const OpenCamera& camera, const AcquisitionSettings& settings,
                           const PictureOptions& options);

class PictureSaver {
  public:
    // Makes the folder. Throws Failure when it can't be written to.
    PictureSaver(const PictureOptions& options, const CameraFacts& facts, const PictureSettings& settings);

    // Saves a frame and its description under the next number. Result: the description. Throws Failure.
    Json Save(ZelColorImage* image);

  private:
    void WriteGrey(const std::filesystem::path& path, ZelColorImage* image) const;
    void WriteColor(const std::filesystem::path& path, const ZelColorImage& image, unsigned shift) const;
    void WriteDescription(const std::filesystem::path& path, const Json& description) const;
    Json Describe(const ZelColorImage* image, const std::string& file, unsigned scaled_by) const;

    PictureOptions m_Options;
    CameraFacts m_Facts;
    PictureSettings m_Settings;
    int m_Count = 0;
};

// Shifts the samples of `bit_depth` bits into the upper bits of 16, so that a viewer shows them bright. Result: by how
// many bits.
unsigned ScaleToSixteenBits(ZelColorImage* image);

}  // namespace zelcam

#endif
