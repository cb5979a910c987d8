#include "sdk/PluginChoice.h"

#include <algorithm>

#include "platform/LibraryFiles.h"
#include "platform/UserTexts.h"

namespace zel {

namespace {

namespace fs = std::filesystem;
using platform::Utf8Path;
using platform::Utf8Text;

std::string FileName(int library) { return platform::LibraryFileName(InterfaceLibraryName(library)); }

std::string Quoted(const fs::path& path) { return std::string("'").append(Utf8Text(path)).append("'"); }

// The name of a set: one step of a path, which leads nowhere else.
bool IsSetName(const std::string& text) {
    return text.find_first_of("/\\:") == std::string::npos && text != "." && text != "..";
}

// Where sets are installed: beside the plug-ins, which on Linux have a folder of their own beside this library.
std::vector<fs::path> SetFolders() {
    const fs::path own = Utf8Path(platform::FileOfAddress(reinterpret_cast<const void*>(&Plugins))).parent_path();
    return {own / "zel-sdk" / "plugins", own / "plugins"};
}

std::string InstalledSets() {
    std::vector<std::string> names;
    for (const fs::path& folder : SetFolders()) {
        std::error_code error;
        for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
            std::error_code other;
            if (entry->is_directory(other)) names.push_back(Utf8Text(entry->path().filename()));
        }
    }
    std::ranges::sort(names);
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text.empty() ? "none is installed" : "installed are: " + text;
}

PluginChoice::Answer NoSuchSet(const std::string& name) {
    std::string why = "there is no set of plug-ins '" + name + "'";
    if (name == "gige") {
        why += ": it needs Aravis, which this project uses on Linux alone (Debian's package is libzel-sdk-gige)";
    }
    return {ZEL_PLUGINS_NO_FOLDER, why + "; " + InstalledSets() + "; or give the path of a folder, from the root on"};
}

}  // namespace

// Never destroyed, as the session.
PluginChoice& Plugins() {
    static PluginChoice& choice = *new PluginChoice;
    return choice;
}

PluginChoice::Answer PluginChoice::Use(const std::string& wanted) {
    fs::path folder = Utf8Path(wanted);
    std::error_code error;
    if (!folder.is_absolute()) {
        if (wanted.empty() || !IsSetName(wanted)) {
            return {ZEL_PLUGINS_NO_NAME, "'" + wanted +
                                             "' is neither the name of a set nor a path from the root on; the current "
                                             "folder is never looked into"};
        }
        for (const fs::path& place : SetFolders()) {
            if (!folder.is_absolute() && fs::is_directory(place / folder, error)) folder = place / folder;
        }
        if (!folder.is_absolute()) return NoSuchSet(wanted);
    }
    if (!fs::is_directory(folder, error)) return {ZEL_PLUGINS_NO_FOLDER, "there is no folder " + Quoted(folder)};
    if (const fs::path real = fs::canonical(folder, error); !error) folder = real;

    const platform::ScopedLock lock(m_Lock);
    if (!m_Folder.empty()) {
        if (fs::equivalent(folder, m_Folder, error)) return {ZEL_PLUGINS_CHOSEN, Utf8Text(m_Folder)};
        return {ZEL_PLUGINS_TOO_LATE,
                "this program has chosen " + Quoted(m_Folder) + " before, and the first choice is for good"};
    }
    if (m_Settled) {
        return {ZEL_PLUGINS_TOO_LATE, "the SDK was opened before; choose the plug-ins first and open it afterwards"};
    }
    return LoadSet(folder);
}

PluginChoice::Answer PluginChoice::LoadSet(const fs::path& folder) {
    std::array<platform::LibraryHandle, kNumInterfaceLibraries> loaded{};
    const auto give_up = [&](ZelPluginsResult result, const std::string& why) -> Answer {
        for (platform::LibraryHandle handle : loaded) platform::UnloadSharedLibrary(handle);
        return {result, why};
    };
    std::string names;
    std::array<bool, kNumInterfaceLibraries> has{};
    for (int library = 0; library < kNumInterfaceLibraries; ++library) {
        const auto i = static_cast<std::size_t>(library);
        const std::string name = FileName(library);
        const fs::path file = folder / Utf8Path(name);
        names += (names.empty() ? "" : ", ") + name;
        std::error_code error;
        // A link that leads nowhere is a library that can't be loaded, not one that the set lacks.
        if (!fs::exists(fs::symlink_status(file, error))) continue;
        has[i] = true;
        if (platform::LibraryHandle before = platform::LoadedLibrary(InterfaceLibraryName(library))) {
            const std::string other = platform::FileOfLibrary(before);
            platform::UnloadSharedLibrary(before);
            if (!fs::equivalent(file, Utf8Path(other), error)) {
                return give_up(ZEL_PLUGINS_TOO_LATE, "'" + other + "' is in memory before it, under the same name");
            }
        }
        std::string why;
        loaded[i] = platform::LoadLibraryFile(Utf8Text(file), why);
        if (!loaded[i]) return give_up(ZEL_PLUGINS_NOT_LOADED, Quoted(file) + " does not load: " + why);
        platform::LibraryHandle by_name = platform::LoadedLibrary(InterfaceLibraryName(library));
        platform::UnloadSharedLibrary(by_name);
        if (by_name != loaded[i]) {
            return give_up(ZEL_PLUGINS_NOT_LOADED,
                           Quoted(file) + " does not carry its name inside; link it with -Wl,-soname," + name);
        }
    }
    platform::DiscardLoadError();
    if (std::ranges::count(has, true) == 0) {
        return {ZEL_PLUGINS_NO_FOLDER, Quoted(folder) + " has none of the interface libraries: " + names};
    }
    m_Folder = folder;
    m_Has = has;
    return {ZEL_PLUGINS_CHOSEN, Utf8Text(folder)};
}

void PluginChoice::Settle() {
    const platform::ScopedLock lock(m_Lock);
    m_Settled = true;
}

bool PluginChoice::Lacks(int library) {
    const platform::ScopedLock lock(m_Lock);
    return !m_Folder.empty() && !m_Has[static_cast<std::size_t>(library)];
}

}  // namespace zel
