// Loading shared libraries by their canonical name and binding their exports.
#ifndef PLATFORM_DYNAMICLIBRARY_H
#define PLATFORM_DYNAMICLIBRARY_H

namespace zel::platform {

// A loaded library. Loads are counted by the system: each LoadSharedLibrary needs its UnloadSharedLibrary.
using LibraryHandle = void*;

// Loads a library by its canonical file name ("zel_usb.dll"), searched for where the system searches. On Linux the file
// is "libzel_usb.so", found through the run path of the library this code is part of. Null when it can't be loaded.
LibraryHandle LoadSharedLibrary(const char* canonical_name);

// One more load of a library that is loaded already, or null: nothing is searched for.
LibraryHandle LoadedLibrary(const char* canonical_name);

// The address of an export of the library itself, not of those that it needs; or null. `library` may be null.
void* FindExport(LibraryHandle library, const char* name);

// Releases one load. Null is allowed.
void UnloadSharedLibrary(LibraryHandle library);

// Fetches the system's text for the last failed load and throws it away, so that no error state is left behind.
void DiscardLoadError();

// Keeps the library that this code is part of in memory until the process ends, however often it is unloaded. On
// Windows each load of a library with MinGW's thread runtime takes one of the process's 1,088 thread-local slots for
// good, so a library that is loaded again and again calls this once. Does nothing elsewhere.
void KeepThisLibraryLoaded();

// Keeps the library that this code is part of in memory until the process ends, on every system: for one that has a
// thread of its own under way which nobody will wait for.
void PinThisLibrary();

template <class Function>
Function FindFunction(LibraryHandle library, const char* name) {
    return reinterpret_cast<Function>(FindExport(library, name));
}

}  // namespace zel::platform

#endif
