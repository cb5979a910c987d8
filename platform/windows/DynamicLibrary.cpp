#include "platform/DynamicLibrary.h"

#include <windows.h>

namespace zel::platform {

LibraryHandle LoadSharedLibrary(const char* canonical_name) {
    return canonical_name ? LoadLibraryA(canonical_name) : nullptr;
}

LibraryHandle LoadedLibrary(const char* canonical_name) {
    HMODULE library = nullptr;
    return GetModuleHandleExA(0, canonical_name, &library) ? library : nullptr;
}

void* FindExport(LibraryHandle library, const char* name) {
    if (!library || !name) return nullptr;
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

void UnloadSharedLibrary(LibraryHandle library) {
    if (library) FreeLibrary(static_cast<HMODULE>(library));
}

void KeepThisLibraryLoaded() {
    static const char inside = 0;
    HMODULE library = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN, &inside, &library);
}

void PinThisLibrary() { KeepThisLibraryLoaded(); }

void DiscardLoadError() {
    char* text = nullptr;
    FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                   GetLastError(), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<char*>(&text), 0,
                   nullptr);
    if (text) LocalFree(text);
}

}  // namespace zel::platform
