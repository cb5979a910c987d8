// The folder that the SDK keeps calibration tables in.
#include <algorithm>

#include "platform/User.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/calibration/CalibrationTable.h"
#include "tools/zelcam/doctor/Checks.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

namespace fs = std::filesystem;
using zel::platform::Utf8Path;
using zel::platform::Utf8Text;

// The SDK's own ("zel_MODEL_SERIAL_20MHz.txt"), and the two general ones.
std::vector<fs::path> CalibrationFiles(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = Utf8Text(entry->path().filename());
        const bool named = name.starts_with("zel_") || name.starts_with("CameraTable_");
        if (named && (name.ends_with("20MHz.txt") || name.ends_with("40MHz.txt"))) files.push_back(entry->path());
    }
    std::ranges::sort(files);
    return files;
}

void CheckFiles(const std::string& folder, Examination& examination) {
    const std::vector<fs::path> files = CalibrationFiles(Utf8Path(folder));
    std::size_t damaged = 0;
    for (const fs::path& file : files) {
        try {
            ReadCalibrationFile(file);
        } catch (const Failure& failure) {
            ++damaged;
            examination.Add(State::kWarning, "calibration_file", failure.what(),
                            "'zelcam calibrate download --again' fetches the camera's tables anew",
                            {{"path", Utf8Text(file)}});
        }
    }
    examination.Add(State::kOk, "calibration_files", Counted(files.size() - damaged, "good calibration file"), "",
                    {{"files", files.size()}, {"damaged", damaged}});
}

}  // namespace

void CheckCalibrationFolder(Examination& examination) {
    examination.Begin("calibration");
    const std::string folder = zel::platform::CalibrationFolderPath();
    const char* const anew = "without it every program downloads a camera's calibration anew: ";
    const Json facts{{"path", folder}};
    std::error_code error;
    if (folder.empty()) {
        return examination.Add(State::kWarning, "calibration_folder", "the user's folder for calibrations is not known",
                               std::string(anew) + "set HOME or XDG_DATA_HOME");
    }
    if (!fs::exists(Utf8Path(folder), error)) {
        return examination.Add(State::kOk, "calibration_folder", folder + " is made when it is needed", "", facts);
    }
    if (!fs::is_directory(Utf8Path(folder), error)) {
        return examination.Add(State::kWarning, "calibration_folder", folder + " is no folder",
                               std::string(anew) + "move the file that is in its place", facts);
    }
    if (zel::platform::FolderIsWritable(folder)) {
        examination.Add(State::kOk, "calibration_folder", folder + ", can be written", "", facts);
    } else {
        examination.Add(State::kWarning, "calibration_folder", folder + " can't be written",
                        std::string(anew) + "see whose folder it is and what rights it has", facts);
    }
    CheckFiles(folder, examination);
}

}  // namespace zelcam
