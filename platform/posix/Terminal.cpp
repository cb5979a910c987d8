#include "platform/Terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <initializer_list>

namespace zel::platform {

namespace {

void (*s_Handler)(int) = nullptr;
void (*s_RequestHandler)() = nullptr;

void HandleSignal(int number) {
    if (s_Handler) s_Handler(number);
}

void HandleRequest(int) {
    if (s_RequestHandler) s_RequestHandler();
}

}  // namespace

bool StderrIsTerminal() { return isatty(STDERR_FILENO) != 0; }

int TerminalColumns() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

void GuardStandardStreams() {
    signal(SIGPIPE, SIG_IGN);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // Opened the wrong way round: the number is taken, and using it fails as it would have.
        if (fcntl(stream, F_GETFD) < 0) open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

void InstallInterruptHandler(void (*handler)(int signal)) {
    s_Handler = handler;
    struct sigaction action = {};
    action.sa_handler = &HandleSignal;
    sigemptyset(&action.sa_mask);
    // The system's own answer, which ends the program, is back after the first signal.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction present = {};
    sigaction(SIGHUP, nullptr, &present);
    if (present.sa_handler != SIG_IGN) sigaction(SIGHUP, &action, nullptr);
}

void InstallRequestHandler(void (*handler)()) {
    s_RequestHandler = handler;
    struct sigaction action = {};
    action.sa_handler = &HandleRequest;
    sigemptyset(&action.sa_mask);
    action.sa_flags = static_cast<int>(SA_RESTART);
    sigaction(SIGUSR1, &action, nullptr);
}

Typed WaitForLine(unsigned milliseconds) {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, static_cast<int>(milliseconds)) <= 0) return Typed::kNothing;
    char character = 0;
    const ssize_t count = read(STDIN_FILENO, &character, 1);
    if (count <= 0) return Typed::kEnded;
    return character == '\n' ? Typed::kLine : Typed::kNothing;
}

Utf8Console::Utf8Console() = default;
Utf8Console::~Utf8Console() = default;

}  // namespace zel::platform
