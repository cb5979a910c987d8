// Taking a file name for oneself.
#ifndef PLATFORM_NEWFILE_H
#define PLATFORM_NEWFILE_H

#include <filesystem>

namespace zel::platform {

enum class NewFile {
    kMade,    // an empty file stands there now, made by this call
    kTaken,   // something stood there already
    kFailed,  // it can't be made
};

// Makes an empty file where none is. Of several programs that try at once one makes it.
NewFile MakeNewFile(const std::filesystem::path& path);

}  // namespace zel::platform

#endif
