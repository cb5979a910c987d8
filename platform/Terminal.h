// The terminal a command-line program talks to, and the user's wish to end it.
#ifndef PLATFORM_TERMINAL_H
#define PLATFORM_TERMINAL_H

namespace zel::platform {

// Whether the error stream is shown on a terminal, so that a line may be drawn over itself.
bool StderrIsTerminal();

// Has `handler` called when the user asks the program to end (Ctrl-C, or the system's polite request). The handler may
// only set lock-free atomics. A second request while the first is being obeyed ends the program at once.
void InstallInterruptHandler(void (*handler)());

}  // namespace zel::platform

#endif
