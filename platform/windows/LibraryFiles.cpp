#include "platform/LibraryFiles.h"

#include <windows.h>

#include <algorithm>

#include "platform/UserTexts.h"
#include "platform/windows/WideText.h"

namespace zel::platform {

namespace {

std::string FileOfModule(HMODULE module) {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    return Utf8(path);
}

std::string SystemFolder(UINT(WINAPI* ask)(LPWSTR, UINT)) {
    wchar_t folder[MAX_PATH] = {};
    return ask(folder, MAX_PATH) < MAX_PATH ? Utf8(folder) : "";
}

bool CanBeFound(const std::wstring& folder, const std::wstring& library) {
    if (GetModuleHandleW(library.c_str())) return true;
    HMODULE found = LoadLibraryExW((folder + library).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (!found) found = LoadLibraryExW(library.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (found) FreeLibrary(found);
    return found != nullptr;
}

// The libraries that the one in this file needs and that are nowhere: "; it needs a.dll, b.dll". The system's own
// message names none.
std::string MissingLibraries(const std::wstring& path) {
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
    if (!module) return "";
    const auto* const image = reinterpret_cast<const unsigned char*>(module);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(image + dos->e_lfanew);
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    const std::wstring folder = path.substr(0, path.find_last_of(L"\\/") + 1);
    std::string missing;
    if (imports != 0) {
        const auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(image + imports);
        for (; entry->Name != 0; ++entry) {
            const std::string name = reinterpret_cast<const char*>(image + entry->Name);
            if (!CanBeFound(folder, Wide(name))) missing += (missing.empty() ? "; it needs " : ", ") + name;
        }
    }
    FreeLibrary(module);
    return missing;
}

std::string ErrorText(DWORD error) {
    wchar_t* text = nullptr;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                   error, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::string utf8 = text ? Utf8(text) : "error " + std::to_string(error);
    if (text) LocalFree(text);
    while (!utf8.empty() && (utf8.back() == '\n' || utf8.back() == '\r' || utf8.back() == '.')) utf8.pop_back();
    return utf8;
}

}  // namespace

std::string LibraryFileName(std::string_view canonical_name) { return std::string(canonical_name); }

std::string ProgramFile() { return FileOfModule(nullptr); }

std::string FileOfAddress(const void* address) {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       static_cast<LPCWSTR>(address), &module);
    return module ? FileOfModule(module) : "";
}

std::string FileOfLibrary(LibraryHandle library) { return library ? FileOfModule(static_cast<HMODULE>(library)) : ""; }

namespace {
bool s_CurrentFolderIsOut = false;
}

// A folder that is named takes the current one's place; the program's own is looked through anyway. (An empty name does
// the same on Windows, and nothing under Wine.)
void LeaveCurrentFolderOut() {
    const std::string program = ProgramFile();
    s_CurrentFolderIsOut = SetDllDirectoryW(Wide(program.substr(0, program.find_last_of('\\'))).c_str());
}

// The same for every library: the program's folder, the system's, the current one unless the program leaves it out, and
// those of PATH.
std::vector<std::string> LibraryPlaces(const void*) {
    wchar_t current[MAX_PATH] = {};
    const std::string program = ProgramFile();
    std::vector<std::string> all{
        program.substr(0, program.find_last_of('\\')), SystemFolder(GetSystemDirectoryW),
        SystemFolder(GetWindowsDirectoryW),
        GetCurrentDirectoryW(MAX_PATH, current) < MAX_PATH && !s_CurrentFolderIsOut ? Utf8(current) : ""};
    const std::string path = EnvironmentVariable("PATH");
    for (std::size_t start = 0; start < path.size();) {
        const std::size_t end = std::min(path.find(';', start), path.size());
        all.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    std::vector<std::string> places;
    for (const std::string& place : all) {
        if (!place.empty() && std::ranges::find(places, place) == places.end()) places.push_back(place);
    }
    return places;
}

LibraryHandle LoadLibraryFile(const std::string& path, std::string& why) {
    std::wstring wide = Wide(path);
    // The system takes a path whose separators are its own; it is the file's folder that it looks through first then.
    std::replace(wide.begin(), wide.end(), L'/', L'\\');
    const HMODULE library = LoadLibraryExW(wide.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library) return library;
    const DWORD error = GetLastError();
    why = ErrorText(error) + (error == ERROR_MOD_NOT_FOUND ? MissingLibraries(wide) : "");
    return nullptr;
}

}  // namespace zel::platform
