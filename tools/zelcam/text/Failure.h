// What ends a command: one line that says what went wrong, why, and what to do about it; and its kind, for scripts.
#ifndef ZELCAM_FAILURE_H
#define ZELCAM_FAILURE_H

#include <stdexcept>
#include <string>

#include "zel/Error.h"

namespace zelcam {

inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;

// Codes and exit codes stay as they are: scripts depend on them. docs/zelcam.md has this table, too.
struct FailureKind {
    const char* code;
    int exit_code;
    const char* meaning;
};
inline constexpr FailureKind kFailed{"failed", kExitFailure, "the command failed for another reason than those below"};
inline constexpr FailureKind kUsage{"usage", 2, "the command line was not understood"};
inline constexpr FailureKind kNoCamera{"no_camera", 3, "there is no such camera, or it can't be opened"};
inline constexpr FailureKind kRefused{"refused", 4, "the camera or the SDK refused a value, a command or the start"};
inline constexpr FailureKind kTimeout{"timeout", 5, "no frame or no reply came in time"};
inline constexpr FailureKind kLinkLost{"link_lost", 6, "the camera was unplugged or switched off"};
inline constexpr FailureKind kOutput{"output", 7, "a file, a folder or the standard output can't be written"};
inline constexpr FailureKind kFramesLost{"frames_lost", 8, "frames are missing between those that were saved"};
inline constexpr FailureKind kProblemsFound{"problems_found", 9, "'doctor' or 'check-plugin' found something wrong"};
// 128 and the number of the signal, as shells count.
inline constexpr FailureKind kInterrupted{"interrupted", 128, "ended by a signal: 129 hang-up, 130 Ctrl-C, 143 kill"};

inline constexpr FailureKind kFailureKinds[] = {kFailed,   kUsage,  kNoCamera,   kRefused,       kTimeout,
                                                kLinkLost, kOutput, kFramesLost, kProblemsFound, kInterrupted};

inline const FailureKind& KindOf(zel::ErrorKind kind) {
    switch (kind) {
        case zel::ErrorKind::invalid_argument:
            return kUsage;
        case zel::ErrorKind::no_camera:
            return kNoCamera;
        case zel::ErrorKind::refused:
            return kRefused;
        case zel::ErrorKind::timeout:
            return kTimeout;
        case zel::ErrorKind::link_lost:
            return kLinkLost;
        case zel::ErrorKind::output:
            return kOutput;
        case zel::ErrorKind::failed:
            break;
    }
    return kFailed;
}

class Failure : public std::runtime_error {
  public:
    // The line is "what: why; advice"; empty parts are left out.
    Failure(const std::string& what, const std::string& why, const std::string& advice,
            const FailureKind& kind = kFailed)
        : std::runtime_error(what + (why.empty() ? "" : ": " + why) + (advice.empty() ? "" : "; " + advice)),
          m_Kind(kind) {}
    // What the SDK's layer could not do; with advice for the command line where its own is for programs.
    explicit Failure(const zel::Error& error) : Failure(error, error.hint()) {}
    Failure(const zel::Error& error, const std::string& advice)
        : Failure(error.problem(), error.why(), advice, KindOf(error.kind())) {}

    const FailureKind& Kind() const { return m_Kind; }
    int ExitCode() const { return m_Kind.exit_code; }

  private:
    FailureKind m_Kind;
};

}  // namespace zelcam

#endif
