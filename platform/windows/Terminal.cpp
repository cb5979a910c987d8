#include "platform/Terminal.h"

#include <io.h>
#include <stdio.h>
#include <windows.h>

#include <atomic>

namespace zel::platform {

namespace {

std::atomic<void (*)()> s_Handler{nullptr};

// Called on a thread of the system's. TRUE: obeyed; FALSE: the system ends the program.
BOOL WINAPI HandleControl(DWORD) {
    void (*const handler)() = s_Handler.exchange(nullptr);
    if (!handler) return FALSE;
    handler();
    return TRUE;
}

}  // namespace

bool StderrIsTerminal() { return _isatty(_fileno(stderr)) != 0; }

void InstallInterruptHandler(void (*handler)()) {
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
