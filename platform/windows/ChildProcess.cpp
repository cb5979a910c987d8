#include "platform/ChildProcess.h"

#include <windows.h>

#include <cstdio>

#include "platform/windows/WideText.h"

namespace zel::platform {

namespace {

class Handle {
  public:
    Handle() = default;
    ~Handle() { Close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void Close() {
        if (m_Handle && m_Handle != INVALID_HANDLE_VALUE) CloseHandle(m_Handle);
        m_Handle = nullptr;
    }
    HANDLE Get() const { return m_Handle; }
    HANDLE* Address() { return &m_Handle; }

  private:
    HANDLE m_Handle = nullptr;
};

// An argument as CommandLineToArgvW takes it apart.
std::string Quoted(const std::string& argument) {
    std::string quoted(1, '"');
    std::size_t backslashes = 0;
    for (const char character : argument) {
        if (character == '"') quoted.append(backslashes + 1, '\\');
        backslashes = character == '\\' ? backslashes + 1 : 0;
        quoted.push_back(character);
    }
    quoted.append(backslashes, '\\');
    quoted.push_back('"');
    return quoted;
}

LONG WINAPI EndAtOnce(EXCEPTION_POINTERS* pointers) {
    TerminateProcess(GetCurrentProcess(), pointers->ExceptionRecord->ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

struct ChildProcess::State {
    Handle process;
    Handle output;
    Handle job;  // closing it ends what is in it

    void Start(const std::wstring& program, std::wstring line);
};

std::string ProcessEnd::Text() const {
    char number[32];
    std::snprintf(number, sizeof number, crashed ? "0x%08x" : "%d", static_cast<unsigned>(code));
    return std::string(crashed ? "crashed with exception " : "ended with exit code ") + number;
}

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments)
    : m_State(std::make_unique<State>()) {
    std::string line = Quoted(program);
    for (const std::string& argument : arguments) {
        line += ' ';
        line += Quoted(argument);
    }
    m_State->Start(Wide(program), Wide(line));
}

// The shell takes what stands between the first and the last quotation mark as it is.
ChildProcess::ChildProcess(const ShellLine& line) : m_State(std::make_unique<State>()) {
    wchar_t folder[MAX_PATH];
    const UINT length = GetSystemDirectoryW(folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return;
    m_State->Start(std::wstring(folder, length) + L"\\cmd.exe", L"cmd.exe /s /c \"" + Wide(line.text) + L"\"");
}

void ChildProcess::State::Start(const std::wstring& program, std::wstring line) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    Handle write_end;
    if (!CreatePipe(output.Address(), write_end.Address(), &inherited, 0)) return;
    SetHandleInformation(output.Get(), HANDLE_FLAG_INHERIT, 0);
    Handle input;
    *input.Address() =
        CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0, nullptr);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input.Get();
    start.hStdOutput = write_end.Get();
    start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION made{};
    // Wine on a busy machine now and then gives up a process that it could have started, and says so with this error.
    constexpr int kTries = 4;
    BOOL started = FALSE;
    for (int i = 0; i < kTries && !started && (i == 0 || GetLastError() == ERROR_INTERNAL_ERROR); ++i) {
        started = CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                                 nullptr, &start, &made);
    }
    if (!started) {
        output.Close();
        return;
    }
    *process.Address() = made.hProcess;
    *job.Address() = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    AssignProcessToJobObject(job.Get(), made.hProcess);
    ResumeThread(made.hThread);
    CloseHandle(made.hThread);
}

ChildProcess::~ChildProcess() { Kill(); }

bool ChildProcess::Started() const { return m_State->process.Get() != nullptr; }

// A pipe can't be waited for, so it is looked into.
ChildProcess::Output ChildProcess::Read(std::string& text, unsigned milliseconds) {
    const ULONGLONG last = GetTickCount64() + milliseconds;
    for (;;) {
        DWORD waiting = 0;
        if (!PeekNamedPipe(m_State->output.Get(), nullptr, 0, nullptr, &waiting, nullptr)) return Output::kEnded;
        if (waiting > 0) break;
        if (GetTickCount64() >= last) return Output::kNothing;
        Sleep(2);
    }
    char bytes[4096];
    DWORD count = 0;
    if (!ReadFile(m_State->output.Get(), bytes, sizeof bytes, &count, nullptr) || count == 0) return Output::kEnded;
    text.append(bytes, count);
    return Output::kSome;
}

void ChildProcess::Kill() {
    if (m_State->job.Get()) TerminateJobObject(m_State->job.Get(), 1);
    if (m_State->process.Get()) TerminateProcess(m_State->process.Get(), 1);
}

bool ChildProcess::Wait(unsigned milliseconds, ProcessEnd& end) {
    if (WaitForSingleObject(m_State->process.Get(), milliseconds) != WAIT_OBJECT_0) return false;
    DWORD code = 0;
    GetExitCodeProcess(m_State->process.Get(), &code);
    end.code = static_cast<int>(code);
    end.crashed = code >= 0xC0000000u;
    return true;
}

void CrashQuietly() {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    SetUnhandledExceptionFilter(&EndAtOnce);
}

}  // namespace zel::platform
