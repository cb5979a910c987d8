// Finding a library where the SDK would find it.
#ifndef ZELCAM_LIBRARYSEARCH_H
#define ZELCAM_LIBRARYSEARCH_H

#include <string>

#include "platform/DynamicLibrary.h"
#include "tools/zelcam/doctor/Checks.h"

namespace zelcam {

struct FoundLibrary {
    zel::platform::LibraryHandle handle = nullptr;  // loaded once more: the caller unloads it
    std::string path;                               // also of one that is there and does not load
    std::string why;                                // it did not load; follows the library's name in a sentence
};

FoundLibrary FindLibrary(const char* canonical_name, const SdkFile& sdk);
// The same for a plug-in, which comes from the chosen set alone, if there is one.
FoundLibrary FindPlugin(const char* canonical_name, const SdkFile& sdk);

// "1.0.0.0" of a line "zel_usb.dll - 1.0.0.0."
std::string VersionIn(const std::string& line);

}  // namespace zelcam

#endif
