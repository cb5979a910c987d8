#include "platform/DynamicLibrary.h"

#include <dlfcn.h>
#include <link.h>

#include <exception>
#include <filesystem>
#include <string>

#include "platform/LibraryFiles.h"

namespace zel::platform {

namespace {

constexpr int kMode = RTLD_NOW | RTLD_LOCAL;

// The loader's entry of the library, or program, that an address lies in; null when it lies in none.
const link_map* HolderOf(void* address) {
    Dl_info info{};
    void* entry = nullptr;
    return dladdr1(address, &info, &entry, RTLD_DL_LINKMAP) ? static_cast<const link_map*>(entry) : nullptr;
}

// The folder of the library, or program, that this code is part of.
std::filesystem::path OwnFolder() {
    const link_map* self = HolderOf(reinterpret_cast<void*>(&LoadSharedLibrary));
    if (!self) return {};
    if (self->l_name && *self->l_name) return std::filesystem::path(self->l_name).parent_path();
    std::error_code error;  // the program itself has no name in the loader's list
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

}  // namespace

LibraryHandle LoadSharedLibrary(const char* canonical_name) {
    if (!canonical_name || !*canonical_name) return nullptr;
    try {
        const std::string name = LibraryFileName(canonical_name);
        if (void* library = dlopen(name.c_str(), kMode)) return library;
        if (name.find('/') != std::string::npos) return nullptr;
        // The loader looks a bare name up along the run path of dlopen's caller. Sanitizers put a function of theirs
        // in between, so that the run path of this library goes unseen: what it says is done by hand.
        const std::filesystem::path folder = OwnFolder();
        return folder.empty() ? nullptr : dlopen((folder / name).c_str(), kMode);
    } catch (const std::exception&) {
        return nullptr;
    }
}

LibraryHandle LoadedLibrary(const char* canonical_name) {
    try {
        return dlopen(LibraryFileName(canonical_name).c_str(), kMode | RTLD_NOLOAD);
    } catch (const std::exception&) {
        return nullptr;
    }
}

// The loader looks through the libraries that this one needs as well; what lies there is not this one's.
void* FindExport(LibraryHandle library, const char* name) {
    if (!library || !name) return nullptr;
    void* const address = dlsym(library, name);
    const link_map* entry = nullptr;
    if (!address || dlinfo(library, RTLD_DI_LINKMAP, &entry) != 0) return nullptr;
    return HolderOf(address) == entry ? address : nullptr;
}

void UnloadSharedLibrary(LibraryHandle library) {
    if (library) dlclose(library);
}

void KeepThisLibraryLoaded() {}

// A program that this code is linked into has no file to be found by and stays anyway.
void PinThisLibrary() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&LoadSharedLibrary), &info) && info.dli_fname)
        dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

void DiscardLoadError() { dlerror(); }

}  // namespace zel::platform
