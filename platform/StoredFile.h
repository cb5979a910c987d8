// The two steps of replacing a file that depend on the system, behind Files.h.
#ifndef PLATFORM_STOREDFILE_H
#define PLATFORM_STOREDFILE_H

#include <cstdio>

namespace zel::platform {

// Waits until what was written to an open file is on the disk.
bool FlushToDisk(std::FILE* file);

// Renames `from` to `to`, in the place of a file that is there.
bool MoveIntoPlace(const char* from, const char* to);

}  // namespace zel::platform

#endif
