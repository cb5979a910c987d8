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

std::string CalibrationFolder() {
    wchar_t name[UNLEN + 1] = {};
    DWORD size = UNLEN + 1;
    if (!GetUserNameW(name, &size)) return "";
    try {
        const std::wstring folder = L"c:\\Users\\" + std::wstring(name) + L"\\AppData\\Local\\ZEL";
        if (!IsFolder(folder)) CreateDirectoryW(folder.c_str(), nullptr);
        return IsFolder(folder) ? Utf8(folder) : "";
    } catch (const std::exception&) {
        return "";
    }
}

char PathSeparator() { return '\\'; }

}  // namespace zel::platform
