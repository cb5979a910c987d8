#include "bindings/python/src/Interpreter.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "bindings/python/src/Errors.h"

namespace zel::python {

namespace {

// Never destroyed: threads may come by at the end of the program.
struct State {
    std::mutex mutex;
    std::condition_variable changed;
    int busy = 0;  // threads that must not be caught by the end of the interpreter
    std::atomic<bool> used = false;
    std::atomic<bool> over = false;
    std::atomic<bool> closed = false;  // over, and all cameras are closed
    std::atomic<bool> forked = false;
    std::thread::id leaving;  // where the interpreter ends; under its lock, like what asks for it
};

State& state() {
    static State* const all = new State;
    return *all;
}

// How long the end of the interpreter waits for operations that don't end, such as a camera that has fallen silent.
constexpr std::chrono::seconds kLongestEnd{25};

}  // namespace

Busy::Busy() {
    State& all = state();
    const std::lock_guard lock(all.mutex);
    ++all.busy;
}

Busy::~Busy() {
    State& all = state();
    const std::lock_guard lock(all.mutex);
    --all.busy;
    all.changed.notify_all();
}

Unlocked::Unlocked() {
    if (!state().closed) m_Release.emplace();
}

SharedObject share(pybind11::object object) {
    return {new pybind11::object(std::move(object)), [](pybind11::object* shared) {
                if (is_over()) return;
                const pybind11::gil_scoped_acquire lock;
                delete shared;
            }};
}

bool is_over() { return state().over || state().forked; }
bool is_forked() { return state().forked; }
bool is_left_behind() { return state().over && !state().forked && state().leaving != std::this_thread::get_id(); }

void require_sdk() {
    if (state().forked) {
        raise("Forked", "the SDK can't be used here", "this process was forked from one that uses it",
              "start processes with multiprocessing.set_start_method('spawn')");
    }
    if (state().over) raise("Closed", "the SDK can't be used any more", "the interpreter is ending", "");
}

void note_use() { state().used = true; }

void after_fork() {
    if (state().used) state().forked = true;
}

void leave_interpreter(const std::function<void()>& close_all) {
    State& all = state();
    if (all.forked || all.over) return;
    all.leaving = std::this_thread::get_id();
    all.over = true;
    unlocked(close_all);
    // No handler of a camera waits for the lock any more: who comes now may keep it.
    all.closed = true;
    const auto deadline = std::chrono::steady_clock::now() + kLongestEnd;
    // Threads begin to count with the interpreter's lock: with it in hand, nobody else does.
    while (true) {
        {
            const pybind11::gil_scoped_release release;
            std::unique_lock lock(all.mutex);
            all.changed.wait_until(lock, deadline, [&] { return all.busy == 0; });
        }
        const std::lock_guard lock(all.mutex);
        if (all.busy == 0 || std::chrono::steady_clock::now() >= deadline) return;
    }
}

}  // namespace zel::python
