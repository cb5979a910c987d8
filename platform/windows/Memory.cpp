#include "platform/Memory.h"

#include <windows.h>

#include "platform/Mutex.h"

namespace zel::platform {

void* ReservePages(std::size_t bytes) { return VirtualAlloc(nullptr, bytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE); }

// Large pages need a privilege that applications do not have; the small ones are written to, one after the other.
void TouchPages(void* pages, std::size_t bytes) {
    constexpr std::size_t kPage = 4096;
    volatile char* const first = static_cast<char*>(pages);
    for (std::size_t at = 0; at < bytes; at += kPage) first[at] = first[at];
    if (bytes > 0) first[bytes - 1] = first[bytes - 1];
}

void ReleasePages(void* pages) {
    if (pages) VirtualFree(pages, 0, MEM_RELEASE);
}

// Under Wine a first call answers zeros while another thread's is under way.
std::uint64_t AvailablePhysicalMemory() {
    static Mutex s_OneAtATime;
    const ScopedLock lock(s_OneAtATime);
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) ? status.ullAvailPhys : 0;
}

}  // namespace zel::platform
