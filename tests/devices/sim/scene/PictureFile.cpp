#include "tests/devices/sim/scene/PictureFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/UserTexts.h"

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace zel::sim::test {
namespace {

void Append(void* context, void* data, int size) {
    auto& bytes = *static_cast<std::vector<char>*>(context);
    const char* first = static_cast<const char*>(data);
    bytes.insert(bytes.end(), first, first + size);
}

}  // namespace

std::vector<char> EncodePicture(FileKind kind, int width, int height, const ColorAt& color) {
    std::vector<std::uint8_t> samples;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (const std::uint8_t sample : color(x, y)) samples.push_back(sample);
        }
    }
    std::vector<char> bytes;
    if (kind == FileKind::kPng) {
        stbi_write_png_to_func(Append, &bytes, width, height, 3, samples.data(), width * 3);
    } else {
        stbi_write_jpg_to_func(Append, &bytes, width, height, 3, samples.data(), 95);
    }
    return bytes;
}

TemporaryFile::TemporaryFile(const std::string& name, const std::vector<char>& bytes) {
    static int number = 0;
    const auto stamp = std::filesystem::file_time_type::clock::now().time_since_epoch().count();
    m_Path = platform::Utf8Text(std::filesystem::temp_directory_path()) + "/zel_sensor_" + std::to_string(stamp) + "_" +
             std::to_string(number++) + "_" + name;
    std::ofstream stream(platform::Utf8Path(m_Path), std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(stream.good()) << m_Path;
}

TemporaryFile::~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(platform::Utf8Path(m_Path), ignored);
}

}  // namespace zel::sim::test
