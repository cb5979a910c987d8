// What a recording takes, whether there is room for it, and what its file is called.
#ifndef ZEL_RECORDINGPLAN_H
#define ZEL_RECORDINGPLAN_H

#include <cstdint>
#include <filesystem>
#include <string>

#include "record/RecordingFacts.h"

namespace zel::record {

// Where it ends; 0: not there.
struct RecordingLimits {
    std::uint64_t frames = 0;
    std::uint64_t bytes = 0;
    double seconds = 0.0;
};

// What a recording needs of the disk.
struct DiskNeed {
    double frames = 0.0;            // 0: it has no end of its own
    std::uint64_t bytes = 0;        // uncompressed; without an end: of one frame
    double bytes_per_second = 0.0;  // 0: not known
};
// end: what comes first of its members that are not 0.
DiskNeed NeedOf(const RecordingFacts& facts, const RecordingLimits& end, unsigned every);

// Free space where the file will be; UINT64_MAX when the system does not tell.
std::uint64_t FreeSpace(const std::filesystem::path& file);

// The file's name as it will be: with ".ome.tif" where it has no extension of a TIFF file; with the camera's serial
// number when several are recorded.
std::filesystem::path FileOfCamera(const std::filesystem::path& file, const std::string& serial, bool several);

}  // namespace zel::record

#endif
