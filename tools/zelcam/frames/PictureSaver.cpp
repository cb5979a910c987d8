#include "tools/zelcam/frames/PictureSaver.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <system_error>

#include "include/ZelImage.h"
#include "platform/Files.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/frames/ColorPicture.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/UtcTime.h"
#include "util/ImageFile.h"

namespace zelcam {

namespace fs = std::filesystem;
using zel::platform::Utf8Path;
using zel::platform::Utf8Text;

const char* const kFrameClock =
    "the SDK's millisecond clock (monotonic; timeGetTime on Windows), modulo 2^32, not the time of day";

namespace {

// Whether everything arrived on the disk, which the SDK does not tell: a TIFF holds at least its samples, a PNG ends in
// its end chunk.
bool Complete(const fs::path& path, const ZelColorImage* image, bool png) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (error) return false;
    if (!png) return size > std::uintmax_t{image->w} * image->h * image->bytes_per_pixel;
    std::ifstream file(path, std::ios::binary);
    char end[8] = {};
    file.seekg(-8, std::ios::end);
    file.read(end, sizeof end);
    return file && std::string(end, 4) == "IEND";
}

}  // namespace

void PictureOptions::Declare(CLI::App& command) {
    command.add_option("-o,--out", folder, "Folder for the pictures, made when missing")->capture_default_str();
    command.add_option("-p,--prefix", prefix, "Beginning of the file names (default: camera and its number)");
    command
        .add_option(
            "-f,--format", format,
            "tiff (default) or png: 16-bit grey; with --color a PNG of 16 (default) or 8 bits a channel, or rgba8")
        ->check(CLI::IsMember({"tiff", "png", "16", "8", "rgba8"}));
    command.add_flag("--scale", scale, "Scale the counts to the full 16 bits (default: raw counts)");
}

void PictureOptions::SettleFormat(bool color) {
    if (format.empty()) format = color ? kColorFormats.front() : "tiff";
    const bool for_color = std::find(kColorFormats.begin(), kColorFormats.end(), format) != kColorFormats.end();
    if (for_color == color) return;
    throw Failure("--format " + format, color ? "it is for grey pictures" : "it is for color pictures",
                  color ? "choose 16, 8 or rgba8 with --color" : "choose tiff or png, or add --color", kExitUsage);
}

PictureSettings PicturesOf(const OpenCamera& camera, const AcquisitionSettings& settings,
                           const PictureOptions& options) {
    PictureSettings pictures{ReadNumber(camera.Get(), ZEL_PARAM_GAIN), settings.processing.average, std::nullopt};
    if (settings.color.color) {
        ColorOptions color = settings.color;
        color.format = options.format;
        pictures.color = color.SetUp(camera.Get(), camera.Label());
    }
    return pictures;
}

PictureSaver::PictureSaver(const PictureOptions& options, const CameraFacts& facts, const PictureSettings& settings)
    : m_Options(options), m_Facts(facts), m_Settings(settings) {
    m_Options.SettleFormat(settings.color.has_value());
    if (m_Options.prefix.empty()) m_Options.prefix = "camera" + std::to_string(facts.entry.number);
    const std::string what = "folder '" + m_Options.folder + "' can't be used";
    std::error_code error;
    const fs::path folder = Utf8Path(m_Options.folder);
    fs::create_directories(folder, error);
    if (error) throw Failure(what, error.message(), "choose another --out");
    if (!fs::is_directory(folder, error)) throw Failure(what, "it is a file", "choose another --out");
    const fs::path probe = folder / Utf8Path(m_Options.prefix + "_0000.tmp");
    const bool writable = std::ofstream(probe).good();
    fs::remove(probe, error);
    if (!writable) throw Failure(what, "no file can be written there", "choose another --out or --prefix");
}

Json PictureSaver::Save(ZelColorImage* image) {
    char number[16];
    std::snprintf(number, sizeof number, "_%04d", ++m_Count);
    const std::string stem = Utf8Text(Utf8Path(m_Options.folder) / Utf8Path(m_Options.prefix + number));
    const bool tiff = m_Options.format == "tiff";
    const fs::path picture = Utf8Path(stem + (tiff ? ".tif" : ".png"));
    unsigned scaled_by = 0;
    if (m_Settings.color) {
        const ColorSetting& color = *m_Settings.color;
        if (m_Options.scale && color.format == ColorFormat::k16) scaled_by = 16 - color.OutputBits();
        WriteColor(picture, *image, scaled_by);
    } else {
        if (m_Options.scale) scaled_by = ScaleToSixteenBits(image);
        WriteGrey(picture, image);
    }
    const Json description = Describe(image, Utf8Text(picture.filename()), scaled_by);
    WriteDescription(Utf8Path(stem + ".json"), description);
    Json result = description;
    result["path"] = Utf8Text(picture.generic_u8string());
    return result;
}

void PictureSaver::WriteColor(const fs::path& path, const ZelColorImage& image, unsigned shift) const {
    const std::vector<std::uint8_t> samples = PngSamples(image, *m_Settings.color, shift);
    if (samples.empty()) {
        throw Failure("frame " + std::to_string(image.image_number) + " has no color picture",
                      "the SDK did not make one of this format", "leave --color out");
    }
    WriteColorPng(Utf8Text(path), samples, image.w, image.h, *m_Settings.color);
}

void PictureSaver::WriteGrey(const fs::path& path, ZelColorImage* image) const {
    const bool png = m_Options.format == "png";
    const std::string name = Utf8Text(path);
    const auto open = [&] { return zel::platform::OpenFile(name, "wb"); };
    const bool fits = zel::FitsItsBuffer(*image, image->bytes_per_pixel);
    const bool saved = fits && (png ? zel::WritePng(*image, open) : zel::WriteTiff(*image, open));
    if (!saved)
        throw Failure("'" + name + "' can't be written", "the file can't be opened or memory ran out",
                      "choose another --out");
    if (Complete(path, image, png)) return;
    std::error_code ignored;
    fs::remove(path, ignored);
    throw Failure("'" + name + "' can't be written", "the file came out incomplete",
                  "make room on the disk or choose another --out");
}

void PictureSaver::WriteDescription(const fs::path& path, const Json& description) const {
    std::ofstream file(path, std::ios::binary);
    file << JsonText(description) << "\n";
    file.close();
    if (!file) {
        throw Failure("'" + Utf8Text(path) + "' can't be written", "the file came out incomplete",
                      "make room on the disk or choose another --out");
    }
}

Json PictureSaver::Describe(const ZelColorImage* image, const std::string& file, unsigned scaled_by) const {
    Json json;
    json["file"] = file;
    json["camera"] = m_Facts.entry.number;
    json["name"] = m_Facts.entry.name;
    json["serial"] = m_Facts.entry.serial;
    json["model"] = m_Facts.model;
    json["firmware"] = m_Facts.firmware;
    json["interface"] = m_Facts.entry.interface_type;
    json["width"] = image->w;
    json["height"] = image->h;
    json["bits"] = image->bit_depth;
    json["scaled_by_bits"] = scaled_by;
    if (m_Settings.color) json["color"] = m_Settings.color->ToJson();
    json["region"] = {{"x", image->x_origin},      {"y", image->y_origin}, {"width", image->x_pixels},
                      {"height", image->y_pixels}, {"xbin", image->x_bin}, {"ybin", image->y_bin}};
    json["exposure_us"] = image->exposure_time_us;
    json["gain"] = m_Settings.gain;
    json["average_of_frames"] = std::max(m_Settings.average, 1);
    json["frame_number"] = image->image_number;
    json["time"] = {{"clock", kFrameClock},
                    {"arrival_ms", image->arrival_time_ms},
                    {"hand_over_ms", image->hand_over_time_ms},
                    {"queue_delay_ms", image->queue_delay_ms}};
    json["saved_utc"] = UtcNow();
    return json;
}

unsigned ScaleToSixteenBits(ZelColorImage* image) {
    if (image->bit_depth == 0 || image->bit_depth >= 16) return 0;
    const unsigned shift = 16 - image->bit_depth;
    const unsigned brightest = (1u << image->bit_depth) - 1;
    const std::size_t count = std::size_t{image->w} * image->h;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned sample = image->pixels[i];
        image->pixels[i] = static_cast<unsigned short>((sample > brightest ? brightest : sample) << shift);
    }
    return shift;
}

}  // namespace zelcam
