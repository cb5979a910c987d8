#include "record/camera/RecordingPlan.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>
#include <string>
#include <system_error>

#include "platform/UserTexts.h"
#include "record/camera/RecordingFiles.h"

namespace zel::record {

namespace fs = std::filesystem;

namespace {

// Of a page beside its samples: directory, facts, the gap to the next page of memory.
constexpr std::uint64_t kPageOverhead = 6144;
constexpr double kMost = 1e18;

std::uint64_t FrameBytes(const RecordingFacts& facts) {
    return std::uint64_t{facts.width} * facts.height * sizeof(std::uint16_t) + kPageOverhead;
}

}  // namespace

DiskNeed NeedOf(const RecordingFacts& facts, const RecordingLimits& end, unsigned every) {
    const double rate = facts.frames_per_second / std::max(every, 1u);
    const auto frame = static_cast<double>(FrameBytes(facts));
    constexpr double kEndless = std::numeric_limits<double>::infinity();
    double frames = kEndless;
    if (end.frames > 0) frames = static_cast<double>(end.frames);
    if (end.seconds > 0.0 && rate > 0.0) frames = std::min(frames, std::ceil(end.seconds * rate) + 1.0);
    if (end.bytes > 0) frames = std::min(frames, std::ceil(static_cast<double>(end.bytes) / frame));
    DiskNeed need{frames, 0, rate * frame};
    if (frames == kEndless) need.frames = 0.0;
    need.bytes = static_cast<std::uint64_t>(std::min(std::max(need.frames, 1.0) * frame, kMost));
    return need;
}

std::uint64_t FreeSpace(const fs::path& file) {
    std::error_code error;
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    const fs::space_info space = fs::space(folder, error);
    return error ? std::numeric_limits<std::uint64_t>::max() : space.available;
}

fs::path FileOfCamera(const fs::path& file, const std::string& serial, bool several) {
    std::string extension = platform::Utf8Text(file.extension());
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const bool tiff = extension == ".tif" || extension == ".tiff" || extension == ".btf";
    fs::path whole = file;
    if (!tiff) whole += ".ome.tif";
    return several ? WithSuffix(whole, "_" + serial) : whole;
}

}  // namespace zel::record
