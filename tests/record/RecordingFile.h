// Files with pictures for the tests of reading and playing.
#ifndef TESTS_RECORD_RECORDINGFILE_H
#define TESTS_RECORD_RECORDINGFILE_H

#include <cstdint>
#include <random>
#include <vector>

#include "record/RecordingReader.h"
#include "record/RecordingWriter.h"
#include "tests/support/TemporaryFolder.h"

namespace zel::record::test {

using zel::test::TemporaryFile;
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

// All frames, read in another order than they lie in.
inline std::vector<Picture> ReadAll(RecordingReader& reader) {
    std::vector<Picture> pictures(reader.Frames());
    for (std::size_t i = pictures.size(); i-- > 0;) {
        pictures[i].resize(std::size_t{reader.Facts().width} * reader.Facts().height);
        reader.Read(i, pictures[i]);
    }
    return pictures;
}

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
