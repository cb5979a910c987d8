#include "platform/SystemLimits.h"

#include <sys/resource.h>

#include <cinttypes>
#include <cstdio>
#include <memory>

namespace zel::platform {

namespace {

std::optional<std::uint64_t> NumberIn(const char* path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "r"), std::fclose);
    std::uint64_t number = 0;
    if (!file || std::fscanf(file.get(), "%" SCNu64, &number) != 1) return std::nullopt;
    return number;
}

std::optional<std::uint64_t> SoftLimit(decltype(RLIMIT_MEMLOCK) resource) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0) return std::nullopt;
    return limit.rlim_cur == RLIM_INFINITY ? kUnlimited : std::uint64_t{limit.rlim_cur};
}

}  // namespace

std::optional<std::uint64_t> RealTimePriorityLimit() { return SoftLimit(RLIMIT_RTPRIO); }
std::optional<std::uint64_t> LockedMemoryLimit() { return SoftLimit(RLIMIT_MEMLOCK); }

std::optional<std::uint64_t> ReceiveBufferLimit() { return NumberIn("/proc/sys/net/core/rmem_max"); }
std::optional<std::uint64_t> ReceiveBufferDefault() { return NumberIn("/proc/sys/net/core/rmem_default"); }

// 0 stands for no limit.
std::optional<std::uint64_t> UsbMemoryLimit() {
    const std::optional<std::uint64_t> megabytes = NumberIn("/sys/module/usbcore/parameters/usbfs_memory_mb");
    if (!megabytes) return std::nullopt;
    return *megabytes == 0 ? kUnlimited : *megabytes << 20;
}

}  // namespace zel::platform
