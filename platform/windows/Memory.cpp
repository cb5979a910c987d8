#include "platform/Memory.h"

#include <windows.h>

namespace zel::platform {

void* ReservePages(std::size_t bytes) { return VirtualAlloc(nullptr, bytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE); }

// Large pages would need a privilege of the user's.
void AskForLargePages(void*, std::size_t) {}

void ReleasePages(void* pages) {
    if (pages) VirtualFree(pages, 0, MEM_RELEASE);
}

std::uint64_t AvailablePhysicalMemory() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) ? status.ullAvailPhys : 0;
}

}  // namespace zel::platform
