#include "platform/ProcessUse.h"

#include <windows.h>

#include <tlhelp32.h>

namespace zel::platform {

int RunningThreads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return 0;
    int threads = 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++threads;
    }
    CloseHandle(snapshot);
    return threads;
}

// Wine always says 0, but it gives a new handle the lowest number that is free; they go by fours.
int OpenHandles() {
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    if (handles > 0) return static_cast<int>(handles);
    const HANDLE next = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(next);
    return static_cast<int>(reinterpret_cast<ULONG_PTR>(next) / 4);
}

}  // namespace zel::platform
