#include "util/PngFile.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "util/Deflate.h"

namespace zel {

namespace {

constexpr std::array<std::uint8_t, 8> kSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t kChunkFrameSize = 12;  // length, type, CRC
constexpr std::size_t kHeaderDataSize = 13;
static_assert(kPngStreamOffset == kSignature.size() + kChunkFrameSize + kHeaderDataSize + 8);
static_assert(kPngFrameSize == kSignature.size() + 3 * kChunkFrameSize + kHeaderDataSize);

void PutBigEndian32(std::uint8_t* out, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) out[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

// Completes the chunk at `chunk`, whose data stands in its place, and answers where the next one begins.
std::uint8_t* FrameChunk(std::uint8_t* chunk, std::string_view type, std::size_t data_size) {
    PutBigEndian32(chunk, static_cast<std::uint32_t>(data_size));
    std::copy(type.begin(), type.end(), chunk + 4);
    PutBigEndian32(chunk + 8 + data_size, Crc32({chunk + 4, 4 + data_size}));
    return chunk + kChunkFrameSize + data_size;
}

}  // namespace

std::uint64_t PngScanlineBytes(std::uint32_t width, std::uint32_t height) {
    return (std::uint64_t{width} * 2 + 1) * height;
}

void MakePngScanlines(const std::uint16_t* samples, std::uint32_t width, std::uint32_t height,
                      std::span<std::uint8_t> scanlines) {
    std::uint8_t* out = scanlines.data();
    for (std::uint32_t row = 0; row < height; ++row) {
        *out++ = 0;
        for (std::uint32_t column = 0; column < width; ++column) {
            const auto swapped = static_cast<std::uint16_t>(samples[column] << 8 | samples[column] >> 8);
            std::memcpy(out + std::size_t{column} * 2, &swapped, 2);
        }
        samples += width;
        out += std::size_t{width} * 2;
    }
}

void FramePngStream(std::uint32_t width, std::uint32_t height, std::size_t stream_size, std::span<std::uint8_t> file) {
    std::uint8_t* chunk = std::copy(kSignature.begin(), kSignature.end(), file.data());
    std::uint8_t* header = chunk + 8;
    PutBigEndian32(header, width);
    PutBigEndian32(header + 4, height);
    header[8] = 16;                                       // bit depth
    std::fill(header + 9, header + 13, std::uint8_t{0});  // greyscale, deflate, the one filter method, not interlaced
    chunk = FrameChunk(chunk, "IHDR", kHeaderDataSize);
    chunk = FrameChunk(chunk, "IDAT", stream_size);
    FrameChunk(chunk, "IEND", 0);
}

}  // namespace zel
