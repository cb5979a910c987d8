// zelcam trigger: takes frames that wait for a trigger.
#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/frames/SaveQueue.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/FrameCounter.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

// How long the user's wish to end may go unnoticed between two triggers.
constexpr std::chrono::milliseconds kInterruptCheck{50};

class TriggerCommand : public Command {
  public:
    const char* Name() const override { return "trigger"; }
    const char* Help() const override { return "Take frames by software trigger (or wait for the trigger input)"; }
    const char* Example() const override { return "trigger --frames 5 --interval 200 --save --out pictures"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        DeclareFrames(command, m_Frames);
        command.add_option("--interval", m_IntervalMs, "Milliseconds from one trigger to the next")
            ->check(CLI::Range(0, 3600000))
            ->capture_default_str();
        command.add_flag("--hardware", m_Hardware, "Wait for the camera's trigger input instead of triggering");
        command.add_flag("--save", m_Save, "Save the frames as 'capture' does");
        m_Settings.Declare(command);
        m_Settings.DeclareProcessing(command);
        m_Pictures.Declare(command);
        DeclareJson(command);
    }

    void Run(Json& result) override {
        m_Pictures.SettleFormat(m_Settings.color.color);
        zel::Sdk sdk;
        zel::Camera camera = sdk.open(m_Camera);
        const std::vector<zel::SetResult> settings = m_Settings.Apply(camera);
        const CameraFacts facts = ReadFacts(camera);
        const PictureSettings pictures = PicturesOf(camera, m_Settings, m_Pictures);
        std::optional<PictureSaver> saver;
        if (m_Save) saver.emplace(m_Pictures, m_Frames, facts, pictures);
        if (m_Json) result["camera"] = ToJson(facts);
        CatchInterrupts();
        Tell(settings, result);
        if (m_Json) result["frames"] = Json::array();
        if (saver && !m_Json) Print("{}\n", saver->PlanText());
        FlushOutput();
        Take(camera, saver ? &*saver : nullptr, result);
        FailIfInterrupted(Counted(m_Taken, "frame") + " taken");
    }

  private:
    using Clock = std::chrono::steady_clock;

    void Take(zel::Camera& camera, PictureSaver* saver, Json& result) {
        Acquisition acquisition(camera, m_Settings, m_Hardware ? zel::Trigger::hardware : zel::Trigger::software);
        std::optional<SaveQueue> queue;
        if (saver) queue.emplace(*saver, acquisition.Buffers(), [&] { acquisition.End(); });
        // What was taken is saved, whatever ended the taking.
        ReportAlways([&] { TakeFrames(camera, acquisition, queue ? &*queue : nullptr, result); },
                     [&] {
                         const std::uint64_t lost = camera.link_lost() ? 0 : camera.link_drops();
                         const zel::Drops drops = m_Counter.count(std::min(lost, m_Counter.missing()));
                         acquisition.Stop();
                         ReportAlways([&] { queue ? queue->Finish() : void(); }, [&] { TellDrops(drops, result); });
                     });
    }

    void TakeFrames(zel::Camera& camera, Acquisition& acquisition, SaveQueue* queue, Json& result) {
        Clock::time_point next = Clock::now();
        for (int i = 0; i < m_Frames; ++i) {
            while (Clock::now() < next && !Interrupted()) {
                std::this_thread::sleep_until(std::min(next, Clock::now() + kInterruptCheck));
            }
            if (Interrupted() || (queue && !queue->WaitForRoom())) return;
            next += std::chrono::milliseconds(m_IntervalMs);
            const Clock::time_point triggered = Clock::now();
            if (!m_Hardware) camera.trigger();
            zel::Frame frame = acquisition.Next();
            if (!frame) return;
            const std::chrono::duration<double, std::milli> took = Clock::now() - triggered;
            m_Counter.frame(frame.number(), frame.info().arrival_ms);
            Json json{{"frame_number", frame.number()}, {"width", frame.width()}, {"height", frame.height()}};
            if (!m_Hardware) json["trigger_to_frame_ms"] = took.count();
            if (!queue) {
                Report(json, result);
                continue;
            }
            queue->Add(std::move(frame), [this, json = std::move(json), &result](Json description) mutable {
                json["picture"] = std::move(description);
                Report(json, result);
            });
        }
    }

    void Report(const Json& json, Json& result) {
        ++m_Taken;
        if (m_Json) return result["frames"].push_back(json);
        Print("frame {}: {} x {}", json["frame_number"].get<unsigned>(), json["width"].get<unsigned>(),
              json["height"].get<unsigned>());
        if (!m_Hardware) Print(", {:.2f} ms after its trigger", json["trigger_to_frame_ms"].get<double>());
        if (json.contains("picture")) Print(", {}", json["picture"]["path"].get<std::string>());
        Print("\n");
        FlushOutput();
    }

    // A trigger input does not wait for the disk.
    void TellDrops(const zel::Drops& drops, Json& result) const {
        if (m_Json) {
            result["dropped"] = {{"link", drops.link}, {"no_free_buffer", drops.no_buffer}};
        } else if (drops.link + drops.no_buffer > 0) {
            Print("dropped: {} on the link, {} without a free buffer\n", drops.link, drops.no_buffer);
            FlushOutput();
        }
    }

    int m_Frames = 1;
    int m_IntervalMs = 0;
    bool m_Hardware = false;
    bool m_Save = false;
    AcquisitionSettings m_Settings;
    PictureOptions m_Pictures;
    zel::FrameCounter m_Counter;
    unsigned m_Taken = 0;
};

}  // namespace

std::unique_ptr<Command> MakeTriggerCommand() { return std::make_unique<TriggerCommand>(); }

}  // namespace zelcam
