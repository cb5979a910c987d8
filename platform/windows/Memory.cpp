#include "platform/Memory.h"

#include <windows.h>

#include "platform/ReservationCount.h"

namespace zel::platform {

void* ReservePages(std::size_t bytes) {
    if (!CountReservation()) return nullptr;
    void* pages = VirtualAlloc(nullptr, bytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    if (!pages) CountRelease();
    return pages;
}

void ReleasePages(void* pages) {
    if (!pages) return;
    VirtualFree(pages, 0, MEM_RELEASE);
    CountRelease();
}

std::uint64_t AvailablePhysicalMemory() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) ? status.ullAvailPhys : 0;
}

}  // namespace zel::platform
