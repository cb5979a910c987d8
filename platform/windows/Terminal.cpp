#include "platform/Terminal.h"

#include <io.h>
#include <stdio.h>
#include <windows.h>

#include <atomic>

namespace zel::platform {

namespace {

constexpr int kInterrupted = 2;
constexpr int kHungUp = 1;

std::atomic<void (*)(int)> s_Handler{nullptr};

// Called on a thread of the system's. TRUE: obeyed; FALSE: the system ends the program.
BOOL WINAPI HandleControl(DWORD event) {
    void (*const handler)(int) = s_Handler.exchange(nullptr);
    if (!handler) return FALSE;
    handler(event == CTRL_CLOSE_EVENT ? kHungUp : kInterrupted);
    return TRUE;
}

}  // namespace

bool StderrIsTerminal() { return _isatty(_fileno(stderr)) != 0; }

int TerminalColumns() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    const bool known = GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info) != 0;
    return known ? info.srWindow.Right - info.srWindow.Left + 1 : 0;
}

// Writing where nothing can arrive fails by itself here.
void GuardStandardStreams() {}

void InstallInterruptHandler(void (*handler)(int signal)) {
    s_Handler = handler;
    SetConsoleCtrlHandler(&HandleControl, TRUE);
}

Utf8Console::Utf8Console() : m_Before(GetConsoleOutputCP()) {
    if (m_Before) SetConsoleOutputCP(CP_UTF8);
}
Utf8Console::~Utf8Console() {
    if (m_Before) SetConsoleOutputCP(m_Before);
}

}  // namespace zel::platform
