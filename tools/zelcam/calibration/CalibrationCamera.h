// The calibration of one open camera: its two tables, and what its flash memory says of them.
#ifndef ZELCAM_CALIBRATIONCAMERA_H
#define ZELCAM_CALIBRATIONCAMERA_H

#include <array>
#include <optional>

#include "include/ZelCameraInternal.h"
#include "tools/zelcam/calibration/CalibrationTable.h"
#include "tools/zelcam/camera/Session.h"

namespace zelcam {

// The service operations of a camera that the SDK handed out.
inline ZelCameraInternal& Internal(ZelCamera* camera) { return *static_cast<ZelCameraInternal*>(camera); }

// Tells a camera that is not open yet to have its calibration ready when it is opened.
void WishForCalibration(const Session& session, const std::string& wanted);

using CalibrationTables = std::array<CalibrationTable, kSpeeds>;
using DirectoryDigests = std::array<Digest, kSpeeds>;

// Throws Failure when the camera has no tables or does not answer.
CalibrationTables ReadTables(OpenCamera& camera);

// What the directory of the flash memory says.
struct FlashDirectory {
    bool has_tables = false;  // false: none was ever written, and the digests mean nothing
    DirectoryDigests digests{};
};
// Null when the camera does not tell.
std::optional<FlashDirectory> ReadDirectory(OpenCamera& camera);

// Writes both tables and their directory into the flash memory and reads them back. Throws Failure.
void WriteTables(OpenCamera& camera, const CalibrationTables& tables);

// The cache file of a camera's table on this computer; empty when there is none.
std::filesystem::path CacheFile(const CameraEntry& camera, int speed);

}  // namespace zelcam

#endif
