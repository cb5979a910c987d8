// The steps of reading and replacing a file that depend on the system, behind Files.h. Paths are UTF-8.
#ifndef PLATFORM_STOREDFILE_H
#define PLATFORM_STOREDFILE_H

#include <cstdio>

namespace zel::platform {

// A file opened for reading as text; null for anything that is not on a disk, without waiting for it.
std::FILE* OpenStoredFile(const char* path);

// A new file opened for writing as text. What stood there is removed first, a link itself and not its target; null when
// that is a folder.
std::FILE* MakeStoredFile(const char* path);

// Waits until what was written to an open file is on the disk.
bool FlushToDisk(std::FILE* file);

// Renames `from` to `to`, in the place of a file that is there.
bool MoveIntoPlace(const char* from, const char* to);

bool RemoveFile(const char* path);

}  // namespace zel::platform

#endif
