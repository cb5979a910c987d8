#include "platform/StoredFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/Files.h"

namespace zel::platform {

namespace {
std::FILE* StreamOf(int descriptor, const char* mode) {
    if (descriptor < 0) return nullptr;
    std::FILE* const file = fdopen(descriptor, mode);
    if (!file) close(descriptor);
    return file;
}
}  // namespace

std::FILE* OpenStoredFile(const char* path) {
    // Opening a pipe that nobody writes to would wait for a writer.
    const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    struct stat status {};
    if (descriptor >= 0 && fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) return StreamOf(descriptor, "r");
    if (descriptor >= 0) close(descriptor);
    return nullptr;
}

std::FILE* MakeStoredFile(const char* path) {
    unlink(path);
    constexpr mode_t kReadableByAll = 0666;  // as far as the user's mask lets
    return StreamOf(open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kReadableByAll), "w");
}

std::FILE* OpenFile(const std::string& path, const char* mode) { return std::fopen(path.c_str(), mode); }

bool RemoveFile(const char* path) { return unlink(path) == 0; }

bool FlushToDisk(std::FILE* file) { return fsync(fileno(file)) == 0; }

bool MoveIntoPlace(const char* from, const char* to) { return std::rename(from, to) == 0; }

}  // namespace zel::platform
