#include "platform/OtherProcesses.h"

#include <windows.h>

#include <tlhelp32.h>

#include "platform/windows/WideText.h"

namespace zel::platform {

namespace {

class Snapshot {
  public:
    Snapshot(DWORD what, DWORD process) : m_Handle(CreateToolhelp32Snapshot(what, process)) {}
    ~Snapshot() {
        if (m_Handle != INVALID_HANDLE_VALUE) CloseHandle(m_Handle);
    }
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;
    HANDLE Get() const { return m_Handle; }

  private:
    HANDLE m_Handle;
};

bool HasLoaded(DWORD process, const std::wstring& file_name) {
    const Snapshot modules(TH32CS_SNAPMODULE | TH32CS_SNAPMODULE32, process);
    MODULEENTRY32W module{};
    module.dwSize = sizeof module;
    for (BOOL more = Module32FirstW(modules.Get(), &module); more; more = Module32NextW(modules.Get(), &module)) {
        if (_wcsicmp(module.szModule, file_name.c_str()) == 0) return true;
    }
    return false;
}

}  // namespace

std::vector<OtherProcess> ProcessesWithLibrary(const std::string& file_name) {
    std::vector<OtherProcess> found;
    const std::wstring wanted = Wide(file_name);
    const Snapshot processes(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W process{};
    process.dwSize = sizeof process;
    for (BOOL more = Process32FirstW(processes.Get(), &process); more;
         more = Process32NextW(processes.Get(), &process)) {
        const DWORD id = process.th32ProcessID;
        if (id == 0 || id == GetCurrentProcessId() || !HasLoaded(id, wanted)) continue;
        found.push_back({id, Utf8(process.szExeFile)});
    }
    return found;
}

}  // namespace zel::platform
