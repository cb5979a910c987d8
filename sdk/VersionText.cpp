#include "sdk/VersionText.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "platform/Mutex.h"
#include "sdk/InterfaceLibrary.h"
#include "sdk/ManagerUse.h"

namespace zel {

namespace {

using Buffer = std::array<char, kVersionTextCapacity>;

platform::Mutex s_VersionLock;  // two composers don't mix their bytes
Buffer s_Version ZEL_GUARDED_BY(s_VersionLock){};

void AppendLine(Buffer& buffer, const char* text) {
    const std::size_t used = std::strlen(buffer.data());
    std::snprintf(buffer.data() + used, buffer.size() - used, "\n%s", text);
}

void AppendVersionOf(platform::LibraryHandle module, Buffer& buffer) {
    const auto get_version_str = platform::FindFunction<GetLibraryTextFunction>(module, "get_version_str");
    const char* text = get_version_str ? get_version_str() : nullptr;
    if (text && *text) AppendLine(buffer, text);
}

}  // namespace

char* ComposeVersionText() {
    Buffer buffer{};
    // On purpose: nine blanks, and a point at the end of the version.
    std::snprintf(buffer.data(), buffer.size(), "%s         - %s", "zel_sdk.dll", ZEL_SDK_VERSION ".0.");
    for (int library = 0; library < kNumInterfaceLibraries; ++library) {
        // A record's library stays loaded as long as somebody is inside.
        const ManagerUse manager;
        if (platform::LibraryHandle recorded = manager ? Tables().Library(library).module : nullptr) {
            AppendVersionOf(recorded, buffer);
        } else if (platform::LibraryHandle loaded = LoadByName(library)) {
            AppendVersionOf(loaded, buffer);
            platform::UnloadSharedLibrary(loaded);
        } else {
            platform::DiscardLoadError();
        }
    }
    const platform::ScopedLock guard(s_VersionLock);
    s_Version = buffer;
    return s_Version.data();
}

}  // namespace zel
