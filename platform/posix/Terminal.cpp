#include "platform/Terminal.h"

#include <signal.h>
#include <unistd.h>

namespace zel::platform {

namespace {

void (*s_Handler)() = nullptr;

void HandleSignal(int) {
    if (s_Handler) s_Handler();
}

}  // namespace

bool StderrIsTerminal() { return isatty(STDERR_FILENO) != 0; }

void InstallInterruptHandler(void (*handler)()) {
    s_Handler = handler;
    struct sigaction action = {};
    action.sa_handler = &HandleSignal;
    sigemptyset(&action.sa_mask);
    // The system's own answer, which ends the program, is back after the first signal.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

Utf8Console::Utf8Console() = default;
Utf8Console::~Utf8Console() = default;

}  // namespace zel::platform
