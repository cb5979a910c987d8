#include "platform/Memory.h"

#include <sys/mman.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace zel::platform {

namespace {

// munmap wants the size back: it stands in the first word of a page of its own, before what the caller gets.
std::size_t PageSize() {
    static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

constexpr std::size_t kLargePage = std::size_t{2} << 20;

#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23  // Linux 5.14; an older one answers with an error
#endif

}  // namespace

void* ReservePages(std::size_t bytes) {
    if (bytes == 0 || bytes > static_cast<std::size_t>(-1) / 2) return nullptr;
    const std::size_t total = PageSize() + bytes;
    void* region = mmap(nullptr, total, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (region == MAP_FAILED) return nullptr;
    // Before the first page is used, which decides for its whole neighbourhood.
    if (bytes >= kLargePage) madvise(region, total, MADV_HUGEPAGE);
    std::memcpy(region, &total, sizeof total);
    return static_cast<char*>(region) + PageSize();
}

void TouchPages(void* pages, std::size_t bytes) {
    if (bytes == 0) return;
    char* const first = static_cast<char*>(pages);
    const std::size_t within = reinterpret_cast<std::uintptr_t>(first) % PageSize();
    if (madvise(first - within, bytes + within, MADV_POPULATE_WRITE) == 0) return;
    for (std::size_t at = 0; at < bytes; at += PageSize()) {
        volatile char& one = first[at];
        one = one;
    }
    volatile char& last = first[bytes - 1];
    last = last;
}

void ReleasePages(void* pages) {
    if (!pages) return;
    void* region = static_cast<char*>(pages) - PageSize();
    std::size_t total;
    std::memcpy(&total, region, sizeof total);
    munmap(region, total);
}

// MemAvailable counts caches that the system would give up, unlike the free memory that sysinfo reports, which has to
// do where there is no /proc.
std::uint64_t AvailablePhysicalMemory() {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen("/proc/meminfo", "r"), std::fclose);
    char line[128];
    while (file && std::fgets(line, sizeof line, file.get())) {
        constexpr const char* kKey = "MemAvailable:";
        if (std::strncmp(line, kKey, std::strlen(kKey)) == 0) {
            return std::strtoull(line + std::strlen(kKey), nullptr, 10) * 1024;
        }
    }
    struct sysinfo info;
    return sysinfo(&info) == 0 ? std::uint64_t{info.freeram} * info.mem_unit : 0;
}

}  // namespace zel::platform
