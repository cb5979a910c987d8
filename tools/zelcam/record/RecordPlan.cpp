#include "tools/zelcam/record/RecordPlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>
#include <system_error>

#include "platform/UserTexts.h"
#include "tools/zelcam/record/RecordingFiles.h"

namespace zelcam {

namespace fs = std::filesystem;

namespace {

// Of a page beside its samples: directory, facts, the gap to the next page of memory.
constexpr std::uint64_t kPageOverhead = 6144;
constexpr double kMost = 1e18;

struct Unit {
    const char* name;
    double bytes;
    double seconds;
};
constexpr Unit kUnits[] = {{"kb", 1e3, 0.0}, {"mb", 1e6, 0.0}, {"gb", 1e9, 0.0},   {"tb", 1e12, 0.0},
                           {"b", 1.0, 0.0},  {"s", 0.0, 1.0},  {"min", 0.0, 60.0}, {"h", 0.0, 3600.0}};

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

bool ParseAmount(const std::string& text, Amount& amount) {
    amount = {};
    const std::size_t digits = std::min(text.find_first_not_of("0123456789."), text.size());
    double number = 0.0;
    try {
        std::size_t used = 0;
        number = std::stod(text.substr(0, digits), &used);
        if (used != digits) return false;
    } catch (const std::exception&) {
        return false;
    }
    std::string unit = Lower(text.substr(digits));
    unit.erase(0, unit.find_first_not_of(' '));
    if (!(number > 0.0) || number > kMost) return false;
    if (unit.empty()) {
        amount.frames = static_cast<std::uint64_t>(number);
        return static_cast<double>(amount.frames) == number;
    }
    const auto* const known =
        std::find_if(std::begin(kUnits), std::end(kUnits), [&](const Unit& u) { return unit == u.name; });
    if (known == std::end(kUnits) || number * known->bytes > kMost) return false;
    amount.bytes = static_cast<std::uint64_t>(number * known->bytes);
    amount.seconds = number * known->seconds;
    return amount.bytes > 0 || amount.seconds > 0.0;
}

std::string SizeText(std::uint64_t bytes) {
    constexpr const char* kNames[] = {"kB", "MB", "GB", "TB"};
    double value = static_cast<double>(bytes) / 1e3;
    std::size_t name = 0;
    for (; value >= 999.5 && name < 3; ++name) value /= 1e3;
    return fmt::format("{:.1f} {}", value, kNames[name]);
}

std::string DurationText(double seconds) {
    if (seconds < 99.5) return fmt::format("{:.0f} s", seconds);
    if (seconds < 5970.0) return fmt::format("{:.0f} min", seconds / 60.0);
    return fmt::format("{:.0f} h", seconds / 3600.0);
}

std::uint64_t FrameBytes(const zel::record::RecordingFacts& facts) {
    return std::uint64_t{facts.width} * facts.height * sizeof(std::uint16_t) + kPageOverhead;
}

DiskNeed NeedOf(const zel::record::RecordingFacts& facts, const Amount& end, unsigned every) {
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
    const std::string extension = Lower(zel::platform::Utf8Text(file.extension()));
    const bool tiff = extension == ".tif" || extension == ".tiff" || extension == ".btf";
    fs::path whole = file;
    if (!tiff) whole += ".ome.tif";
    return several ? WithSuffix(whole, "_" + serial) : whole;
}

}  // namespace zelcam
