// The terminal a command-line program talks to, and the user's wish to end it.
#ifndef PLATFORM_TERMINAL_H
#define PLATFORM_TERMINAL_H

namespace zel::platform {

// Whether the error stream is shown on a terminal, so that a line may be drawn over itself.
bool StderrIsTerminal();

// Columns of that terminal; 0 when it does not tell.
int TerminalColumns();

// Has writing to the standard output fail where it can't arrive, instead of ending the program or ending up in a file
// that the program opens later: a pipe that nobody reads, a stream that was closed before the start.
void GuardStandardStreams();

// Has `handler` called when the user asks the program to end, with the number of the signal by the shell's count: 2 for
// Ctrl-C, 15 for the system's polite request, 1 for a terminal that is gone (unless the user had that ignored). The
// handler may only set lock-free atomics. A second request while the first is being obeyed ends the program at once.
void InstallInterruptHandler(void (*handler)(int signal));

// Has `handler` called whenever the user asks for something to be done now: SIGUSR1 where there are signals. The
// handler may only set lock-free atomics.
void InstallRequestHandler(void (*handler)());

// What the user types, without waiting for it for long. One thread at a time; nobody else reads the standard input.
enum class Typed {
    kNothing,
    kLine,   // Enter was pressed, or a line came from a file or a pipe
    kEnded,  // nothing comes any more
};
Typed WaitForLine(unsigned milliseconds);

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
