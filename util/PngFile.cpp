#include "util/PngFile.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "util/Deflate.h"

namespace zel {

namespace {

constexpr std::array<std::uint8_t, 8> kSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t kChunkFrameSize = 12;  // length, type, CRC
constexpr std::size_t kHeaderDataSize = 13;
constexpr std::size_t kChunkDataOffset = 8;
static_assert(kPngEndSize == 4 + kChunkFrameSize);

// In hundred-thousandths.
constexpr std::uint32_t kGammaOne = 100000;

std::size_t LightDataSize(PngLight light) { return light == PngLight::kSrgb ? 1 : 4; }

void PutBigEndian32(std::uint8_t* out, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) out[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

// Completes the chunk at `chunk`, whose data stands in its place, and answers where the next one begins.
std::uint8_t* FrameChunk(std::uint8_t* chunk, std::string_view type, std::size_t data_size) {
    PutBigEndian32(chunk, static_cast<std::uint32_t>(data_size));
    std::copy(type.begin(), type.end(), chunk + 4);
    PutBigEndian32(chunk + kChunkDataOffset + data_size, Crc32({chunk + 4, 4 + data_size}));
    return chunk + kChunkFrameSize + data_size;
}

std::uint8_t ColorType(const PngPicture& picture) {
    switch (picture.Channels()) {
        case 1:
            return 0;
        case 3:
            return 2;
        default:
            return 6;
    }
}

}  // namespace

std::size_t PngStreamOffset(PngLight light) {
    const std::size_t told = light == PngLight::kUntold ? 0 : kChunkFrameSize + LightDataSize(light);
    return kSignature.size() + kChunkFrameSize + kHeaderDataSize + told + kChunkDataOffset;
}

void FramePngStream(const PngPicture& picture, std::span<std::uint8_t> file) {
    std::uint8_t* chunk = std::copy(kSignature.begin(), kSignature.end(), file.data());
    std::uint8_t* header = chunk + kChunkDataOffset;
    PutBigEndian32(header, picture.width);
    PutBigEndian32(header + 4, picture.height);
    header[8] = static_cast<std::uint8_t>(8 * picture.BytesPerSample());
    header[9] = ColorType(picture);
    std::fill(header + 10, header + 13, std::uint8_t{0});  // deflate, the one filter method, not interlaced
    chunk = FrameChunk(chunk, "IHDR", kHeaderDataSize);
    if (picture.light == PngLight::kSrgb) {
        chunk[kChunkDataOffset] = 0;
        chunk = FrameChunk(chunk, "sRGB", LightDataSize(picture.light));
    } else if (picture.light == PngLight::kLinear) {
        PutBigEndian32(chunk + kChunkDataOffset, kGammaOne);
        chunk = FrameChunk(chunk, "gAMA", LightDataSize(picture.light));
    }
    chunk = FrameChunk(chunk, "IDAT", file.size() - PngStreamOffset(picture.light) - kPngEndSize);
    FrameChunk(chunk, "IEND", 0);
}

}  // namespace zel
