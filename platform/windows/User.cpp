#include "platform/User.h"

#include <windows.h>

#include <lmcons.h>

#include <exception>

#include "platform/windows/WideText.h"

namespace zel::platform {

namespace {
bool IsFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}
}  // namespace

std::string CalibrationFolderPath() {
    wchar_t name[UNLEN + 1] = {};
    DWORD size = UNLEN + 1;
    if (!GetUserNameW(name, &size)) return "";
    try {
        return Utf8(L"c:\\Users\\" + std::wstring(name) + L"\\AppData\\Local\\ZEL");
    } catch (const std::exception&) {
        return "";
    }
}

std::string CalibrationFolder() {
    try {
        std::string path = CalibrationFolderPath();
        const std::wstring folder = Wide(path);
        if (folder.empty()) return "";
        if (!IsFolder(folder)) CreateDirectoryW(folder.c_str(), nullptr);
        return IsFolder(folder) ? path : "";
    } catch (const std::exception&) {
        return "";
    }
}

// What the rights of a folder say is not all that decides: a file is made, and removed again.
bool FolderIsWritable(const std::string& folder) {
    wchar_t file[MAX_PATH] = {};
    if (!GetTempFileNameW(Wide(folder).c_str(), L"zel", 0, file)) return false;
    DeleteFileW(file);
    return true;
}

char PathSeparator() { return '\\'; }

}  // namespace zel::platform
