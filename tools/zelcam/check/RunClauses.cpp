// Starting and stopping, from outside, from inside the transport's own calls and from several threads.
#include <fmt/format.h>

#include <atomic>
#include <chrono>

#include "tools/zelcam/check/CameraSession.h"
#include "tools/zelcam/check/SteadyUse.h"

namespace zelcam::check {

namespace {

std::string CheckStart(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.Launch();
    const HostCamera::Seen seen = session.host.Snapshot();
    Require(seen.starts == 1 && seen.trigger_starts == 0,
            fmt::format("{} calls of StartCommon, {} of StartTriggerCommon", seen.starts, seen.trigger_starts));
    return "code 0, one call";
}

std::string CheckStartCode(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.host.Forget();
    for (const int code : {14, 3}) {
        session.host.m_StartCode = code;
        const int answer = session.transport.Start();
        Require(answer == code, fmt::format("{} instead of {}", answer, code));
        const int trigger = session.transport.StartTrigger();
        Require(trigger == code, fmt::format("StartTrigger: {} instead of {}", trigger, code));
    }
    session.host.Set(CAMERA_STATE, 2);
    session.RequireSilence("after a refused start");
    Require(session.host.Snapshot().free_requests == 0, "a record was asked for after a refused start");
    session.host.Set(CAMERA_STATE, 0);
    session.host.m_StartCode = 0;
    session.Launch();
    session.WaitForFrames(1);
    return "14 and 3, no frame; then it starts";
}

std::string CheckStop(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.Launch();
    session.WaitForFrames(2);
    session.StopAndLook();
    session.RequireSilence("after Stop");
    return "code 0, silence";
}

std::string CheckStopTwice(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.Launch();
    session.WaitForFrames(1);
    for (int i = 0; i < 3; ++i) {
        const int code = session.transport.Stop();
        Require(code == 0, fmt::format("Stop {} answered code {}", i + 1, code));
    }
    session.Launch();
    session.WaitForFrames(1);
    return "three times, then it starts";
}

// Stop where `hook` is called; frames end, and come again after another start.
std::string StopInside(CheckedPlugin& plugin, int camera, bool in_event) {
    std::atomic<int> code{-1};
    CameraSession session(plugin, camera);
    session.Open();
    const auto stop = [&] {
        if (code < 0) code = session.transport.Stop();
    };
    if (in_event) {
        session.host.m_OnEvent = [&](unsigned id) {
            if (id == CAMERA_EVENT_IMAGE_READY) stop();
        };
    } else {
        session.host.m_OnImage = stop;
    }
    session.Launch();
    session.WaitForFrames(1);
    session.RequireSilence("after Stop inside a call");
    Require(code == 0, fmt::format("it answered code {}", code.load()));
    const std::size_t frames = session.host.Snapshot().image_numbers.size();
    Require(frames == 1, FramesText(frames) + " came");
    session.transport.Stop();
    session.Launch();
    session.WaitForFrames(1);
    return "code 0, one frame, then it starts";
}

std::string CheckStopInImage(CheckedPlugin& plugin, int camera) { return StopInside(plugin, camera, false); }
std::string CheckStopInEvent(CheckedPlugin& plugin, int camera) { return StopInside(plugin, camera, true); }

std::string CheckStartInside(CheckedPlugin& plugin, int camera) {
    std::atomic<int> code{-1};
    CameraSession session(plugin, camera);
    session.Open();
    session.host.m_OnImage = [&] {
        if (code < 0) code = session.transport.Start();
    };
    session.Launch();
    session.WaitForFrames(1);
    session.host.Set(CAMERA_STATE, 0);
    session.transport.Stop();
    session.RequireSilence("after Stop");
    Require(code >= 0, "it does not come back");
    session.host.m_OnImage = nullptr;
    session.Launch();
    session.WaitForFrames(1);
    return fmt::format("it answers code {}", code.load());
}

// Frames end although an exchange is under way on this thread.
std::string CheckStopFromThread(CheckedPlugin& plugin, int camera) {
    std::atomic<int> code{-1};
    CameraSession session(plugin, camera);
    session.Open();
    for (int i = 0; i < 3; ++i) {
        session.Launch();
        session.WaitForFrames(1);
        code = -1;
        std::jthread stopper([&] { code = session.transport.Stop(); });
        bool answered = true;
        while (code < 0) answered &= !session.host.GetText(HW_MODEL).empty();
        stopper.join();
        Require(answered, "an exchange was not answered meanwhile");
        Require(code == 0, fmt::format("it answered code {}", code.load()));
        session.RequireSilence("after Stop");
    }
    return "three times, while exchanges go on";
}

std::string CheckExchangesInRun(CheckedPlugin& plugin, int camera) {
    constexpr int kExchanges = 100;
    CameraSession session(plugin, camera);
    session.Open();
    int width = 0;
    Require(session.host.Get(H_SIZE, width), "the width can't be read");
    session.Launch();
    for (int i = 0; i < kExchanges; ++i) {
        int now = 0;
        Require(session.host.Get(H_SIZE, now) && now == width, fmt::format("exchange {} failed", i + 1));
    }
    session.WaitForFrames(2);
    session.StopAndLook();
    return fmt::format("{} exchanges", kExchanges);
}

// A lock that the transport held meanwhile would be missed by this thread, which the transport waits for.
std::string CheckNoLock(CheckedPlugin& plugin, int camera) {
    std::atomic<int> done{0};
    CameraSession session(plugin, camera);
    session.Open();
    const auto ask = [&] {
        std::jthread([&] {
            int width = 0;
            const bool answered = session.host.Get(H_SIZE, width);
            session.transport.GetDroppedFrames();
            session.transport.GetStatusValue();
            session.transport.GetCameraObject();
            session.transport.GetInterfaceType();
            session.transport.GetLinkUtilization();
            done += answered ? 1 : 0;
        }).join();
    };
    session.host.m_OnImage = ask;
    session.host.m_OnEvent = [&](unsigned) { ask(); };
    session.Launch();
    session.WaitForFrames(3);
    session.StopAndLook();
    Require(done >= 6, fmt::format("{} of 6 exchanges inside were answered", done.load()));
    return fmt::format("{} exchanges from another thread", done.load());
}

std::string CheckCycles(CheckedPlugin& plugin, int camera) {
    SteadyUse use;
    CameraSession session(plugin, camera);
    session.Open();
    for (int i = 0; i < SteadyUse::kRounds; ++i) {
        use.Round(i);
        session.Launch();
        session.WaitForFrames(1);
        session.StopAndLook();
    }
    use.Require();
    return fmt::format("{} times", SteadyUse::kRounds);
}

// Longer than any camera should take; the SDK itself waits 5 s for an exchange.
constexpr std::pair<const char*, std::chrono::seconds> kBounds[] = {
    {"get_num_cameras", std::chrono::seconds(10)},
    {"create_camera_interface", std::chrono::seconds(10)},
    {"destroy_camera_interface", std::chrono::seconds(5)},
    {"Connect", std::chrono::seconds(15)},
    {"Disconnect", std::chrono::seconds(5)},
    {"Start", std::chrono::seconds(10)},
    {"Stop", std::chrono::seconds(5)},
    {"StartTrigger", std::chrono::seconds(10)},
    {"StopTrigger", std::chrono::seconds(5)},
    {"SetCameraCommon", std::chrono::seconds(5)}};

std::string CheckBounds(CheckedPlugin& plugin, int camera) {
    plugin.Watch().TakeTimes();
    plugin.CountCameras();
    {
        CameraSession session(plugin, camera);
        session.Open();
        session.Launch();
        session.WaitForFrames(1);
        session.StopAndLook();
        session.LaunchTriggered();
        session.transport.StopTrigger();
    }
    const auto times = plugin.Watch().TakeTimes();
    std::chrono::milliseconds longest{0};
    std::string slowest;
    for (const auto& [name, bound] : kBounds) {
        const auto found = times.find(name);
        if (found == times.end()) continue;
        const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(found->second);
        Require(took <= bound, fmt::format("{} took {} ms, {} s are its bound", name, took.count(), bound.count()));
        if (took >= longest) longest = took, slowest = name;
    }
    return fmt::format("the longest is {}: {} ms", slowest, longest.count());
}

constexpr Clause kRunClauses[] = {
    {"run", "start", "Start calls StartCommon once and answers 0", true, CheckStart},
    {"run", "start-code", "Start and StartTrigger hand on the code of a refused start, and no frame comes", true,
     CheckStartCode},
    {"run", "stop", "Stop answers 0, and nothing is called after it has returned", true, CheckStop},
    {"run", "stop-twice", "Stop may be called again", true, CheckStopTwice},
    {"run", "stop-inside-image", "Stop inside the image handler returns and ends the run", true, CheckStopInImage},
    {"run", "stop-inside-event", "Stop inside event 6 returns and ends the run", true, CheckStopInEvent},
    {"run", "start-inside-image", "Start inside the image handler returns, with whatever code", true, CheckStartInside},
    {"run", "stop-from-thread", "Stop works on another thread than exchanges", true, CheckStopFromThread},
    {"run", "exchanges-in-run", "exchanges are answered while frames flow", true, CheckExchangesInRun},
    {"run", "no-lock-held", "the transport holds no lock while it calls the host", true, CheckNoLock},
    {"run", "start-stop-cycles", "start and stop again and again take no threads and handles along", true, CheckCycles},
    {"run", "time-bounds", "every operation comes back within its bound", true, CheckBounds},
};

}  // namespace

std::span<const Clause> RunClauses() { return kRunClauses; }

}  // namespace zelcam::check
