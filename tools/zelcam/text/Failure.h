// What ends a command: one line that says what went wrong, why, and what to do about it.
#ifndef ZELCAM_FAILURE_H
#define ZELCAM_FAILURE_H

#include <stdexcept>
#include <string>

namespace zelcam {

// Exit codes of the program.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;  // the command was understood and could not be carried out
inline constexpr int kExitUsage = 2;    // the command line was not understood

class Failure : public std::runtime_error {
  public:
    // The line is "what: why; advice"; empty parts are left out.
    Failure(const std::string& what, const std::string& why, const std::string& advice, int exit_code = kExitFailure)
        : std::runtime_error(what + (why.empty() ? "" : ": " + why) + (advice.empty() ? "" : "; " + advice)),
          m_ExitCode(exit_code) {}

    int ExitCode() const { return m_ExitCode; }

  private:
    int m_ExitCode;
};

}  // namespace zelcam

#endif
