#include "platform/UserTexts.h"

#include <windows.h>

#include <stdlib.h>

#include "platform/DynamicLibrary.h"
#include "platform/windows/WideText.h"

namespace zel::platform {

namespace {

std::wstring WideOf(std::string_view text, unsigned encoding) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(encoding, 0, text.data(), size, nullptr, 0)), 0);
    MultiByteToWideChar(encoding, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

// lossy: set when the encoding lacks a character; null for UTF-8, which lacks none.
std::string Narrow(std::wstring_view wide, unsigned encoding, BOOL* lossy) {
    const DWORD flags = lossy ? WC_NO_BEST_FIT_CHARS : 0;
    const auto size = static_cast<int>(wide.size());
    const int bytes = WideCharToMultiByte(encoding, flags, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(bytes), 0);
    WideCharToMultiByte(encoding, flags, wide.data(), size, text.data(), bytes, nullptr, lossy);
    return text;
}

}  // namespace

std::wstring Wide(std::string_view utf8) { return WideOf(utf8, CP_UTF8); }
std::string Utf8(std::wstring_view wide) { return Narrow(wide, CP_UTF8, nullptr); }

std::vector<std::string> Arguments(int argc, const char* const* argv) {
    // Looked up here, because the libraries of this tree have no use for the one that it is in.
    using Split = wchar_t**(WINAPI*)(const wchar_t*, int*);
    const auto split = FindFunction<Split>(LoadSharedLibrary("shell32.dll"), "CommandLineToArgvW");
    int count = 0;
    wchar_t** const words = split ? split(GetCommandLineW(), &count) : nullptr;
    if (!words) return {argv, argv + argc};
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) arguments.push_back(Utf8(words[i]));
    LocalFree(words);
    return arguments;
}

std::string EnvironmentVariable(const char* name) {
    const std::wstring wide_name = Wide(name);
    std::wstring value(GetEnvironmentVariableW(wide_name.c_str(), nullptr, 0), 0);
    value.resize(GetEnvironmentVariableW(wide_name.c_str(), value.data(), static_cast<DWORD>(value.size())));
    return Utf8(value);
}

// Through the C library, which passes the change on to the system: libraries may ask either of them.
void SetEnvironment(const char* name, const char* value) {
    _wputenv_s(Wide(name).c_str(), Wide(value ? value : "").c_str());
}

std::vector<std::string> EnvironmentVariables(const std::string& beginning) {
    std::vector<std::string> names;
    wchar_t* const all = GetEnvironmentStringsW();
    for (const wchar_t* entry = all; entry && *entry; entry += std::wstring_view(entry).size() + 1) {
        const std::string text = Utf8(entry);
        if (text.starts_with(beginning)) names.push_back(text.substr(0, text.find('=')));
    }
    if (all) FreeEnvironmentStringsW(all);
    return names;
}

std::string Utf8FromSystem(const char* text) { return Utf8(WideOf(text ? text : "", CP_ACP)); }

std::string SystemPath(const std::string& utf8) {
    BOOL lossy = FALSE;
    std::string text = Narrow(Wide(utf8), CP_ACP, &lossy);
    if (!lossy) return text;
    const std::filesystem::path path = Utf8Path(utf8);
    const std::wstring folder = path.parent_path().wstring();
    std::wstring other(GetShortPathNameW(folder.c_str(), nullptr, 0), 0);
    other.resize(GetShortPathNameW(folder.c_str(), other.data(), static_cast<DWORD>(other.size())));
    text = Narrow((std::filesystem::path(other) / path.filename()).wstring(), CP_ACP, &lossy);
    return lossy ? "" : text;
}

}  // namespace zel::platform
