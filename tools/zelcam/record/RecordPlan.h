// How long a recording shall be, what it takes, and whether there is room for it.
#ifndef ZELCAM_RECORDPLAN_H
#define ZELCAM_RECORDPLAN_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include "record/RecordingFacts.h"

namespace zelcam {

// "500" frames, "2.5 GB", "10 min": a number and its unit.
struct Amount {
    std::uint64_t frames = 0;
    std::uint64_t bytes = 0;
    double seconds = 0.0;
};
// False for any other text, and for nothing at all.
bool ParseAmount(const std::string& text, Amount& amount);

// "839.0 MB", "1.2 GB"
std::string SizeText(std::uint64_t bytes);
// "45 s", "12 min", "3 h"
std::string DurationText(double seconds);

// What a recording needs of the disk.
struct DiskNeed {
    double frames = 0.0;            // 0: it has no end of its own
    std::uint64_t bytes = 0;        // uncompressed; without an end: of one frame
    double bytes_per_second = 0.0;  // 0: not known
};
// end: what comes first of its members that are not 0.
DiskNeed NeedOf(const zel::record::RecordingFacts& facts, const Amount& end, unsigned every);

std::uint64_t FrameBytes(const zel::record::RecordingFacts& facts);

// Free space where the file will be; UINT64_MAX when the system does not tell.
std::uint64_t FreeSpace(const std::filesystem::path& file);

// The file's name as it will be: with ".ome.tif" where it has no extension of a TIFF file; with the camera's serial
// number when several are recorded.
std::filesystem::path FileOfCamera(const std::filesystem::path& file, const std::string& serial, bool several);

}  // namespace zelcam

#endif
