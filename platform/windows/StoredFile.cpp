#include "platform/StoredFile.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdint>

#include "platform/Files.h"
#include "platform/windows/WideText.h"

namespace zel::platform {

namespace {
std::FILE* StreamOf(HANDLE handle, int flags, const char* mode) {
    if (handle == INVALID_HANDLE_VALUE) return nullptr;
    const int descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), flags);
    if (descriptor < 0) {
        CloseHandle(handle);
        return nullptr;
    }
    std::FILE* const file = _fdopen(descriptor, mode);
    if (!file) _close(descriptor);
    return file;
}
}  // namespace

std::FILE* OpenStoredFile(const char* path) {
    const HANDLE handle =
        CreateFileW(Wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return nullptr;
    if (GetFileType(handle) == FILE_TYPE_DISK) return StreamOf(handle, _O_RDONLY | _O_TEXT, "r");
    CloseHandle(handle);
    return nullptr;
}

std::FILE* MakeStoredFile(const char* path) {
    const std::wstring name = Wide(path);
    DeleteFileW(name.c_str());
    const DWORD attributes = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT;
    return StreamOf(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, attributes, nullptr), _O_TEXT,
                    "w");
}

std::FILE* OpenFile(const std::string& path, const char* mode) {
    return _wfopen(Wide(path).c_str(), Wide(mode).c_str());
}

bool RemoveFile(const char* path) { return DeleteFileW(Wide(path).c_str()) != 0; }

bool FlushToDisk(std::FILE* file) { return _commit(_fileno(file)) == 0; }

bool MoveIntoPlace(const char* from, const char* to) {
    return MoveFileExW(Wide(from).c_str(), Wide(to).c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

}  // namespace zel::platform
