// Pictures on disk, each with a .json beside it that says what the picture is.
#ifndef ZELCAM_PICTURESAVER_H
#define ZELCAM_PICTURESAVER_H

#include <filesystem>
#include <string>

#include "tools/zelcam/CameraFacts.h"
#include "tools/zelcam/Json.h"

class ZelColorImage;
class ZelUtil;

namespace CLI {
class App;
}

namespace zelcam {

// Name of the clock behind the time stamps of an image record.
extern const char* const kFrameClock;

struct PictureOptions {
    std::string folder = ".";
    std::string prefix;  // empty: "camera" and the camera's number
    std::string format = "tiff";
    bool scale = false;

    void Declare(CLI::App& command);
};

class PictureSaver {
  public:
    // Makes the folder. Throws Failure when it can't be written to.
    PictureSaver(const PictureOptions& options, ZelUtil* util, const CameraFacts& facts, long long gain);

    // Saves a frame and its description under the next number. Result: the description. Throws Failure.
    Json Save(ZelColorImage* image);

  private:
    void WritePicture(const std::filesystem::path& path, ZelColorImage* image) const;
    void WriteDescription(const std::filesystem::path& path, const Json& description) const;
    Json Describe(const ZelColorImage* image, const std::string& file, unsigned scaled_by) const;

    PictureOptions m_Options;
    ZelUtil* m_Util;
    CameraFacts m_Facts;
    long long m_Gain;
    int m_Count = 0;
};

// Shifts the samples of `bit_depth` bits into the upper bits of 16, so that a viewer shows them bright. Result: by how
// many bits.
unsigned ScaleToSixteenBits(ZelColorImage* image);

}  // namespace zelcam

#endif
