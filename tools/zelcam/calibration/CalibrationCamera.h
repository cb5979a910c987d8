// The calibration of one open camera: its two tables, and what its flash memory says of them.
#ifndef ZELCAM_CALIBRATIONCAMERA_H
#define ZELCAM_CALIBRATIONCAMERA_H

#include <array>
#include <optional>

#include "tools/zelcam/calibration/CalibrationTable.h"
#include "zel/Camera.h"

namespace zelcam {

// The SDK's service operations on a camera.
inline ZelCameraInternal& Internal(const zel::Camera& camera) {
    return *static_cast<ZelCameraInternal*>(camera.native());
}

using CalibrationTables = std::array<CalibrationTable, kSpeeds>;
using DirectoryDigests = std::array<Digest, kSpeeds>;

// Throws Failure when the camera has no tables or does not answer.
CalibrationTables ReadTables(const zel::Camera& camera);

// What the directory of the flash memory says.
struct FlashDirectory {
    bool has_tables = false;  // false: none was ever written, and the digests mean nothing
    DirectoryDigests digests{};
};
// Null when the camera does not tell.
std::optional<FlashDirectory> ReadDirectory(const zel::Camera& camera);

// Writes both tables and their directory into the flash memory and reads them back. Throws Failure.
void WriteTables(const zel::Camera& camera, const CalibrationTables& tables);

// The cache file of a camera's table on this computer; empty when there is none.
std::filesystem::path CacheFile(const zel::CameraInfo& camera, int speed);

}  // namespace zelcam

#endif
