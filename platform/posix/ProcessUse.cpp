#include "platform/ProcessUse.h"

#include <filesystem>
#include <iterator>
#include <system_error>

namespace zel::platform {

namespace {
int Entries(const char* folder) {
    std::error_code error;
    const std::filesystem::directory_iterator entries(folder, error);
    return error ? 0 : static_cast<int>(std::distance(begin(entries), end(entries)));
}
}  // namespace

int RunningThreads() { return Entries("/proc/self/task"); }
int OpenHandles() { return Entries("/proc/self/fd"); }

}  // namespace zel::platform
