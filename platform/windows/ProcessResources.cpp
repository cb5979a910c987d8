#include "platform/ProcessResources.h"

#include <windows.h>

#include <tlhelp32.h>
#include <winternl.h>

#include <algorithm>
#include <vector>

#include "platform/DynamicLibrary.h"

namespace zel::platform {

namespace {

// The system's list of all open handles, as NtQuerySystemInformation fills it in.
constexpr ULONG kExtendedHandleInformation = 64;
constexpr NTSTATUS kListIsLonger = static_cast<NTSTATUS>(0xC0000004);

struct HandleEntry {
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG granted_access;
    USHORT creator_back_trace;
    USHORT object_type;
    ULONG handle_attributes;
    ULONG reserved;
};
struct HandleList {
    ULONG_PTR count;
    ULONG_PTR reserved;
    HandleEntry entries[1];
};

int CountListedHandles() {
    using Query = NTSTATUS(NTAPI*)(ULONG, void*, ULONG, ULONG*);
    const auto query = FindFunction<Query>(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation");
    if (!query) return 0;
    std::vector<ULONG_PTR> memory(1 << 14);
    NTSTATUS status = 0;
    for (; memory.size() < (1 << 24); memory.resize(2 * memory.size())) {
        const auto size = static_cast<ULONG>(memory.size() * sizeof memory[0]);
        status = query(kExtendedHandleInformation, memory.data(), size, nullptr);
        if (status != kListIsLonger) break;
    }
    if (status != 0) return 0;
    const auto* list = reinterpret_cast<const HandleList*>(memory.data());
    const ULONG_PTR self = GetCurrentProcessId();
    return static_cast<int>(std::count_if(list->entries, list->entries + list->count,
                                          [&](const HandleEntry& entry) { return entry.process == self; }));
}

}  // namespace

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
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return handles > 0 ? static_cast<int>(handles) : CountListedHandles();  // Wine always says 0
}

}  // namespace zel::platform
