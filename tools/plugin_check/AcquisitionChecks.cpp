#include <atomic>
#include <chrono>
#include <thread>

#include "tools/plugin_check/Checks.h"

namespace zel::plugin_check {

namespace {

constexpr int kFrameTime = 5000;  // milliseconds that the frames of a check may take

std::string Count(std::size_t number) { return std::to_string(number) + " frames"; }

void Forget(HostCamera& host) {
    const std::lock_guard lock(host.Lock());
    host.SeenLocked() = {};
}

bool Run(ICameraInterface& transport, HostCamera& host) {
    return transport.Start() == 0 && host.Set(CAMERA_STATE, 2) == 0;
}

// Nothing may arrive after Stop has returned.
void CheckSilence(HostCamera& host, const std::string& name, Report& report) {
    const auto before = host.Snapshot().image_numbers.size();
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    const auto after = host.Snapshot().image_numbers.size();
    report.Check(before == after, name, std::to_string(after - before) + " frames afterwards");
}

void CheckRefusedStart(ICameraInterface& transport, HostCamera& host, Report& report) {
    Forget(host);
    host.m_StartCode = 14;
    const int code = transport.Start();
    report.Check(code == 14, "Start passes the code of StartCommon on", "code " + std::to_string(code));
    host.Set(CAMERA_STATE, 2);
    CheckSilence(host, "no frame after a refused start", report);
    report.Check(host.Snapshot().free_requests == 0, "no record asked for after a refused start", "none");
    host.m_StartCode = 0;
    transport.Stop();
}

void CheckOrder(const HostCamera::Seen& seen, Report& report) {
    static constexpr const char* kOrder[] = {"free", "info", "pending", "event", "image"};
    std::size_t good = 0;
    bool in_order = true;
    for (std::size_t i = 0; i + 5 <= seen.calls.size() && in_order; i += 5) {
        for (std::size_t n = 0; n < 5; ++n) in_order &= seen.calls[i + n] == kOrder[n];
        good += in_order ? 1 : 0;
    }
    report.Check(in_order && good > 0, "order of a frame",
                 "record, settings, pending, event 6, handler; " + Count(good));
}

void CheckFrames(ICameraInterface& transport, HostCamera& host, Report& report) {
    Forget(host);
    const bool running = Run(transport, host);
    report.Check(running, "Start", running ? "runs" : "failed");
    const bool came = host.WaitForFrames(5, kFrameTime);
    const int stop = transport.Stop();
    const HostCamera::Seen seen = host.Snapshot();
    report.Check(came, "frames come", Count(seen.image_numbers.size()));
    report.Check(stop == 0, "Stop", "code " + std::to_string(stop));
    report.Check(seen.starts == 1 && seen.trigger_starts == 0, "Start calls StartCommon once",
                 std::to_string(seen.starts) + " calls");
    CheckSilence(host, "Stop means stopped", report);
    CheckOrder(seen, report);
    report.Check(seen.frame_thread != std::this_thread::get_id(), "frames come on another thread", "own thread");
    bool ascending = true;
    for (std::size_t i = 1; i < seen.image_numbers.size(); ++i) {
        ascending &= seen.image_numbers[i] > seen.image_numbers[i - 1];
    }
    report.Check(ascending, "image numbers ascend", Count(seen.image_numbers.size()));
    report.Check(!seen.guard_damaged, "a frame stays within its record", "the bytes behind it are whole");
}

void CheckSmallRecord(ICameraInterface& transport, HostCamera& host, Report& report) {
    Forget(host);
    host.m_BufferSize = 1000;
    const bool came = Run(transport, host) && host.WaitForFrames(2, kFrameTime);
    transport.Stop();
    host.m_BufferSize = 0;
    report.Check(!came || !host.Snapshot().guard_damaged, "a frame stays within a small record", "1000 bytes");
}

void CheckDrops(ICameraInterface& transport, HostCamera& host, Report& report) {
    Forget(host);
    host.m_Recycle = false;
    const bool running = Run(transport, host);
    host.WaitForFrames(static_cast<std::size_t>(host.m_Buffers), kFrameTime);
    for (int i = 0; i < 100 && host.Snapshot().free_requests <= host.m_Buffers; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    transport.Stop();
    host.m_Recycle = true;
    report.Check(running && host.Snapshot().image_numbers.size() == static_cast<std::size_t>(host.m_Buffers),
                 "no record, no frame", Count(host.Snapshot().image_numbers.size()));
    report.Check(host.Snapshot().free_requests > host.m_Buffers, "each frame asks for a record again",
                 Count(static_cast<std::size_t>(host.Snapshot().free_requests)));
    report.Check(transport.GetDroppedFrames() == 0, "a frame without a record is not lost on the link",
                 std::to_string(transport.GetDroppedFrames()));
}

void CheckStopInside(ICameraInterface& transport, HostCamera& host, Report& report) {
    Forget(host);
    std::atomic<int> code{-1};
    host.m_OnImage = [&] {
        if (code < 0) code = transport.Stop();
    };
    const bool came = Run(transport, host) && host.WaitForFrames(1, kFrameTime);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    report.Check(came && code == 0 && host.Snapshot().image_numbers.size() == 1, "Stop inside the image handler",
                 "code " + std::to_string(code) + ", " + Count(host.Snapshot().image_numbers.size()));
    host.m_OnImage = nullptr;
    Forget(host);
    report.Check(Run(transport, host) && host.WaitForFrames(1, kFrameTime), "Start after a Stop inside",
                 "frames again");
    transport.Stop();
}

void CheckTrigger(ICameraInterface& transport, HostCamera& host, Report& report) {
    Forget(host);
    const int code = transport.StartTrigger();
    report.Check(code == 0 && host.Snapshot().trigger_starts == 1, "StartTrigger calls StartTriggerCommon",
                 "code " + std::to_string(code));
    std::string reply;
    for (const char* command : {"cam.calc", "cam.sw trig on", "cam.arm"}) host.Text(command, reply);
    CheckSilence(host, "no frame without a trigger", report);
    host.Set(SW_TRIG, 1);
    report.Check(host.WaitForFrames(1, kFrameTime), "a trigger brings a frame", "software");
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    report.Check(host.Snapshot().image_numbers.size() == 1, "a trigger brings one frame",
                 Count(host.Snapshot().image_numbers.size()));
    report.Check(transport.StopTrigger(), "StopTrigger", "true");
}

void CheckCycles(ICameraInterface& transport, HostCamera& host, Report& report) {
    int good = 0;
    for (int i = 0; i < 20; ++i) {
        Forget(host);
        good += Run(transport, host) && host.WaitForFrames(1, kFrameTime) && transport.Stop() == 0 ? 1 : 0;
    }
    report.Check(good == 20, "start and stop again and again", std::to_string(good) + " of 20");
}

}  // namespace

void CheckAcquisition(ICameraInterface& transport, HostCamera& host, Report& report) {
    host.RegisterHandlers();
    CheckRefusedStart(transport, host, report);
    CheckFrames(transport, host, report);
    CheckSmallRecord(transport, host, report);
    CheckDrops(transport, host, report);
    CheckStopInside(transport, host, report);
    CheckTrigger(transport, host, report);
    CheckCycles(transport, host, report);
    const int code = transport.Disconnect();
    report.Check(code == 0, "Disconnect", "code " + std::to_string(code));
    report.Check(transport.Connect() == 0 && transport.Disconnect() == 0, "Connect again", "and Disconnect");
    transport.SetImageHandler(nullptr, nullptr);
    transport.SetEventHandler(nullptr, nullptr);
}

}  // namespace zel::plugin_check
