// The progress display of one camera's connection: a window on a thread of its own, or the application's callback.
//
//     ProgressControl progress;                                // a member of its owner
//     StartProgress(&progress);                                // returns when the display is there, or can't be
//     SetProgressText(&progress, 0, "Loading primary data...");
//     tap_balance.SetPercentCompleteCallback(&UpdateProgress, &progress);
//     ...
//     EndProgress(&progress);                                  // the display goes; may be started again
//
// All of these are called by one thread, the one that works. A display that can't be made costs nothing but the
// display: the other functions do nothing then.
#ifndef UTIL_PROGRESSCONTROL_H
#define UTIL_PROGRESSCONTROL_H

#include <atomic>
#include <cstdint>

#include "platform/Thread.h"
#include "util/ProgressWindow.h"

namespace zel {

// Shared by the owner and the window's thread.
struct ProgressControl {
    ProgressControl() = default;
    ~ProgressControl();
    ProgressControl(const ProgressControl&) = delete;
    ProgressControl& operator=(const ProgressControl&) = delete;

    const char* title = "ZEL Camera Data Download";
    ProgressWindowFactory make_window = SystemProgressWindow();
    platform::Thread thread;
    std::atomic<bool> running{false};  // the owner clears it to end the thread
    std::atomic<bool> failed{false};   // the thread could make no window
    // Null until the thread has made its window; its memory lives until EndProgress().
    std::atomic<ProgressWindow*> window{nullptr};
};

// Shows the display and waits until it is there, looking every 100 ms for at most 5 s. Where the application has set a
// callback, or the system has no windows, no thread is started. False: nothing is shown.
bool StartProgress(ProgressControl* control);

// Writes status line 0 or 1. Result: 1, or 0 when nothing was done: no control, no display, no text, no such line.
int SetProgressText(ProgressControl* control, unsigned line, const char* text);

// Moves the bar to done x 100 / total percent; the form of a percent-complete callback whose context is the control.
// A total of 0 changes nothing.
void UpdateProgress(void* control, std::int32_t done, std::int32_t total);

// Takes the display away; returns when its thread has ended, which is about 50 ms later.
void EndProgress(ProgressControl* control);

// The routine of the window's thread; `control` is a ProgressControl.
void ProgressThread(void* control);

}  // namespace zel

#endif
