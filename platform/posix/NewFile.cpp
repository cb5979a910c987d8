#include "platform/NewFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace zel::platform {

NewFile MakeNewFile(const std::filesystem::path& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) return errno == EEXIST ? NewFile::kTaken : NewFile::kFailed;
    close(file);
    return NewFile::kMade;
}

}  // namespace zel::platform
