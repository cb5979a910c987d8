// Why no frame came: the state a camera was in when a wait for a frame ended without one.
#ifndef ZELCAM_WAITSTATE_H
#define ZELCAM_WAITSTATE_H

#include <string>

namespace zelcam {

struct WaitState {
    bool link_lost = false;
    bool started = false;             // the camera says that it is running
    bool waits_for_hardware = false;  // the trigger input starts frames
    bool waits_for_software = false;  // SoftwareTrigger() starts frames
    long long exposure_us = 0;
    long long waited_ms = 0;
    int buffers = 0;         // size of the image pool
    int buffers_held = 0;    // how many of them the application holds
    long long sequence = 0;  // frames after which the camera stops by itself; 0: it does not

    bool SequenceOver() const { return !link_lost && !started && sequence > 0; }
};

// The most telling cause first.
std::string WhyNoFrame(const WaitState& state);
// What the user can do about it.
std::string AdviceForNoFrame(const WaitState& state);

}  // namespace zelcam

#endif
