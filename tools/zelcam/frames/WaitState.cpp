#include "tools/zelcam/frames/WaitState.h"

#include <fmt/format.h>

#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

enum class Cause {
    kLinkLost,
    kNoBuffers,
    kBuffersHeld,
    kHardware,
    kSequenceOver,
    kNotStarted,
    kExposing,
    kSoftware,
    kSilent
};

Cause CauseOf(const WaitState& state) {
    if (state.link_lost) return Cause::kLinkLost;
    if (state.SequenceOver()) return Cause::kSequenceOver;
    if (state.buffers <= 0) return Cause::kNoBuffers;
    if (state.buffers_held >= state.buffers) return Cause::kBuffersHeld;
    if (state.waits_for_hardware) return Cause::kHardware;
    if (!state.started) return Cause::kNotStarted;
    if (state.exposure_us / 1000 >= state.waited_ms) return Cause::kExposing;
    if (state.waits_for_software) return Cause::kSoftware;
    return Cause::kSilent;
}

std::string ExposureText(const WaitState& state) {
    return fmt::format("{:.{}f} ms", static_cast<double>(state.exposure_us) / 1000.0,
                       state.exposure_us % 1000 == 0 ? 0 : 3);
}

}  // namespace

std::string WhyNoFrame(const WaitState& state) {
    switch (CauseOf(state)) {
        case Cause::kLinkLost:
            return "the link to the camera is lost";
        case Cause::kNoBuffers:
            return "there are no image buffers";
        case Cause::kBuffersHeld:
            return "all " + std::to_string(state.buffers) + " image buffers are held by the application";
        case Cause::kHardware:
            return "the camera is waiting for a trigger at its input";
        case Cause::kSequenceOver:
            return "its sequence of " + Counted(static_cast<unsigned long long>(state.sequence), "frame") + " is over";
        case Cause::kNotStarted:
            return "the camera is not started";
        case Cause::kExposing:
            return "the exposure of " + ExposureText(state) + " is not over";
        case Cause::kSoftware:
            return "the software trigger brought no frame (exposure of " + ExposureText(state) + ")";
        case Cause::kSilent:
            return "the camera is running (exposure of " + ExposureText(state) + ") and sends nothing";
    }
    return "unknown";
}

std::string AdviceForNoFrame(const WaitState& state) {
    switch (CauseOf(state)) {
        case Cause::kLinkLost:
            return "plug the camera in and try again";
        case Cause::kNoBuffers:
            return "use --buffers 8";
        case Cause::kBuffersHeld:
            return "use more --buffers";
        case Cause::kHardware:
            return "send a trigger, or set HW_TRIGGER_ACTIVE=0";
        case Cause::kSequenceOver:
            return "ask for fewer frames, or set FRAME_COUNT=0";
        case Cause::kNotStarted:
            return "the camera refused to run; look at 'zelcam info'";
        case Cause::kExposing:
            return "wait longer with --timeout";
        case Cause::kSoftware:
        case Cause::kSilent:
            return "check the cable, or wait longer with --timeout";
    }
    return "";
}

}  // namespace zelcam
