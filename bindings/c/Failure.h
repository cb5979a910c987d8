// Failures of the C interface: what is thrown inside, and what a thread remembers of its last call.
#ifndef BINDINGS_C_FAILURE_H
#define BINDINGS_C_FAILURE_H

#include <string>
#include <utility>

#include "zel.h"
#include "zel/Error.h"

namespace zel::c {

// An error with a status that the layer's kinds do not have.
class Failure : public Error {
  public:
    Failure(zel_status status, std::string problem, std::string why = {}, std::string hint = {})
        : Error(ErrorKind::failed, std::move(problem), std::move(why), std::move(hint)), m_Status(status) {}

    zel_status status() const noexcept { return m_Status; }

  private:
    zel_status m_Status;
};

// What a thread's last call ended with. Plain memory: nothing of it has to be freed when the thread ends.
struct LastError {
    zel_status status;
    char problem[256];
    char why[256];
    char hint[256];
    char message[776];  // "problem: why; hint"

    void Set(zel_status new_status, const char* new_problem, const char* new_why, const char* new_hint) noexcept;
    void Clear() noexcept;
};

LastError& ThisThreadsError() noexcept;

// Inside a catch block: turns what is being handled into this thread's error and answers its status.
zel_status RememberException() noexcept;

}  // namespace zel::c

#endif
