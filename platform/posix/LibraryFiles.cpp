#include "platform/LibraryFiles.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace zel::platform {

namespace {

std::string Absolute(const char* path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return error ? path : absolute.lexically_normal().string();
}

}  // namespace

std::string LibraryFileName(std::string_view canonical_name) {
    constexpr std::string_view kEnding = ".dll";
    if (!canonical_name.ends_with(kEnding)) return std::string(canonical_name);
    canonical_name.remove_suffix(kEnding.size());
    const std::size_t file = canonical_name.rfind('/') + 1;  // 0 when there is no folder
    return std::string(canonical_name.substr(0, file)) + "lib" + std::string(canonical_name.substr(file)) + ".so";
}

std::string ProgramFile() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

std::string FileOfAddress(const void* address) {
    Dl_info info{};
    void* entry = nullptr;
    if (!dladdr1(address, &info, &entry, RTLD_DL_LINKMAP) || !entry) return "";
    const char* const name = static_cast<const link_map*>(entry)->l_name;
    return name && *name ? Absolute(name) : ProgramFile();  // the program itself has no name in the loader's list
}

std::string FileOfLibrary(LibraryHandle library) {
    const link_map* entry = nullptr;
    if (!library || dlinfo(library, RTLD_DI_LINKMAP, &entry) != 0) return "";
    return Absolute(entry->l_name);
}

std::vector<std::string> LibraryPlaces(const void* address) {
    std::vector<std::string> places;
    void* const library = dlopen(FileOfAddress(address).c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (!library) return places;
    Dl_serinfo size{};
    if (dlinfo(library, RTLD_DI_SERINFOSIZE, &size) == 0) {
        std::vector<char> bytes(size.dls_size);
        auto* const list = reinterpret_cast<Dl_serinfo*>(bytes.data());
        *list = size;
        if (dlinfo(library, RTLD_DI_SERINFO, list) == 0) {
            const Dl_serpath* const first = list->dls_serpath;
            for (const Dl_serpath* path = first; path != first + list->dls_cnt; ++path) {
                const std::string folder = Absolute(path->dls_name);
                if (std::ranges::find(places, folder) == places.end()) places.push_back(folder);
            }
        }
    }
    dlclose(library);
    return places;
}

void LeaveCurrentFolderOut() {}

LibraryHandle LoadLibraryFile(const std::string& path, std::string& why) {
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library) return library;
    const char* const text = dlerror();
    why = text ? text : "the system gives no reason";
    return nullptr;
}

}  // namespace zel::platform
