#include "platform/User.h"

#include <windows.h>

#include <lmcons.h>

#include <exception>

namespace zel::platform {

namespace {
bool IsFolder(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}
}  // namespace

std::string CalibrationFolder() {
    char name[UNLEN + 1] = {};
    DWORD size = sizeof name;
    if (!GetUserNameA(name, &size)) return "";
    try {
        const std::string folder = "c:\\Users\\" + std::string(name) + "\\AppData\\Local\\ZEL";
        if (!IsFolder(folder)) CreateDirectoryA(folder.c_str(), nullptr);
        return IsFolder(folder) ? folder : "";
    } catch (const std::exception&) {
        return "";
    }
}

char PathSeparator() { return '\\'; }

}  // namespace zel::platform
