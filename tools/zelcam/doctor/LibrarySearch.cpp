#include "tools/zelcam/doctor/LibrarySearch.h"

#include "platform/LibraryFiles.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/camera/PluginSet.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

constexpr std::size_t kPlacesToldOf = 4;

std::string FoldersText(const std::vector<std::string>& folders) {
    std::string text;
    for (std::size_t i = 0; i < std::min(folders.size(), kPlacesToldOf); ++i) {
        text += (i == 0 ? "" : ", ") + folders[i];
    }
    return text + (folders.size() > kPlacesToldOf ? ", ..." : "");
}

FoundLibrary FindIn(const std::vector<std::string>& places, const char* canonical_name) {
    FoundLibrary library;
    const std::filesystem::path name = zel::platform::Utf8Path(zel::platform::LibraryFileName(canonical_name));
    std::error_code error;
    for (const std::string& place : places) {
        const std::filesystem::path file = zel::platform::Utf8Path(place) / name;
        if (!std::filesystem::is_regular_file(file, error)) continue;
        library.path = zel::platform::Utf8Text(file);
        library.handle = zel::platform::LoadLibraryFile(library.path, library.why);
        if (!library.handle) library.why = "does not load: " + library.why;
        break;
    }
    return library;
}

}  // namespace

FoundLibrary FindPlugin(const char* canonical_name, const SdkFile& sdk) {
    const PluginSet& plugins = ChosenPlugins();
    if (plugins.folder.empty()) return FindLibrary(canonical_name, sdk);
    FoundLibrary library = FindIn({plugins.folder}, canonical_name);
    if (library.path.empty()) library.why = "is not in the chosen set";
    return library;
}

FoundLibrary FindLibrary(const char* canonical_name, const SdkFile& sdk) {
    FoundLibrary library = FindIn(sdk.places, canonical_name);
    if (!library.path.empty()) return library;
    // The system may know it from elsewhere.
    library.handle = zel::platform::LoadSharedLibrary(canonical_name);
    library.path = zel::platform::FileOfLibrary(library.handle);
    if (library.handle) return library;
    zel::platform::DiscardLoadError();
    library.why = "was not found; looked in " + FoldersText(sdk.places);
    return library;
}

std::string VersionIn(const std::string& line) {
    const std::size_t mark = line.rfind(" - ");
    std::string version = mark == std::string::npos ? Trim(line) : Trim(line.substr(mark + 3));
    if (version.ends_with('.')) version.pop_back();
    return version;
}

}  // namespace zelcam
