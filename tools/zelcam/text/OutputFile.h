// Files that are to be written.
#ifndef ZELCAM_OUTPUTFILE_H
#define ZELCAM_OUTPUTFILE_H

#include <filesystem>

namespace zelcam {

// Makes an empty file where none is, and none else will; false when one is there. Throws Failure.
bool ClaimFile(const std::filesystem::path& path);

// Throws the Failure of a file that was not opened, or that was opened and came out incomplete; nothing is left of it.
[[noreturn]] void FailToWrite(const std::filesystem::path& path, bool opened);

}  // namespace zelcam

#endif
