// zelcam stream: runs a camera and measures what arrives.
#include <chrono>
#include <cstdio>

#include "include/ZelCamera.h"
#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/frames/StreamReport.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/Progress.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

class StreamCommand : public Command {
  public:
    const char* Name() const override { return "stream"; }
    const char* Help() const override { return "Run a camera and measure rate, latency and dropped frames"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        command.add_option("-s,--seconds", m_Seconds, "End after so many seconds (default: with Ctrl-C)")
            ->check(CLI::Range(0.01, 1e7));
        command.add_option("-n,--frames", m_Frames, "End after so many frames")->check(CLI::Range(1, 2000000000));
        command
            .add_option("-m,--mode", m_Mode, "every: each frame in order; newest: older waiting frames are passed over")
            ->check(CLI::IsMember({"every", "newest"}))
            ->capture_default_str();
        m_Settings.Declare(command);
        command.add_option("-f,--format", m_Settings.color.format, "With --color: 16 or 8 bits a channel, or rgba8")
            ->needs("--color")
            ->check(CLI::IsMember(kColorFormats))
            ->capture_default_str();
        DeclareJson(command);
    }

    int Run() override {
        const Session session;
        OpenCamera camera(session, m_Camera);
        m_Settings.Apply(camera.Get());
        if (m_Settings.color.color) m_Report.color = m_Settings.color.SetUp(camera.Get(), camera.Label()).ToJson();
        m_Report.mode = m_Mode;
        const CameraFacts facts = ReadFacts(camera);
        CatchInterrupts();
        std::string failure;
        try {
            Stream(camera);
        } catch (const Failure& error) {
            failure = error.what();
        }
        m_Report.interrupted = Interrupted();
        if (m_Json) {
            Json json{{"camera", ToJson(facts)}};
            json.update(m_Report.ToJson());
            PrintJson(json);
        } else {
            std::fputs(m_Report.Text().c_str(), stdout);
        }
        if (!failure.empty()) throw Failure(failure, "", "");
        return kExitSuccess;
    }

  private:
    using Clock = std::chrono::steady_clock;

    bool Wanted(double seconds) const {
        if (Interrupted() || (m_Frames > 0 && m_Report.frames >= static_cast<std::uint64_t>(m_Frames))) return false;
        return m_Seconds <= 0.0 || seconds < m_Seconds;
    }

    void Stream(OpenCamera& camera) {
        Acquisition acquisition(camera, m_Mode == "newest" ? FrameMode::kNewest : FrameMode::kEvery, StartMode::kFree,
                                m_Settings);
        Progress progress("streaming", !m_Json);
        const Clock::time_point start = Clock::now();
        std::exception_ptr failure;
        try {
            for (double passed = 0.0; Wanted(passed);) {
                const Frame frame = acquisition.Next();
                passed = std::chrono::duration<double>(Clock::now() - start).count();
                if (!frame) break;
                m_Report.Add(*frame.Get(), frame.HandOverUs());
                if (m_Report.frames == 1) m_Report.first_frame_s = passed;
                m_Report.seconds = passed - m_Report.first_frame_s;
                progress.Show(m_Report.frames, static_cast<std::uint64_t>(m_Frames), m_Report.RateText());
            }
        } catch (const Failure&) {
            failure = std::current_exception();
        }
        m_Report.Finish(acquisition.Waiter().LinkLost() ? 0 : acquisition.LinkDrops(), acquisition.Waiter().Skipped());
        if (failure) std::rethrow_exception(failure);
    }

    double m_Seconds = 0.0;
    int m_Frames = 0;
    std::string m_Mode = "every";
    AcquisitionSettings m_Settings;
    StreamReport m_Report;
};

}  // namespace

std::unique_ptr<Command> MakeStreamCommand() { return std::make_unique<StreamCommand>(); }

}  // namespace zelcam
