// A program run by this one, to do what may crash or never end.
#ifndef PLATFORM_CHILDPROCESS_H
#define PLATFORM_CHILDPROCESS_H

#include <memory>
#include <string>
#include <vector>

namespace zel::platform {

// How a process ended.
struct ProcessEnd {
    bool crashed = false;  // by the system's hand, for a fault of its own
    int code = 0;          // its exit code; the signal (Windows: the exception) when it crashed
    std::string Text() const;
};

// A command line of the system's shell, in UTF-8.
struct ShellLine {
    std::string text;
};

// Ends with this object, and with this process however that ends. One thread uses it.
class ChildProcess {
  public:
    // Starts the program in this file with these arguments, in UTF-8; the first is not the program's name. Its standard
    // output comes here, its error stream is this process's, its standard input is empty.
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments);
    // Starts a shell for that line; Kill() ends what the shell started, too.
    explicit ChildProcess(const ShellLine& line);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool Started() const;

    enum class Output {
        kNothing,  // in this time
        kSome,     // added to `text`
        kEnded     // nothing comes any more
    };
    // Waits for output, as long as that at most.
    Output Read(std::string& text, unsigned milliseconds);

    void Kill();
    // Waits until it has ended, as long as that at most; false when it has not.
    bool Wait(unsigned milliseconds, ProcessEnd& end);

  private:
    struct State;
    void Start(const std::string& program, const std::vector<std::string>& arguments);

    std::unique_ptr<State> m_State;
};

// For the process that may crash: it shall do so without a dialog, a debugger or a file of its memory.
void CrashQuietly();

}  // namespace zel::platform

#endif
