// Crossing between the interpreter's world, one thread at a time, and the SDK's, where threads of cameras call back.
#ifndef BINDINGS_PYTHON_INTERPRETER_H
#define BINDINGS_PYTHON_INTERPRETER_H

#include <pybind11/pybind11.h>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace zel::python {

// A part of a function that the end of the interpreter waits for (leave_interpreter): it ends threads where they next
// take its lock, which C++ functions on their way do not survive. Begun with the lock.
class Busy {
  public:
    Busy();
    ~Busy();
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;
};

// A part of a function without the interpreter's lock. While the interpreter is ending the lock stays with the thread,
// which might not come back to it.
class Unlocked {
  public:
    Unlocked();

  private:
    Busy m_Busy;
    std::optional<pybind11::gil_scoped_release> m_Release;
};

// Runs a function without the lock.
template <class Function>
decltype(auto) unlocked(Function&& function) {
    const Unlocked section;
    return std::forward<Function>(function)();
}

// The same from wherever it is called, with the lock or without.
template <class Function>
void surely_unlocked(Function&& function) {
    if (PyGILState_Check()) {
        unlocked(std::forward<Function>(function));
    } else {
        std::forward<Function>(function)();
    }
}

// A Python object that threads of cameras hold. It is let go of under the interpreter's lock, and not at all when the
// interpreter has ended.
using SharedObject = std::shared_ptr<pybind11::object>;
SharedObject share(pybind11::object object);

// Whether this process is a copy of one that used the SDK: what it gave must be left where it is.
bool is_forked();
// The same, or the interpreter is about to end: no function of Python is called from other threads any more.
bool is_over();
// Whether the interpreter is about to end, on another thread. Asked with the lock.
bool is_left_behind();
// Throws Closed or Forked then.
void require_sdk();
// The SDK is used from now on.
void note_use();
// In the child of a fork.
void after_fork();
// No new operation begins, and those that are under way have ended when this returns, at the latest after some seconds.
void leave_interpreter(const std::function<void()>& close_all);

// Calls a Python function from a thread of the SDK. What it throws is reported as of no caller (sys.unraisablehook).
template <class Function>
void call_back(const char* what, Function&& function) {
    if (is_over()) return;
    const pybind11::gil_scoped_acquire lock;
    try {
        std::forward<Function>(function)();
    } catch (pybind11::error_already_set& error) {
        error.discard_as_unraisable(what);
    }
}

}  // namespace zel::python

#endif
