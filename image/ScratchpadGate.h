// The frames that the application has in scratchpad callbacks, and the threads that want one of them meanwhile.
//
// A callback runs in the middle of processing, with the processing lock given up. Everything here is called with that
// lock held.
#ifndef IMAGE_SCRATCHPADGATE_H
#define IMAGE_SCRATCHPADGATE_H

#include <thread>

#include "image/ZelImageInternal.h"
#include "include/ZelCallbacks.h"
#include "platform/Mutex.h"

namespace zel {

// The scratchpad callback as it was set.
struct ScratchpadHook {
    ZelScratchpadCallback callback = nullptr;
    void* context = nullptr;
};

class ScratchpadGate {
  public:
    using Lock = platform::ScopedLock<platform::Mutex>;
    enum class Caller { kTransport, kApplication };

    // Calls the application with the frame and answers whether it wants it to be demosaiced again. Other frames may be
    // processed meanwhile. The lock is given up for as long as the callback runs, which the check can't follow.
    bool Call(const ScratchpadHook& hook, ZelImageInternal* image, Lock& processing) ZEL_NO_THREAD_SAFETY_ANALYSIS;

    // Waits until no other thread has the frame at its callback. False without waiting for a thread that leaves and
    // that the transport's thread must not wait for.
    bool Await(const ZelImageInternal* image, Caller caller, Lock& processing);

    // Called before the transport is asked for anything that it may wait for its own thread with: that thread then does
    // not wait for a frame which the calling thread has here.
    void Leave();

  private:
    // A list through the stacks of the threads that call.
    struct Entry {
        const ZelImageInternal* image;
        std::thread::id thread;
        bool leaving;
        Entry* next;
    };
    // The caller's own entry does not count: it may ask from inside the callback.
    const Entry* Elsewhere(const ZelImageInternal* image) const;

    Entry* m_Entries = nullptr;
    platform::Condition m_Returned;
};

}  // namespace zel

#endif
