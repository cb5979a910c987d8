// The user of this process and where the SDK keeps that user's files.
#ifndef PLATFORM_USER_H
#define PLATFORM_USER_H

#include <string>

namespace zel::platform {

// Folder of the calibration cache files: "c:\Users\NAME\AppData\Local\ZEL" on Windows, "ZEL" under the local data
// folder ($XDG_DATA_HOME or ~/.local/share) elsewhere; UTF-8. Made when it does not exist. Empty when the user is not
// known or the folder can't be made.
std::string CalibrationFolder();
// The same path, with nothing made. Empty when the user is not known.
std::string CalibrationFolderPath();

// Whether this process may make files in a folder that exists; UTF-8. Leaves nothing behind.
bool FolderIsWritable(const std::string& folder);

// The character between a folder and a file name in a path.
char PathSeparator();

}  // namespace zel::platform

#endif
