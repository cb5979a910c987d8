#include "platform/StoredFile.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdint>

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
    const HANDLE handle = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return nullptr;
    if (GetFileType(handle) == FILE_TYPE_DISK) return StreamOf(handle, _O_RDONLY | _O_TEXT, "r");
    CloseHandle(handle);
    return nullptr;
}

std::FILE* MakeStoredFile(const char* path) {
    DeleteFileA(path);
    const DWORD attributes = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT;
    return StreamOf(CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_NEW, attributes, nullptr), _O_TEXT, "w");
}

bool FlushToDisk(std::FILE* file) { return _commit(_fileno(file)) == 0; }

bool MoveIntoPlace(const char* from, const char* to) {
    return MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

}  // namespace zel::platform
