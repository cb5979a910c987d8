#include "bench/PngPeers.h"

#include <png.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

namespace zel::bench {

bool SaveWithLibpng(const char* name, const std::vector<std::uint16_t>& samples, unsigned width, unsigned height) {
    std::FILE* const file = std::fopen(name, "wb");
    if (!file) return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_compression_level(png, 1);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    png_set_IHDR(png, info, width, height, 16, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_set_swap(png);
    for (unsigned row = 0; row < height; ++row) {
        png_write_row(png, reinterpret_cast<png_const_bytep>(samples.data() + std::size_t{row} * width));
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return std::fclose(file) == 0;
}

namespace {

// length, type and data | CRC
void WriteChunk(std::FILE* file, const char* type, const unsigned char* data, unsigned size) {
    std::vector<unsigned char> chunk(12 + std::size_t{size});
    const auto put = [](unsigned char* out, unsigned value) {
        for (int i = 0; i < 4; ++i) out[i] = static_cast<unsigned char>(value >> (24 - 8 * i));
    };
    put(chunk.data(), size);
    std::memcpy(chunk.data() + 4, type, 4);
    if (size) std::memcpy(chunk.data() + 8, data, size);
    put(chunk.data() + 8 + size, stbiw__crc32(chunk.data() + 4, static_cast<int>(4 + size)));
    std::fwrite(chunk.data(), 1, chunk.size(), file);
}

}  // namespace

bool SaveWithStb(const char* name, const std::vector<std::uint16_t>& samples, unsigned width, unsigned height) {
    std::vector<unsigned char> scanlines;
    scanlines.reserve((std::size_t{width} * 2 + 1) * height);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (i % width == 0) scanlines.push_back(0);
        scanlines.push_back(static_cast<unsigned char>(samples[i] >> 8));
        scanlines.push_back(static_cast<unsigned char>(samples[i]));
    }
    int size = 0;
    unsigned char* const stream = stbi_zlib_compress(scanlines.data(), static_cast<int>(scanlines.size()), &size,
                                                     stbi_write_png_compression_level);
    std::FILE* const file = stream ? std::fopen(name, "wb") : nullptr;
    if (file) {
        std::fwrite("\x89PNG\r\n\x1A\n", 1, 8, file);
        std::array<unsigned char, 13> header{};
        for (unsigned i = 0; i < 4; ++i) {
            header[i] = static_cast<unsigned char>(width >> (24 - 8 * i));
            header[4 + i] = static_cast<unsigned char>(height >> (24 - 8 * i));
        }
        header[8] = 16;
        WriteChunk(file, "IHDR", header.data(), 13);
        WriteChunk(file, "IDAT", stream, static_cast<unsigned>(size));
        WriteChunk(file, "IEND", nullptr, 0);
    }
    std::free(stream);
    return file && std::fclose(file) == 0;
}

}  // namespace zel::bench
