#include "tools/zelcam/frames/PictureSaver.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <random>
#include <span>
#include <system_error>

#include "platform/Files.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/frames/PictureEncoder.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/OutputFile.h"
#include "tools/zelcam/text/UtcTime.h"

namespace zelcam {

namespace fs = std::filesystem;
using zel::platform::Utf8Path;
using zel::platform::Utf8Text;

const char* const kFrameClock =
    "the SDK's millisecond clock (monotonic; timeGetTime on Windows), modulo 2^32, not the time of day";

namespace {

// Names with larger numbers are somebody else's.
constexpr int kHighestNumber = 1000000000;

fs::path WithExtension(fs::path stem, const char* extension) { return stem += extension; }

}  // namespace

void PictureOptions::Declare(CLI::App& command) {
    command.add_option("-o,--out", folder, "Folder for the pictures, made when missing")->capture_default_str();
    command.add_option("-p,--prefix", prefix, "Beginning of the file names (default: camera and its number)");
    command
        .add_option(
            "-f,--format", format,
            "tiff (default) or png: 16-bit grey; with --color a PNG of 16 (default) or 8 bits a channel, or rgba8")
        ->check(CLI::IsMember({"tiff", "png", "16", "8", "rgba8"}));
    command.add_flag("--overwrite", overwrite, "Number from 1 and overwrite (default: behind the pictures there are)");
    command.add_flag("--scale", scale, "Scale the counts to the full 16 bits (default: raw counts)");
}

void PictureOptions::SettleFormat(bool color) {
    if (format.empty()) format = color ? kColorFormats.front() : "tiff";
    const bool for_color = std::find(kColorFormats.begin(), kColorFormats.end(), format) != kColorFormats.end();
    if (for_color == color) return;
    throw Failure("--format " + format, color ? "it is for grey pictures" : "it is for color pictures",
                  color ? "choose 16, 8 or rgba8 with --color" : "choose tiff or png, or add --color", kUsage);
}

PictureSettings PicturesOf(zel::Camera& camera, const AcquisitionSettings& settings, const PictureOptions& options) {
    PictureSettings pictures{camera.number(ZEL_PARAM_GAIN), settings.processing.average, std::nullopt};
    if (settings.color.color) {
        ColorArguments color = settings.color;
        color.format = options.format;
        pictures.color = color.SetUp(camera);
    }
    return pictures;
}

int HighestNumber(const fs::path& folder, const std::string& prefix) {
    int highest = 0;
    std::error_code error;
    for (fs::directory_iterator file(folder, error), end; !error && file != end; file.increment(error)) {
        const fs::path name = file->path().filename();
        const std::string extension = Utf8Text(name.extension());
        const std::string stem = Utf8Text(name.stem());
        const bool ours = extension == ".tif" || extension == ".png" || extension == ".json";
        if (!ours || !stem.starts_with(prefix + "_")) continue;
        const char* const end_of_stem = stem.data() + stem.size();
        int number = 0;
        const auto [rest, fault] = std::from_chars(stem.data() + prefix.size() + 1, end_of_stem, number);
        if (fault == std::errc() && rest == end_of_stem && number < kHighestNumber) highest = std::max(highest, number);
    }
    return highest;
}

PictureSaver::PictureSaver(const PictureOptions& options, int frames, const CameraFacts& facts,
                           const PictureSettings& settings)
    : m_Options(options), m_Facts(facts), m_Settings(settings) {
    m_Options.SettleFormat(settings.color.has_value());
    m_Extension = m_Options.format == "tiff" ? ".tif" : ".png";
    if (m_Options.prefix.empty()) m_Options.prefix = "camera" + std::to_string(facts.info.number);
    const std::string what = "folder '" + m_Options.folder + "' can't be used";
    std::error_code error;
    const fs::path folder = Utf8Path(m_Options.folder);
    fs::create_directories(folder, error);
    if (error) throw Failure(what, error.message(), "choose another --out", kOutput);
    if (!fs::is_directory(folder, error)) throw Failure(what, "it is a file", "choose another --out", kOutput);
    // Of a name that no other program tries at the same time.
    const fs::path probe = folder / Utf8Path(fmt::format("{}_{:08x}.tmp", m_Options.prefix, std::random_device()()));
    const bool writable = std::ofstream(probe).good();
    fs::remove(probe, error);
    if (!writable) {
        throw Failure(what, "no file can be written there", "choose another --out or --prefix", kOutput);
    }
    if (!m_Options.overwrite && !m_Options.by_frame) m_Next = HighestNumber(folder, m_Options.prefix) + 1;
    m_Digits = std::max(m_Digits, static_cast<int>(std::to_string(m_Next - 1 + frames).size()));
}

std::string PictureSaver::PlanText() const {
    return fmt::format("pictures go to '{}', from {}{} on", m_Options.folder, Utf8Text(Stem(m_Next).filename()),
                       m_Extension);
}

fs::path PictureSaver::Stem(int number) const {
    return Utf8Path(m_Options.folder) / Utf8Path(fmt::format("{}_{:0{}}", m_Options.prefix, number, m_Digits));
}

// The description's part keeps the number from other programs that save here.
fs::path PictureSaver::ClaimStem() {
    while (true) {
        const fs::path stem = Stem(m_Next++);
        if (m_Options.overwrite) return stem;
        const fs::path description = WithExtension(stem, ".json");
        if (!ClaimFile(description)) continue;
        if (IsFree(stem)) return stem;
        std::error_code ignored;
        fs::remove(PartOf(description), ignored);
    }
}

bool PictureSaver::IsFree(const fs::path& stem) const {
    std::error_code error;
    return !fs::exists(WithExtension(stem, m_Extension), error) && !fs::exists(WithExtension(stem, ".json"), error);
}

fs::path PictureSaver::Claim(int number) const {
    const fs::path stem = Stem(number);
    const std::string what = "'" + Utf8Text(stem.generic_u8string()) + "' is not overwritten";
    const fs::path description = WithExtension(stem, ".json");
    if (IsFree(stem)) {
        if (ClaimFile(description)) return stem;
        throw Failure(what, "another program is making it, or was killed while it did",
                      "remove '" + Utf8Text(PartOf(description).generic_u8string()) + "' when none is", kOutput);
    }
    throw Failure(what, "there is a picture of this name", "choose another --out or --prefix", kOutput);
}

void PictureSaver::SetSource(long long gain, const Json& recording) {
    m_Settings.gain = gain;
    m_Recording = recording;
}

Json PictureSaver::Save(const fs::path& stem, ZelColorImage& image, PictureEncoder& encoder) const {
    const fs::path picture = WithExtension(stem, m_Extension);
    const fs::path description = WithExtension(stem, ".json");
    try {
        const EncodedPicture encoded = encoder.Encode(image);
        WriteWhole(picture, {encoded.head, encoded.body});
        Json result = Describe(image, Utf8Text(picture.filename()), encoded.scaled_by);
        WriteWhole(description, JsonText(result) + "\n");
        result["path"] = Utf8Text(picture.generic_u8string());
        return result;
    } catch (...) {
        // What could not be overwritten is not this frame's.
        if (m_Options.overwrite) throw;
        std::error_code ignored;
        fs::remove(picture, ignored);
        fs::remove(description, ignored);
        fs::remove(PartOf(description), ignored);
        throw;
    }
}

Json PictureSaver::Save(ZelColorImage& image) {
    PictureEncoder encoder(*this);
    return Save(ClaimStem(), image, encoder);
}

Json PictureSaver::Describe(const ZelColorImage& image, const std::string& file, unsigned scaled_by) const {
    Json json;
    json["file"] = file;
    json["camera"] = m_Facts.info.number;
    json["name"] = m_Facts.info.name;
    json["serial"] = m_Facts.info.serial;
    json["model"] = m_Facts.model;
    json["firmware"] = m_Facts.firmware;
    json["interface"] = m_Facts.info.interface_type;
    json["width"] = image.w;
    json["height"] = image.h;
    json["bits"] = image.bit_depth;
    json["scaled_by_bits"] = scaled_by;
    if (m_Settings.color) json["color"] = ToJson(*m_Settings.color);
    json["region"] = {{"x", image.x_origin},      {"y", image.y_origin}, {"width", image.x_pixels},
                      {"height", image.y_pixels}, {"xbin", image.x_bin}, {"ybin", image.y_bin}};
    json["exposure_us"] = image.exposure_time_us;
    json["gain"] = m_Settings.gain;
    json["average_of_frames"] = std::max(m_Settings.average, 1);
    json["frame_number"] = image.image_number;
    json["time"] = {{"clock", kFrameClock},
                    {"arrival_ms", image.arrival_time_ms},
                    {"hand_over_ms", image.hand_over_time_ms},
                    {"queue_delay_ms", image.queue_delay_ms}};
    if (!m_Recording.is_null()) json["recording"] = m_Recording;
    json["saved_utc"] = UtcNow();
    return json;
}

}  // namespace zelcam
