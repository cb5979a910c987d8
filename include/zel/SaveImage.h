/// @file
/// Frames as picture files.
#ifndef ZEL_LAYER_SAVEIMAGE_H
#define ZEL_LAYER_SAVEIMAGE_H

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "ZelSDK.h"
#include "ZelUtil.h"
#include "zel/Error.h"
#include "zel/Frame.h"
#include "zel/detail/StoredPng.h"
#include "zel/detail/Texts.h"

namespace zel {

namespace detail {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Half a picture is no picture. What is no file of its own, such as a device, stays.
inline void remove_picture(const std::string& file_name) {
    std::error_code ignored;
    if (std::filesystem::is_regular_file(file_name, ignored)) std::remove(file_name.c_str());
}

[[noreturn]] inline void throw_not_saved(const std::string& file_name, const std::string& why) {
    throw Error(ErrorKind::output, "'" + file_name + "' can't be written", why);
}

// The SDK's writers do not notice a disk that is full at the end.
inline bool has_size(const std::string& file_name, std::uint64_t at_least, const std::string& ending) {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(file_name.c_str(), "rb"));
    if (!file || std::fseek(file.get(), -static_cast<long>(ending.size()), SEEK_END) != 0) return false;
    const auto start = static_cast<std::uint64_t>(std::ftell(file.get()));
    std::string last(ending.size(), '\0');
    return start + ending.size() >= at_least && std::fread(last.data(), 1, last.size(), file.get()) == last.size() &&
           last == ending;
}

}  // namespace detail

/// Saves a frame, replacing an existing file. The ending of the name chooses the format:
///   .tif, .tiff  the grey samples, 16 bits, uncompressed, raw counts
///   .png         the color picture when the frame has one (8 or 16 bits a channel, uncompressed), else the grey
///                samples (16 bits, raw counts: a 12-bit picture looks dark)
/// The name is in the system's 8-bit encoding. Throws Error: output when the file can't be written, a full disk
/// included (nothing is left of it then); invalid_argument for another ending.
inline void save(const Frame& frame, const std::string& file_name) {
    const std::string name = detail::upper_case(file_name);
    const bool png = name.ends_with(".PNG");
    if (!png && !name.ends_with(".TIF") && !name.ends_with(".TIFF")) {
        throw Error(ErrorKind::invalid_argument, "'" + file_name + "'", "the ending tells no format",
                    "use .tif or .png");
    }
    if (png && frame.color()) {
        if (frame.color_bytes().empty()) detail::throw_not_saved(file_name, "the frame has no color picture");
        const std::vector<std::uint8_t> bytes = detail::stored_png(frame);
        std::unique_ptr<std::FILE, detail::CloseFile> file(std::fopen(file_name.c_str(), "wb"));
        const bool written = file && std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() &&
                             std::fflush(file.get()) == 0;
        if (written) return;
        if (!file) detail::throw_not_saved(file_name, "the file can't be opened");
        file.reset();
        detail::remove_picture(file_name);
        detail::throw_not_saved(file_name, "the disk may be full");
    }
    // A frame keeps the SDK open.
    ZelUtil* const util = zel_create_sdk()->GetUtil();
    ZelImage* const image = frame.native();
    const bool done = png ? util->SavePNG(file_name.c_str(), image) : util->SaveTIFF(file_name.c_str(), image);
    if (!done) detail::throw_not_saved(file_name, "the file can't be opened");
    const std::string png_end("IEND\xAE\x42\x60\x82", 8);
    const bool complete =
        png ? detail::has_size(file_name, 8, png_end) : detail::has_size(file_name, 2 * frame.pixels().size(), "");
    if (complete) return;
    detail::remove_picture(file_name);
    detail::throw_not_saved(file_name, "the disk may be full");
}

}  // namespace zel

#endif
