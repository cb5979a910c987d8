// Files by their names, which are UTF-8.
#ifndef PLATFORM_FILES_H
#define PLATFORM_FILES_H

#include <cstddef>
#include <cstdio>
#include <string>

namespace zel::platform {

// fopen, for any name that the system knows.
std::FILE* OpenFile(const std::string& path, const char* mode);

// The file's contents. False when it can't be read, is longer than `limit` bytes, or is no file: a pipe or a device is
// not waited for.
bool ReadTextFile(const std::string& path, std::size_t limit, std::string& contents);

// Replaces the file's contents, or makes it. The text goes into a neighbour file ("PATH.part") that takes the file's
// place when it is complete and on the disk: a crash in the middle leaves the old file as it was. False when anything
// failed; the old file is then untouched. A link or a pipe in either place is replaced, too, and nothing is written
// through it. The folder must exist.
bool ReplaceTextFile(const std::string& path, const std::string& contents);

}  // namespace zel::platform

#endif
