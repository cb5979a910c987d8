// zelcam watch: hot-plug and camera events as they happen.
#include <chrono>
#include <cstdio>
#include <map>

#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "tools/zelcam/camera/EventQueue.h"
#include "tools/zelcam/camera/Session.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/NumberCheck.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

class WatchCommand : public Command {
  public:
    const char* Name() const override { return "watch"; }
    const char* Help() const override { return "Print hot-plug and camera events as they happen, until Ctrl-C"; }
    const char* Example() const override { return "watch --seconds 60"; }

    void Declare(CLI::App& command) override {
        command.add_option("-s,--seconds", m_Seconds, "End after so many seconds")->check(SecondsBetween(0.01, 1e7));
        command.add_flag("--no-open", m_NoOpen, "Open no camera: hot-plug events only");
        command.add_flag("--json", m_Json, "Print one line of JSON for each event");
    }

    void Run(Json&) override {
        // The session, whose callbacks fill the queue, ends before the queue.
        EventQueue queue;
        const Session session;
        if (zel_set_camera_connect_callback(&EventQueue::CameraConnected, &queue) == 0) {
            throw Failure("hot-plug events can't be watched", "the SDK is not open", "");
        }
        CatchInterrupts();
        if (!m_NoOpen) {
            for (const CameraEntry& camera : session.Cameras()) Open(session, queue, camera.number);
        }
        if (!m_Json) Print("watching {}, Ctrl-C ends\n", Counted(session.Cameras().size(), "camera"));
        FlushOutput();
        ReportAlways([&] { Follow(session, queue); },
                     [&] {
                         zel_set_camera_connect_callback(nullptr, nullptr);
                         for (auto& [number, source] : m_Open) Close(session, number);
                     });
    }

  private:
    using Clock = std::chrono::steady_clock;

    void Follow(const Session& session, EventQueue& queue) {
        const Clock::time_point start = Clock::now();
        while (!Interrupted()) {
            const std::chrono::duration<double> passed = Clock::now() - start;
            if (m_Seconds > 0.0 && passed.count() >= m_Seconds) return;
            Json event;
            if (!queue.Next(event, std::chrono::milliseconds(50))) continue;
            PrintEvent(event);
            if (!m_NoOpen && event["event"] == "connect") Open(session, queue, event["camera"].get<int>());
        }
    }

    void PrintEvent(const Json& event) const {
        if (m_Json) return PrintJson(event, -1);
        Print("{}  {}", event["time_utc"].get<std::string>(), event["event"].get<std::string>());
        for (const auto& [key, value] : event.items()) {
            if (key == "time_utc" || key == "event") continue;
            Print("  {} {}", key, value.is_string() ? value.get<std::string>() : JsonText(value, -1));
        }
        Print("\n");
        FlushOutput();
    }

    // Opens a camera so that it reports its events. One that can't be opened is watched for hot-plug events only.
    void Open(const Session& session, EventQueue& queue, int number) {
        ZelCamera* const camera = session.Sdk()->GetCamera(number);
        if (!camera || !camera->Open()) {
            std::fprintf(stderr, "zelcam: camera %d can't be opened: only its hot-plug events are shown\n", number);
            return;
        }
        EventSource& source = m_Open[number];
        source = {&queue, number};
        camera->SetCameraControlCallback(&EventQueue::CameraEvent, &source);
        camera->SetCameraControlCallbackEx(&EventQueue::CameraEventEx, &source);
    }

    static void Close(const Session& session, int number) {
        ZelCamera* const camera = session.Sdk()->GetCamera(number);
        if (!camera) return;
        camera->SetCameraControlCallbackEx(nullptr, nullptr);
        camera->SetCameraControlCallback(nullptr, nullptr);
        camera->Close();
    }

    double m_Seconds = 0.0;
    bool m_NoOpen = false;
    std::map<int, EventSource> m_Open;
};

}  // namespace

std::unique_ptr<Command> MakeWatchCommand() { return std::make_unique<WatchCommand>(); }

}  // namespace zelcam
