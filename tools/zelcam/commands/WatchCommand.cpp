// zelcam watch: hot-plug and camera events as they happen.
#include <chrono>
#include <cstdio>
#include <map>

#include "tools/zelcam/camera/EventQueue.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/NumberCheck.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/Sdk.h"

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
        // The cameras and the SDK, whose threads fill the queue, end before the queue.
        EventQueue queue;
        zel::Sdk sdk;
        const std::vector<zel::CameraInfo> cameras = sdk.cameras();
        sdk.on_hot_plug([&queue](const zel::HotPlugEvent& event) { queue.Add(event); });
        CatchInterrupts();
        std::map<int, zel::Camera> open;
        if (!m_NoOpen) {
            for (const zel::CameraInfo& camera : cameras) Open(sdk, camera.number, queue, open);
        }
        if (!m_Json) Print("watching {}, Ctrl-C ends\n", Counted(cameras.size(), "camera"));
        FlushOutput();
        ReportAlways(
            [&] { Follow(queue, [&](int connected) { m_NoOpen ? void() : Open(sdk, connected, queue, open); }); },
            [&] { sdk.on_hot_plug(nullptr); });
    }

  private:
    using Clock = std::chrono::steady_clock;

    template <class Connect>
    void Follow(EventQueue& queue, Connect connect) {
        const Clock::time_point start = Clock::now();
        while (!Interrupted()) {
            const std::chrono::duration<double> passed = Clock::now() - start;
            if (m_Seconds > 0.0 && passed.count() >= m_Seconds) return;
            Json event;
            if (!queue.Next(event, std::chrono::milliseconds(50))) continue;
            PrintEvent(event);
            if (event["event"] == "connect") connect(event["camera"].get<int>());
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

    // Opens a camera so that it reports its events, unless it is open still. One that can't be opened is watched for
    // hot-plug events only.
    static void Open(zel::Sdk& sdk, int number, EventQueue& queue, std::map<int, zel::Camera>& open) {
        try {
            zel::Camera camera = sdk.open_found(number);
            camera.on_event([&queue, number](const zel::CameraEvent& event) { queue.Add(number, event); });
            open.insert_or_assign(number, std::move(camera));
        } catch (const zel::Error& error) {
            if (error.kind() != zel::ErrorKind::no_camera) return;
            std::fprintf(stderr, "zelcam: camera %d can't be opened: only its hot-plug events are shown\n", number);
        }
    }

    double m_Seconds = 0.0;
    bool m_NoOpen = false;
};

}  // namespace

std::unique_ptr<Command> MakeWatchCommand() { return std::make_unique<WatchCommand>(); }

}  // namespace zelcam
