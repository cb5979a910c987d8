// Files of any kind as recordings: a recording of two frames with a few bytes changed, or the input itself when it
// begins like a TIFF file. What is taken must be of a sensible size and read without harm.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/FuzzCheck.h"
#include "record/RecordingReader.h"
#include "record/RecordingWriter.h"

using namespace zel::record;

namespace {

constexpr unsigned kWidth = 6;
constexpr unsigned kHeight = 4;
constexpr std::uint64_t kMostRead = std::uint64_t{1} << 22;  // samples of a frame

// One name for all inputs of this process.
const std::filesystem::path& Path() {
    static const std::filesystem::path s_Path =
        std::filesystem::temp_directory_path() /
        ("zel-fuzz-" + std::to_string(std::filesystem::file_time_type::clock::now().time_since_epoch().count()));
    return s_Path;
}

std::string MakeRecording(Compression compression) {
    const std::vector<std::uint16_t> samples(kWidth * kHeight, 1234);
    {
        RecordingFacts facts;
        facts.width = kWidth;
        facts.height = kHeight;
        RecordingWriter writer(Path(), facts, {.compression = compression});
        for (std::uint32_t i = 0; i < 2; ++i) writer.Add(samples, {.number = i});
        writer.Finish({.reason = "frames", .frames = 2});
    }
    std::ifstream file(Path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    file.close();
    std::filesystem::remove(Path());
    FuzzCheck(bytes.size() > kWidth * kHeight * 4);
    return bytes;
}

// Each change is four bytes of the input: where, which of the places behind, and what.
std::string Changed(std::string bytes, const std::uint8_t* data, std::size_t size) {
    for (std::size_t i = 0; i + 4 <= size && i < 4 * 16; i += 4) {
        const std::size_t at = (data[i] | std::size_t{data[i + 1]} << 8) + data[i + 2];
        bytes[at % bytes.size()] = static_cast<char>(data[i + 3]);
    }
    return bytes;
}

std::string FileOf(const std::uint8_t* data, std::size_t size) {
    static const std::string s_Plain = MakeRecording(Compression::kNone);
    static const std::string s_Compressed = MakeRecording(Compression::kDeflate);
    const std::string own(data, data + size);
    if (own.starts_with("II") || own.starts_with("MM")) return own;
    if (size == 0) return s_Plain;
    std::string bytes = Changed(data[0] & 1 ? s_Plain : s_Compressed, data + 1, size - 1);
    if (data[0] & 2) bytes.resize(bytes.size() * data[0] / 256);
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string file = FileOf(data, size);
    std::ofstream(Path(), std::ios::binary) << file;
    try {
        RecordingReader reader(Path());
        const std::uint64_t count = std::uint64_t{reader.Facts().width} * reader.Facts().height;
        FuzzCheck(count > 0 && count <= std::uint64_t{1} << 28 && reader.Frames() > 0);
        FuzzCheck(reader.Facts().bits >= 1 && reader.Facts().bits <= 16);
        std::vector<std::uint16_t> samples(static_cast<std::size_t>(std::min(count, kMostRead)));
        for (std::size_t i = 0; i < reader.Frames() && count <= kMostRead; ++i) {
            try {
                reader.Read(i, samples);
            } catch (const RecordError& error) {
                FuzzCheck(*error.what() != 0);
            }
        }
    } catch (const RecordError& error) {
        FuzzCheck(*error.what() != 0);
    }
    std::filesystem::remove(Path());
    return 0;
}
