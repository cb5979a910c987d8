#include "fuzz/StandIns.h"

#include <cstring>

#include "include/ZelPlatform.h"

// Other names for the linker, see CMakeLists.txt: where calls of platform/DynamicLibrary.h and Files.h lead to.
extern "C" {
void* StandInLoad(const char* name);
void* StandInLoaded(const char* name);
void* StandInExport(void* library, const char* name);
void StandInUnload(void* library);
bool StandInRead(const std::string& path, std::size_t limit, std::string& contents);
bool StandInReplace(const std::string& path, const std::string& contents);
}

namespace zel::fuzz {

namespace {

bool s_Logging = false;
volatile std::size_t s_Read = 0;  // keeps the reading of lines in the program

void* ZEL_CALL GetLog(const char* source, const char* instance) {
    s_Read = std::strlen(source) + std::strlen(instance);
    return s_Logging ? &s_Logging : nullptr;
}
int ZEL_CALL Log(void*, int, const char* file, int, const char* function, const char* message) {
    s_Read = std::strlen(file) + std::strlen(function) + std::strlen(message);
    return 0;
}
void ZEL_CALL FreeLog(const char*, const char*) {}

// Known by its address.
const Exports& LoggingLibrary() {
    static const Exports s_Exports = {{"zel_get_log", reinterpret_cast<void*>(&GetLog)},
                                      {"zel_log", reinterpret_cast<void*>(&Log)},
                                      {"zel_free_log", reinterpret_cast<void*>(&FreeLog)}};
    return s_Exports;
}

std::map<std::string, const Exports*>& Libraries() {
    static std::map<std::string, const Exports*> s_Libraries{{"kestrane_zel_logger.dll", &LoggingLibrary()}};
    return s_Libraries;
}

}  // namespace

void SetStandIn(const std::string& name, const Exports* exports) { Libraries()[name] = exports; }
void SetLogging(bool on) { s_Logging = on; }
std::map<std::string, std::string>& Files() {
    static std::map<std::string, std::string> s_Files;
    return s_Files;
}

}  // namespace zel::fuzz

using namespace zel::fuzz;

void* StandInLoad(const char* name) {
    const auto found = Libraries().find(name);
    if (found == Libraries().end() || !found->second) return nullptr;
    return const_cast<Exports*>(found->second);
}

void* StandInLoaded(const char*) { return nullptr; }

void* StandInExport(void* library, const char* name) {
    const auto* exports = static_cast<const Exports*>(library);
    if (!exports) return nullptr;
    const auto found = exports->find(name);
    return found == exports->end() ? nullptr : found->second;
}

void StandInUnload(void*) {}

bool StandInRead(const std::string& path, std::size_t limit, std::string& contents) {
    const auto found = Files().find(path);
    if (found == Files().end() || found->second.size() > limit) return false;
    contents = found->second;
    return true;
}

bool StandInReplace(const std::string& path, const std::string& contents) {
    Files()[path] = contents;
    return true;
}
