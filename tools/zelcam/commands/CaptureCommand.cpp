// zelcam capture: takes frames and saves them.
#include <algorithm>
#include <cstdio>

#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/frames/Statistics.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/Progress.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

// A run that fits the pool loses nothing however slow the disk is; more buffers than this are for the user to ask for.
constexpr int kPoolByDefault = 8;
constexpr int kLargestPoolByDefault = 16;

// Frames per second from the arrival of the first and the last frame; 0 when they arrived in the same millisecond.
double ArrivalRate(std::uint64_t intervals, std::uint32_t first_ms, std::uint32_t last_ms) {
    const std::uint32_t span = last_ms - first_ms;
    return span == 0 ? 0.0 : 1000.0 * static_cast<double>(intervals) / span;
}

class CaptureCommand : public Command {
  public:
    const char* Name() const override { return "capture"; }
    const char* Help() const override { return "Take frames and save them, each with a .json that describes it"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        DeclareFrames(command, m_Frames);
        m_Settings.Declare(command);
        m_Pictures.Declare(command);
        DeclareJson(command);
    }

    int Run() override {
        m_Pictures.SettleFormat(m_Settings.color.color);
        const Session session;
        OpenCamera camera(session, m_Camera);
        if (m_Settings.buffers.empty() && m_Frames > kPoolByDefault) {
            m_Settings.buffers = std::to_string(std::min(m_Frames, kLargestPoolByDefault));
        }
        const std::vector<WriteOutcome> settings = m_Settings.Apply(camera.Get());
        const CameraFacts facts = ReadFacts(camera);
        PictureSaver saver(m_Pictures, facts, PicturesOf(camera, m_Settings, m_Pictures));
        CatchInterrupts();
        Take(camera, saver);
        Report(facts, settings);
        if (Interrupted()) throw Failure("interrupted", std::to_string(m_Taken.size()) + " frames are saved", "");
        return kExitSuccess;
    }

  private:
    void Take(OpenCamera& camera, PictureSaver& saver) {
        DropCounter counter;
        Acquisition acquisition(camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
        Progress progress("saving");
        // The first frames of an average are of fewer frames than the user asked for.
        for (int skipped = 0; skipped < m_Settings.processing.FramesBefore(); ++skipped) {
            if (!acquisition.Next()) break;
        }
        while (m_Taken.size() < static_cast<std::size_t>(m_Frames)) {
            Frame frame = acquisition.Next();
            if (!frame) break;
            counter.Frame(frame->image_number);
            if (m_Taken.empty()) m_FirstArrival = frame->arrival_time_ms;
            m_LastArrival = frame->arrival_time_ms;
            m_Taken.push_back(saver.Save(frame.Get()));
            progress.Show(m_Taken.size(), static_cast<std::uint64_t>(m_Frames));
        }
        m_Drops = counter.Count(std::min(acquisition.LinkDrops(), counter.Missing()));
        const std::uint64_t intervals = m_Taken.empty() ? 0 : m_Taken.size() - 1 + counter.Missing();
        m_Rate = ArrivalRate(intervals, m_FirstArrival, m_LastArrival);
    }

    void Report(const CameraFacts& facts, const std::vector<WriteOutcome>& settings) const {
        if (m_Json) {
            Json json;
            json["camera"] = ToJson(facts);
            json["settings"] = Json::array();
            for (const WriteOutcome& outcome : settings) json["settings"].push_back(outcome.ToJson());
            json["frames"] = m_Taken.size();
            json["frames_per_second"] = m_Rate > 0.0 ? Json(m_Rate) : Json();
            json["dropped"] = {{"link", m_Drops.link}, {"no_free_buffer", m_Drops.no_buffer}};
            json["pictures"] = m_Taken;
            PrintJson(json);
            return;
        }
        for (const WriteOutcome& outcome : settings) std::printf("%s\n", outcome.Text().c_str());
        for (const Json& picture : m_Taken) std::printf("%s\n", picture["path"].get<std::string>().c_str());
        std::printf("%zu frames, %s frames/s, dropped: %llu on the link, %llu without a free buffer\n", m_Taken.size(),
                    m_Rate > 0.0 ? FixedText(m_Rate, 1).c_str() : "?", static_cast<unsigned long long>(m_Drops.link),
                    static_cast<unsigned long long>(m_Drops.no_buffer));
    }

    int m_Frames = 1;
    AcquisitionSettings m_Settings;
    PictureOptions m_Pictures;
    std::vector<Json> m_Taken;
    std::uint32_t m_FirstArrival = 0;
    std::uint32_t m_LastArrival = 0;
    double m_Rate = 0.0;
    Drops m_Drops;
};

}  // namespace

std::unique_ptr<Command> MakeCaptureCommand() { return std::make_unique<CaptureCommand>(); }

}  // namespace zelcam
