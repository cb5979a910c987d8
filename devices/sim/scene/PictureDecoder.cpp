#include "devices/sim/scene/PictureDecoder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <span>

#include "platform/UserTexts.h"

// Without vector code all products decode a JPEG file to the same samples.
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_NO_STDIO
#define STBI_NO_SIMD
#define STBI_NO_LINEAR
#define STBI_MAX_DIMENSIONS 32768
// In memory of zeros, tables of codes that a JPEG file uses and does not have are empty. The library looks beyond
// others.
#define STBI_MALLOC(size) std::calloc(1, size)
#define STBI_REALLOC(memory, size) std::realloc(memory, size)
#define STBI_FREE(memory) std::free(memory)
#include <stb/stb_image.h>

namespace zel::sim {
namespace {

constexpr std::uintmax_t kLargestFile = std::uintmax_t{1} << 29;
constexpr std::int64_t kMostPixels = std::int64_t{1} << 26;  // takes 0.8 GB to decode

bool ReadFile(const std::string& path, std::vector<char>& bytes, std::string& reason) {
    try {
        const std::filesystem::path file = platform::Utf8Path(path);
        if (!std::filesystem::is_regular_file(file)) return reason = "no such file", false;
        if (std::filesystem::file_size(file) > kLargestFile) return reason = "too large", false;
        std::ifstream stream(file, std::ios::binary);
        if (!stream) return reason = "can't be opened", false;
        bytes.assign(std::istreambuf_iterator<char>(stream), {});
        return true;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        reason = error.what();
        return false;
    }
}

// Whether the tables of codes that a JPEG file has are of a sensible size: the library writes beyond its own when they
// have more than 256 codes. A table begins behind the bytes FF C4, wherever the library comes across them; what cameras
// and programs write in front of the picture may hold these two by chance, and is passed over as the library passes
// over it.
bool CodesFit(std::span<const unsigned char> bytes) {
    // Behind its end the library reads zeros.
    const auto byte = [&](std::size_t at) { return at < bytes.size() ? bytes[at] : 0u; };
    const auto word = [&](std::size_t at) { return byte(at) * 256 + byte(at + 1); };
    std::size_t at = 2;
    while (byte(at) == 0xFF && (byte(at + 1) >> 4 == 0xE || byte(at + 1) == 0xFE)) at += 2 + word(at + 2);
    for (; at < bytes.size(); ++at) {
        if (word(at) != 0xFFC4) continue;
        const std::size_t end = at + 2 + word(at + 2);
        for (std::size_t table = at + 4; table < end;) {
            unsigned codes = 0;
            for (std::size_t i = 1; i <= 16; ++i) codes += byte(table + i);
            if (codes > 256) return false;
            table += 17 + codes;
        }
    }
    return true;
}

// The library's reason may hold four bytes of the file, whatever they are.
std::string Reason(const char* why) {
    const std::string text = why ? why : "";
    const bool plain = std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
    return plain && !text.empty() ? text : "not a picture";
}

}  // namespace

bool DecodePicture(const std::string& path, DecodedPicture& picture, std::string& reason) {
    std::vector<char> bytes;
    if (!ReadFile(path, bytes, reason)) return false;
    int width = 0;
    int height = 0;
    int channels = 0;
    const auto* const data = reinterpret_cast<const stbi_uc*>(bytes.data());
    const auto size = static_cast<int>(bytes.size());
    if (size >= 2 && data[0] == 0xFF && !CodesFit({data, bytes.size()})) return reason = "no JPEG picture", false;
    if (stbi_info_from_memory(data, size, &width, &height, &channels) && std::int64_t{width} * height > kMostPixels) {
        reason = std::to_string(width) + " x " + std::to_string(height) + " pixels are too many, at most " +
                 std::to_string(kMostPixels);
        return false;
    }
    const std::unique_ptr<stbi_us, void (*)(void*)> samples(
        stbi_load_16_from_memory(data, size, &width, &height, &channels, 3), stbi_image_free);
    if (!samples || width <= 0 || height <= 0) {
        reason = Reason(stbi_failure_reason());
        return false;
    }
    picture.width = static_cast<std::size_t>(width);
    picture.height = static_cast<std::size_t>(height);
    picture.rgb.assign(samples.get(), samples.get() + picture.width * picture.height * 3);
    return true;
}

}  // namespace zel::sim
