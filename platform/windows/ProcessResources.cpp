#include "platform/ProcessResources.h"

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

int OpenHandles() {
    DWORD handles = 0;
    return GetProcessHandleCount(GetCurrentProcess(), &handles) ? static_cast<int>(handles) : 0;
}

}  // namespace zel::platform
