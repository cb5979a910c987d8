// Acquisitions in which frames wait for triggers.
#include <fmt/format.h>

#include "tools/zelcam/check/CameraSession.h"

namespace zelcam::check {

namespace {

std::string CheckTriggerStart(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.LaunchTriggered();
    const HostCamera::Seen seen = session.host.Snapshot();
    Require(seen.trigger_starts == 1 && seen.starts == 0,
            fmt::format("{} calls of StartTriggerCommon, {} of StartCommon", seen.trigger_starts, seen.starts));
    return "code 0, one call";
}

std::string CheckTriggerWaits(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.LaunchTriggered();
    session.RequireSilence("without a trigger");
    return "silence";
}

std::string CheckTriggerBrings(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.LaunchTriggered();
    for (std::size_t i = 1; i <= 3; ++i) {
        const int exception = session.host.Set(SW_TRIG, 1);
        Require(exception == 0, fmt::format("a trigger is refused with exception 0x{:02x}", exception));
        session.WaitForFrames(i);
        session.RequireSilence("after the frame of a trigger");
        const std::size_t frames = session.host.Snapshot().image_numbers.size();
        Require(frames == i, fmt::format("{} triggers brought {}", i, FramesText(frames)));
    }
    return "three times";
}

std::string CheckTriggerStop(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.LaunchTriggered();
    session.host.Set(SW_TRIG, 1);
    session.WaitForFrames(1);
    Require(session.transport.StopTrigger(), "it answers false");
    session.host.Set(SW_TRIG, 1);
    session.RequireSilence("after StopTrigger");
    session.Launch();
    session.WaitForFrames(2);
    return "true, silence; then it runs without triggers";
}

constexpr Clause kTriggerClauses[] = {
    {"trigger", "trigger-start", "StartTrigger calls StartTriggerCommon once and answers 0", true, CheckTriggerStart},
    {"trigger", "trigger-waits", "no frame comes without a trigger", true, CheckTriggerWaits},
    {"trigger", "trigger-one-frame", "a trigger brings one frame", true, CheckTriggerBrings},
    {"trigger", "trigger-stop", "StopTrigger answers true, and no trigger brings a frame after it", true,
     CheckTriggerStop},
};

}  // namespace

std::span<const Clause> TriggerClauses() { return kTriggerClauses; }

}  // namespace zelcam::check
