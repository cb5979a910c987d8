#include "tools/zelcam/PictureSaver.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <system_error>

#include "include/ZelImage.h"
#include "include/ZelUtil.h"
#include "tools/zelcam/Failure.h"
#include "tools/zelcam/UtcTime.h"

namespace zelcam {

namespace fs = std::filesystem;

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
    command.add_option("-f,--format", format, "tiff or png; both hold 16-bit grey")
        ->check(CLI::IsMember({"tiff", "png"}))
        ->capture_default_str();
    command.add_flag("--scale", scale, "Scale the counts to the full 16 bits (default: raw counts)");
}

PictureSaver::PictureSaver(const PictureOptions& options, ZelUtil* util, const CameraFacts& facts, long long gain)
    : m_Options(options), m_Util(util), m_Facts(facts), m_Gain(gain) {
    if (m_Options.prefix.empty()) m_Options.prefix = "camera" + std::to_string(facts.entry.number);
    const std::string what = "folder '" + m_Options.folder + "' can't be used";
    std::error_code error;
    fs::create_directories(m_Options.folder, error);
    if (error) throw Failure(what, error.message(), "choose another --out");
    if (!fs::is_directory(m_Options.folder, error)) throw Failure(what, "it is a file", "choose another --out");
    const fs::path probe = fs::path(m_Options.folder) / (m_Options.prefix + "_0000.tmp");
    const bool writable = std::ofstream(probe).good();
    fs::remove(probe, error);
    if (!writable) throw Failure(what, "no file can be written there", "choose another --out or --prefix");
}

Json PictureSaver::Save(ZelColorImage* image) {
    char number[16];
    std::snprintf(number, sizeof number, "_%04d", ++m_Count);
    const fs::path stem = fs::path(m_Options.folder) / (m_Options.prefix + number);
    const bool png = m_Options.format == "png";
    const fs::path picture = stem.string() + (png ? ".png" : ".tif");
    const unsigned scaled_by = m_Options.scale ? ScaleToSixteenBits(image) : 0;
    WritePicture(picture, image);
    const Json description = Describe(image, picture.filename().string(), scaled_by);
    WriteDescription(stem.string() + ".json", description);
    Json result = description;
    result["path"] = picture.generic_string();
    return result;
}

void PictureSaver::WritePicture(const fs::path& path, ZelColorImage* image) const {
    const bool png = m_Options.format == "png";
    const std::string name = path.string();
    const bool saved = png ? m_Util->SavePNG(name.c_str(), image) : m_Util->SaveTIFF(name.c_str(), image);
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
        throw Failure("'" + path.string() + "' can't be written", "the file came out incomplete",
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
    json["region"] = {{"x", image->x_origin},      {"y", image->y_origin}, {"width", image->x_pixels},
                      {"height", image->y_pixels}, {"xbin", image->x_bin}, {"ybin", image->y_bin}};
    json["exposure_us"] = image->exposure_time_us;
    json["gain"] = m_Gain;
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
