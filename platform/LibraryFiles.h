// Where libraries come from and why one does not load: for telling a user.
#ifndef PLATFORM_LIBRARYFILES_H
#define PLATFORM_LIBRARYFILES_H

#include <string>
#include <string_view>
#include <vector>

#include "platform/DynamicLibrary.h"

namespace zel::platform {

// The name of the file that a canonical name stands for: "libzel_usb.so" for "zel_usb.dll" on Linux, unchanged on
// Windows. Folders stay.
std::string LibraryFileName(std::string_view canonical_name);

// The path of the library, or program, that an address lies in, as the loader knows it; empty when it lies in none.
std::string FileOfAddress(const void* address);
// The path of this program.
std::string ProgramFile();

// The folders in which the system looks for a library that the one at this address loads by name, in order. On Linux
// the system's list of known libraries (ldconfig) is not among them.
std::vector<std::string> LibraryPlaces(const void* address);

// From here on no library that this program loads by its name comes from the current folder, where Windows looks
// otherwise. For programs; a library leaves the choice to the program that it is part of. Nothing to do on Linux.
void LeaveCurrentFolderOut();

// Loads the library in this file, whose path is absolute; on Windows what it needs is looked for beside it first, on
// Linux where it says itself. Null when that fails; `why` is then the system's reason, with the name of a library that
// is missing in its turn.
LibraryHandle LoadLibraryFile(const std::string& path, std::string& why);

// The file of a library that is loaded; empty for null.
std::string FileOfLibrary(LibraryHandle library);

}  // namespace zel::platform

#endif
