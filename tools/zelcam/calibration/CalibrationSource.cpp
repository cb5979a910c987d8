#include "tools/zelcam/calibration/CalibrationSource.h"

#include "platform/User.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

namespace {

bool CacheAgrees(const zel::CameraInfo& camera, const DirectoryDigests& digests) {
    try {
        for (int speed = 0; speed < kSpeeds; ++speed) {
            const Digest& digest = digests[static_cast<std::size_t>(speed)];
            const CalibrationFile file = ReadCalibrationFile(CacheFile(camera, speed));
            if (!file.cache || file.digest != digest || file.table.ComputeDigest() != digest) return false;
        }
        return true;
    } catch (const Failure&) {
        return false;
    }
}

CalibrationSource FindGeneralFiles() {
    const std::filesystem::path folder = zel::platform::Utf8Path(zel::platform::CalibrationFolder());
    try {
        for (const char* speed : kSpeedNames) {
            ReadCalibrationFile(folder / (std::string("CameraTable_") + speed + ".txt"));
        }
        return {"general", ""};
    } catch (const Failure& failure) {
        return {"none", std::string("its flash memory holds no tables, and ") + failure.what()};
    }
}

}  // namespace

std::string CalibrationSource::Text() const {
    if (name == "cache") return "cache files of this camera";
    if (name == "flash") return "the camera's flash memory";
    if (name == "general") return "general files of this computer";
    return "none: " + why;
}

Json CalibrationSource::ToJson() const {
    Json json{{"source", name}};
    if (!why.empty()) json["why"] = why;
    return json;
}

CalibrationSource FindCalibrationSource(const zel::Camera& camera) {
    const std::optional<FlashDirectory> directory = ReadDirectory(camera);
    if (!directory) return {"none", "its flash memory can't be read"};
    if (!directory->has_tables) return FindGeneralFiles();
    return {CacheAgrees(camera.info(), directory->digests) ? "cache" : "flash", ""};
}

}  // namespace zelcam
