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

// There is no such signal here.
void InstallRequestHandler(void (*)()) {}

Typed WaitForLine(unsigned milliseconds) {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    DWORD mode = 0, count = 0;
    if (GetConsoleMode(input, &mode)) {
        if (WaitForSingleObject(input, milliseconds) != WAIT_OBJECT_0) return Typed::kNothing;
        INPUT_RECORD record{};
        if (!ReadConsoleInputW(input, &record, 1, &count)) return Typed::kEnded;
        const KEY_EVENT_RECORD& key = record.Event.KeyEvent;
        const bool enter = record.EventType == KEY_EVENT && key.bKeyDown && key.wVirtualKeyCode == VK_RETURN;
        return enter ? Typed::kLine : Typed::kNothing;
    }
    // A pipe can't be waited for; where it can't be looked into either (Wine's from Linux), nothing is read.
    DWORD waiting = 0;
    if (GetFileType(input) == FILE_TYPE_PIPE) {
        if (!PeekNamedPipe(input, nullptr, 0, nullptr, &waiting, nullptr)) return Typed::kEnded;
        if (waiting == 0) {
            Sleep(milliseconds);
            return Typed::kNothing;
        }
    }
    char character = 0;
    if (!ReadFile(input, &character, 1, &count, nullptr) || count == 0) return Typed::kEnded;
    return character == '\n' ? Typed::kLine : Typed::kNothing;
}

Utf8Console::Utf8Console() : m_Before(GetConsoleOutputCP()) {
    if (m_Before) SetConsoleOutputCP(CP_UTF8);
}
Utf8Console::~Utf8Console() {
    if (m_Before) SetConsoleOutputCP(m_Before);
}

}  // namespace zel::platform
