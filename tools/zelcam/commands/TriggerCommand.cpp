// zelcam trigger: takes frames that wait for a trigger.
#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>

#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/Progress.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

class TriggerCommand : public Command {
  public:
    const char* Name() const override { return "trigger"; }
    const char* Help() const override { return "Take frames by software trigger (or wait for the trigger input)"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        DeclareFrames(command, m_Frames);
        command.add_option("--interval", m_IntervalMs, "Milliseconds from one trigger to the next")
            ->check(CLI::Range(0, 3600000))
            ->capture_default_str();
        command.add_flag("--hardware", m_Hardware, "Wait for the camera's trigger input instead of triggering");
        command.add_flag("--save", m_Save, "Save the frames as 'capture' does");
        m_Settings.Declare(command);
        m_Pictures.Declare(command);
        DeclareJson(command);
    }

    int Run() override {
        m_Pictures.SettleFormat(m_Settings.color.color);
        const Session session;
        OpenCamera camera(session, m_Camera);
        m_Settings.assignments.push_back(m_Hardware ? "HW_TRIGGER_ACTIVE=1" : "HW_TRIGGER_ACTIVE=0");
        m_Settings.Apply(camera.Get());
        const CameraFacts facts = ReadFacts(camera);
        const PictureSettings pictures = PicturesOf(camera, m_Settings, m_Pictures);
        std::optional<PictureSaver> saver;
        if (m_Save) {
            saver.emplace(m_Pictures, facts, pictures);
        }
        CatchInterrupts();
        Take(camera, saver ? &*saver : nullptr);
        if (m_Json) PrintJson(Json{{"camera", ToJson(facts)}, {"frames", m_Taken}});
        if (Interrupted()) throw Failure("interrupted", std::to_string(m_Taken.size()) + " frames were taken", "");
        return kExitSuccess;
    }

  private:
    using Clock = std::chrono::steady_clock;

    void Take(OpenCamera& camera, PictureSaver* saver) {
        Acquisition acquisition(camera, FrameMode::kEvery, StartMode::kTriggered, m_Settings);
        Clock::time_point next = Clock::now();
        for (int i = 0; i < m_Frames; ++i) {
            std::this_thread::sleep_until(next);
            next += std::chrono::milliseconds(m_IntervalMs);
            const Clock::time_point triggered = Clock::now();
            if (!m_Hardware && !camera->SoftwareTrigger()) {
                throw Failure(camera.Label() + " refused the software trigger", "the write of the trigger failed",
                              "check cable and power");
            }
            Frame frame = acquisition.Next();
            if (!frame) return;
            const std::chrono::duration<double, std::milli> took = Clock::now() - triggered;
            Report(frame, took.count(), saver);
        }
    }

    void Report(Frame& frame, double trigger_to_frame_ms, PictureSaver* saver) {
        Json json{{"frame_number", frame->image_number}, {"width", frame->w}, {"height", frame->h}};
        if (!m_Hardware) json["trigger_to_frame_ms"] = trigger_to_frame_ms;
        if (saver) json["picture"] = saver->Save(frame.Get());
        m_Taken.push_back(json);
        if (m_Json) return;
        std::printf("frame %u: %u x %u", frame->image_number, frame->w, frame->h);
        if (!m_Hardware) std::printf(", %.2f ms after its trigger", trigger_to_frame_ms);
        if (saver) std::printf(", %s", json["picture"]["path"].get<std::string>().c_str());
        std::printf("\n");
        std::fflush(stdout);
    }

    int m_Frames = 1;
    int m_IntervalMs = 0;
    bool m_Hardware = false;
    bool m_Save = false;
    AcquisitionSettings m_Settings;
    PictureOptions m_Pictures;
    std::vector<Json> m_Taken;
};

}  // namespace

std::unique_ptr<Command> MakeTriggerCommand() { return std::make_unique<TriggerCommand>(); }

}  // namespace zelcam
