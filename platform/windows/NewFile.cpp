#include "platform/NewFile.h"

#include <windows.h>

namespace zel::platform {

NewFile MakeNewFile(const std::filesystem::path& path) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return GetLastError() == ERROR_FILE_EXISTS ? NewFile::kTaken : NewFile::kFailed;
    }
    CloseHandle(file);
    return NewFile::kMade;
}

}  // namespace zel::platform
