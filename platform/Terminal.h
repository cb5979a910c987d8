// The terminal a command-line program talks to, and the user's wish to end it.
#ifndef PLATFORM_TERMINAL_H
#define PLATFORM_TERMINAL_H

namespace zel::platform {

// Whether the error stream is shown on a terminal, so that a line may be drawn over itself.
bool StderrIsTerminal();

// Has `handler` called when the user asks the program to end (Ctrl-C, or the system's polite request). The handler may
// only set lock-free atomics. A second request while the first is being obeyed ends the program at once.
void InstallInterruptHandler(void (*handler)());

// While it lives a console shows the program's texts, which are UTF-8, as such. Pipes and files get the same bytes.
class Utf8Console {
  public:
    Utf8Console();
    ~Utf8Console();
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;

  private:
    [[maybe_unused]] unsigned m_Before = 0;  // the console's encoding; 0: there is none
};

}  // namespace zel::platform

#endif
