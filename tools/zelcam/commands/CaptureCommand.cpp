// zelcam capture: takes frames and saves them.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/frames/SaveQueue.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/Progress.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/FrameCounter.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

// A run that fits the pool loses nothing however slow the disk is; more buffers than this are for the user to ask for.
constexpr int kPoolByDefault = 8;
constexpr int kLargestPoolByDefault = 16;

class CaptureCommand : public Command {
  public:
    const char* Name() const override { return "capture"; }
    const char* Help() const override { return "Take frames and save them, each with a .json that describes it"; }
    const char* Example() const override { return "capture --frames 10 --exposure 20000 --out pictures"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        DeclareFrames(command, m_Frames);
        m_Settings.Declare(command);
        m_Settings.DeclareProcessing(command);
        m_Pictures.Declare(command);
        command.add_flag("--allow-loss", m_AllowLoss, "No failure when frames between the saved ones were lost");
        DeclareJson(command);
    }

    void Run(Json& result) override {
        m_Pictures.SettleFormat(m_Settings.color.color);
        zel::Sdk sdk;
        zel::Camera camera = sdk.open(m_Camera);
        const int frames = m_Frames + m_Settings.processing.FramesBefore();
        if (m_Settings.buffers.empty() && frames > kPoolByDefault) {
            m_Settings.buffers = std::to_string(std::min(frames, kLargestPoolByDefault));
        }
        const std::vector<zel::SetResult> settings = m_Settings.Apply(camera);
        const CameraFacts facts = ReadFacts(camera);
        PictureSaver saver(m_Pictures, m_Frames, facts, PicturesOf(camera, m_Settings, m_Pictures));
        if (m_Json) result["camera"] = ToJson(facts);
        CatchInterrupts();
        Tell(settings, result);
        if (!m_Json) Print("{}\n", saver.PlanText());
        FlushOutput();
        ReportAlways([&] { Take(camera, saver); }, [&] { Report(result); });
        RefuseLoss(camera);
    }

  private:
    using Clock = std::chrono::steady_clock;

    void Take(zel::Camera& camera, PictureSaver& saver) {
        Acquisition acquisition(camera, m_Settings);
        Progress progress("saving");
        SaveQueue queue(saver, acquisition.Buffers(), [&] { acquisition.End(); });
        // What was taken is saved, whatever ended the taking.
        ReportAlways([&] { TakeFrames(camera, acquisition, queue, progress); }, [&] { queue.Finish(); });
        FailIfInterrupted(Counted(m_Taken.size(), "frame") + " saved");
    }

    void TakeFrames(zel::Camera& camera, Acquisition& acquisition, SaveQueue& queue, Progress& progress) {
        ReportAlways([&] { FillQueue(acquisition, queue, progress); },
                     [&] {
                         const std::uint64_t lost = camera.link_lost() ? 0 : camera.link_drops();
                         m_Drops = m_Counter.count(std::min(lost, m_Counter.missing()));
                         acquisition.Stop();
                     });
    }

    void FillQueue(Acquisition& acquisition, SaveQueue& queue, Progress& progress) {
        // The first frames of an average are of fewer frames than the user asked for.
        for (int skipped = 0; skipped < m_Settings.processing.FramesBefore(); ++skipped) {
            if (!acquisition.Next()) return;
        }
        for (int taken = 0; taken < m_Frames && queue.WaitForRoom(); ++taken) {
            zel::Frame frame = acquisition.Next();
            if (!frame) return;
            m_Counter.frame(frame.number(), frame.info().arrival_ms);
            if (taken == 0) m_FirstTaken = Clock::now();
            queue.Add(std::move(frame), [this, &progress](Json description) {
                m_Taken.push_back(std::move(description));
                m_Seconds = std::chrono::duration<double>(Clock::now() - m_FirstTaken).count();
                progress.Show(m_Taken.size(), static_cast<std::uint64_t>(m_Frames));
            });
        }
    }

    // From the first frame in hand to the last picture on the disk, so that several that end at once are no rate.
    double SavedRate() const { return m_Seconds > 0.0 ? static_cast<double>(m_Taken.size() - 1) / m_Seconds : 0.0; }

    void Report(Json& result) const {
        const double camera_rate = m_Counter.camera_rate();
        if (m_Json) {
            const auto known = [](double rate) { return rate > 0.0 ? Json(rate) : Json(); };
            result["frames"] = m_Taken.size();
            result["saved_frames_per_second"] = known(SavedRate());
            result["camera_frames_per_second"] = known(camera_rate);
            result["dropped"] = {{"link", m_Drops.link}, {"no_free_buffer", m_Drops.no_buffer}};
            result["pictures"] = m_Taken;
            return;
        }
        for (const Json& picture : m_Taken) Print("{}\n", picture["path"].get<std::string>());
        Print("{} saved", Counted(m_Taken.size(), "frame"));
        if (m_Taken.size() > 1) Print(", {:.1f} frames/s", SavedRate());
        if (camera_rate > 0.0) Print(" (camera: {:.1f} frames/s)", camera_rate);
        Print("; dropped: {} on the link, {} without a free buffer\n", m_Drops.link, m_Drops.no_buffer);
        FlushOutput();
    }

    void RefuseLoss(const zel::Camera& camera) const {
        if (m_AllowLoss || m_Drops.link + m_Drops.no_buffer == 0) return;
        throw Failure(Counted(m_Drops.link + m_Drops.no_buffer, "frame") + " of " + camera.label() +
                          " went missing between those saved",
                      fmt::format("{} on the link, {} without a free buffer", m_Drops.link, m_Drops.no_buffer),
                      AdviceForLoss() + ", or accept it with --allow-loss", kFramesLost);
    }

    // More buffers do not help a link that loses frames.
    std::string AdviceForLoss() const {
        const char* const buffers = "use more --buffers, a longer --exposure or a faster disk";
        if (m_Drops.link == 0) return buffers;
        const std::string link = "check cable and receive buffers ('zelcam doctor') or use a longer --exposure";
        return m_Drops.no_buffer == 0 ? link : link + "; and more --buffers or a faster disk";
    }

    int m_Frames = 1;
    AcquisitionSettings m_Settings;
    PictureOptions m_Pictures;
    std::vector<Json> m_Taken;
    zel::FrameCounter m_Counter;
    Clock::time_point m_FirstTaken;
    double m_Seconds = 0.0;  // from then to the last picture
    zel::Drops m_Drops;
    bool m_AllowLoss = false;
};

}  // namespace

std::unique_ptr<Command> MakeCaptureCommand() { return std::make_unique<CaptureCommand>(); }

}  // namespace zelcam
