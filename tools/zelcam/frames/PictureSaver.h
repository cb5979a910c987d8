// Pictures on disk, each with a .json beside it that says what the picture is.
#ifndef ZELCAM_PICTURESAVER_H
#define ZELCAM_PICTURESAVER_H

#include <filesystem>
#include <optional>
#include <string>

#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/camera/ColorArguments.h"
#include "tools/zelcam/text/Json.h"

namespace CLI {
class App;
}

namespace zelcam {

// Name of the clock behind the time stamps of an image record.
extern const char* const kFrameClock;

struct AcquisitionSettings;
class PictureEncoder;

struct PictureOptions {
    std::string folder = ".";
    std::string prefix;  // empty: "camera" and the camera's number
    std::string format;  // empty: tiff, or 16 for color frames
    bool scale = false;
    bool overwrite = false;
    bool by_frame = false;  // whoever saves gives the numbers

    void Declare(CLI::App& command);
    // Settles the format of grey or color pictures. Throws Failure when the one asked for is of the other kind.
    void SettleFormat(bool color);
};

// Settings that an image record does not carry.
struct PictureSettings {
    long long gain = 0;
    int average = 0;                           // frames that each picture is the mean of; 0: one
    std::optional<zel::ColorSetting> color{};  // of color frames
};

// Reads them from the camera, and sets its color processing up when color frames are asked for. Throws Failure.
PictureSettings PicturesOf(zel::Camera& camera, const AcquisitionSettings& settings, const PictureOptions& options);

// Numbers, names and files of the pictures of a run.
class PictureSaver {
  public:
    // Makes the folder. frames: how many are to come, so that their numbers are of one width. Throws Failure when the
    // folder can't be written to.
    PictureSaver(const PictureOptions& options, int frames, const CameraFacts& facts, const PictureSettings& settings);

    // Takes the next number for a picture; one that is in use is passed over, whoever took it. One thread at a time.
    // Result: the picture's path without its extension. Throws Failure.
    std::filesystem::path ClaimStem();
    // The same for a number that the frame has anyway. Throws Failure when a picture of this number is there.
    std::filesystem::path Claim(int number) const;
    // Where the frames come from when it is no camera, and what changes from one to the next.
    void SetSource(long long gain, const Json& recording);
    // Saves a frame and its description under a number that was taken; any number of threads, each with an encoder of
    // its own. Result: the description. Throws, and leaves nothing of the frame behind.
    Json Save(const std::filesystem::path& stem, ZelColorImage& image, PictureEncoder& encoder) const;
    // Both for a single picture.
    Json Save(ZelColorImage& image);

    // What becomes of the pictures, with everything settled.
    const PictureOptions& Options() const { return m_Options; }
    const PictureSettings& Settings() const { return m_Settings; }

    // "pictures go to 'out', from camera0_0001.tif on"
    std::string PlanText() const;

  private:
    // The picture's path without its extension.
    std::filesystem::path Stem(int number) const;
    // Neither a picture nor a description.
    bool IsFree(const std::filesystem::path& stem) const;
    Json Describe(const ZelColorImage& image, const std::string& file, unsigned scaled_by) const;

    PictureOptions m_Options;
    CameraFacts m_Facts;
    PictureSettings m_Settings;
    Json m_Recording;  // that the frames are of; null: of none
    const char* m_Extension;
    int m_Next = 1;
    int m_Digits = 4;
};

// The highest number that a picture of this prefix has in the folder, or its description; 0 without any.
int HighestNumber(const std::filesystem::path& folder, const std::string& prefix);

}  // namespace zelcam

#endif
