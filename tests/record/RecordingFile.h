// Files with pictures for the tests of reading and playing, which end with the object.
#ifndef TESTS_RECORD_RECORDINGFILE_H
#define TESTS_RECORD_RECORDINGFILE_H

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "platform/UserTexts.h"
#include "record/RecordingWriter.h"

namespace zel::record::test {

using Picture = std::vector<std::uint16_t>;

// Any samples of so many bits, with the smallest and the largest among them.
inline std::vector<Picture> AnyPictures(std::size_t count, unsigned width, unsigned height, unsigned bits) {
    std::mt19937 random(static_cast<unsigned>(count + width));
    std::vector<Picture> pictures(count, Picture(std::size_t{width} * height));
    const unsigned largest = (1u << bits) - 1;
    for (Picture& picture : pictures) {
        for (std::uint16_t& sample : picture) sample = static_cast<std::uint16_t>(random() & largest);
        picture.front() = static_cast<std::uint16_t>(largest);
        picture.back() = 0;
    }
    return pictures;
}

class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& bytes = "") {
        static std::atomic<int> s_Count = 0;
        const auto now = std::filesystem::file_time_type::clock::now().time_since_epoch().count();
        // Names are UTF-8 on every system.
        m_Path = std::filesystem::temp_directory_path() /
                 platform::Utf8Path("zel-gr\xC3\xBC\xC3\x9F-" + std::to_string(now) + "-" + std::to_string(++s_Count) +
                                    ".tif");
        if (!bytes.empty()) Write(bytes);
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(m_Path, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::filesystem::path& Path() const { return m_Path; }
    std::string Name() const { return platform::Utf8Text(m_Path); }
    void Write(const std::string& bytes) const { std::ofstream(m_Path, std::ios::binary) << bytes; }
    std::string Bytes() const {
        std::ifstream file(m_Path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::filesystem::path m_Path;
};

// Writes a recording whose frames come 1, 2, 3, ... ms after each other, and completes it when it is to have an end.
inline void Record(const TemporaryFile& file, RecordingFacts facts, const std::vector<Picture>& pictures,
                   bool complete = true, Compression compression = Compression::kNone) {
    facts.started = "2026-11-22T04:31:00.000Z";
    RecordingWriter writer(file.Path(), facts, {.compression = compression});
    std::int64_t host_ns = 0;
    for (std::uint32_t i = 0; i < pictures.size(); ++i) {
        host_ns += std::int64_t{i} * 1000000;
        writer.Add(pictures[i], {.number = i, .exposure_us = 7000, .gain = 12, .arrival_ms = i, .host_ns = host_ns});
    }
    if (complete) writer.Finish({.reason = "frames", .frames = pictures.size()});
}

}  // namespace zel::record::test

#endif
