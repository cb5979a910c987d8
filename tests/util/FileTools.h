// Frames to save and files to look at.
#ifndef TESTS_UTIL_FILETOOLS_H
#define TESTS_UTIL_FILETOOLS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "include/ZelImage.h"

namespace zel::test {

using Bytes = std::vector<std::uint8_t>;

// An image with pixels of its own.
class Frame {
  public:
    Frame(unsigned width, unsigned height, std::vector<std::uint16_t> samples) : m_Samples(std::move(samples)) {
        m_Image.w = width;
        m_Image.h = height;
        m_Image.bit_depth = 16;
        m_Image.bytes_per_pixel = 2;
        m_Image.pixels = m_Samples.data();
    }
    // Samples that use all 16 bits and repeat nowhere near; as noise, in a band around the middle.
    enum Kind { kPattern, kNoise };
    Frame(unsigned width, unsigned height, Kind kind = kPattern)
        : Frame(width, height, Make(std::size_t{width} * height, kind)) {}
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    ZelColorImage* operator->() { return &m_Image; }
    ZelImage* Image() { return &m_Image; }
    const std::vector<std::uint16_t>& Samples() const { return m_Samples; }

  private:
    static std::vector<std::uint16_t> Make(std::size_t count, Kind kind) {
        std::vector<std::uint16_t> samples(count);
        std::uint32_t state = 12345;
        for (std::uint16_t& sample : samples) {
            state = state * 1664525u + 1013904223u;
            const unsigned noise = 30000 + (state >> 20) + (state >> 8 & 0xFFF);
            sample = static_cast<std::uint16_t>(kind == kNoise ? noise : state >> 16);
        }
        return samples;
    }

    std::vector<std::uint16_t> m_Samples;
    ZelColorImage m_Image{};
};

// A file name of this test's own; the file is removed with it.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& ending)
        : m_Name("zel_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + ending) {
        std::replace(m_Name.begin(), m_Name.end(), '/', '_');
        m_Name = testing::TempDir() + m_Name;
        std::remove(m_Name.c_str());
    }
    ~TemporaryFile() { std::remove(m_Name.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const char* Name() const { return m_Name.c_str(); }
    bool Exists() const { return std::ifstream(m_Name, std::ios::binary).good(); }
    Bytes Contents() const {
        std::ifstream file(m_Name, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(file), {});
    }

  private:
    std::string m_Name;
};

}  // namespace zel::test

#endif
