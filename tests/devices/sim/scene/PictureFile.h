// Picture files as scenes of the sensor.
#ifndef TESTS_SENSOR_PICTUREFILE_H
#define TESTS_SENSOR_PICTUREFILE_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace zel::sim::test {

using zel::test::TemporaryFile;
using Color8 = std::array<std::uint8_t, 3>;
enum class FileKind { kPng, kJpeg };

// color: the Color8 at x, y.
template <class ColorAt>
std::string EncodePicture(FileKind kind, int width, int height, const ColorAt& color) {
    std::vector<Color8> pixels;
    for (int i = 0; i < width * height; ++i) pixels.push_back(color(i % width, i / width));
    std::string bytes;
    const auto append = [](void* to, void* data, int size) {
        static_cast<std::string*>(to)->append(static_cast<const char*>(data), static_cast<std::size_t>(size));
    };
    if (kind == FileKind::kPng) {
        stbi_write_png_to_func(append, &bytes, width, height, 3, pixels.data(), width * 3);
    } else {
        stbi_write_jpg_to_func(append, &bytes, width, height, 3, pixels.data(), 95);
    }
    return bytes;
}

}  // namespace zel::sim::test

#endif
