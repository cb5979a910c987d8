// zelcam stream: runs a camera and measures what arrives.
#include <chrono>

#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/frames/StreamReport.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/NumberCheck.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/Progress.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

class StreamCommand : public Command {
  public:
    const char* Name() const override { return "stream"; }
    const char* Help() const override { return "Run a camera and measure rate, latency and dropped frames"; }
    const char* Example() const override { return "stream --seconds 10 --mode newest"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        command.add_option("-s,--seconds", m_Seconds, "End after so many seconds (default: with Ctrl-C)")
            ->check(SecondsBetween(0.01, 1e7));
        command.add_option("-n,--frames", m_Frames, "End after so many frames")->check(CLI::Range(1, 2000000000));
        command
            .add_option("-m,--mode", m_Mode, "every: each frame in order; newest: older waiting frames are passed over")
            ->check(CLI::IsMember({"every", "newest"}))
            ->capture_default_str();
        m_Settings.Declare(command);
        m_Settings.DeclareProcessing(command);
        command.add_option("-f,--format", m_Settings.color.format, "With --color: 16 or 8 bits a channel, or rgba8")
            ->needs("--color")
            ->check(CLI::IsMember(kColorFormats))
            ->capture_default_str();
        DeclareJson(command);
    }

    void Run(Json& result) override {
        zel::Sdk sdk;
        zel::Camera camera = sdk.open(m_Camera);
        const std::vector<zel::SetResult> settings = m_Settings.Apply(camera);
        if (m_Settings.color.color) m_Report.color = ToJson(m_Settings.color.SetUp(camera));
        m_Report.mode = m_Mode;
        if (m_Json) result["camera"] = ToJson(ReadFacts(camera));
        CatchInterrupts();
        Tell(settings, result);
        ReportAlways([&] { Stream(camera); }, [&] { Report(result); });
        // Without an end of its own the run ends as it should.
        if (m_Seconds > 0.0 || m_Frames > 0) FailIfInterrupted(Counted(m_Report.frames, "frame") + " measured");
    }

  private:
    using Clock = std::chrono::steady_clock;

    bool Wanted(double seconds) const {
        if (Interrupted() || (m_Frames > 0 && m_Report.frames >= static_cast<std::uint64_t>(m_Frames))) return false;
        return m_Seconds <= 0.0 || seconds < m_Seconds;
    }

    void Stream(zel::Camera& camera) {
        Acquisition acquisition(camera, m_Settings, zel::Trigger::as_set,
                                m_Mode == "newest" ? zel::Order::newest : zel::Order::every);
        ReportAlways([&] { Measure(acquisition); },
                     [&] { m_Report.Finish(camera.link_lost() ? 0 : camera.link_drops(), camera.skipped()); });
    }

    void Measure(Acquisition& acquisition) {
        Progress progress("streaming", !m_Json);
        const Clock::time_point start = Clock::now();
        for (double passed = 0.0; Wanted(passed);) {
            const zel::Frame frame = acquisition.Next();
            passed = std::chrono::duration<double>(Clock::now() - start).count();
            if (!frame) break;
            m_Report.Add(frame);
            if (m_Report.frames == 1) m_Report.first_frame_s = passed;
            m_Report.seconds = passed - m_Report.first_frame_s;
            progress.Show(m_Report.frames, static_cast<std::uint64_t>(m_Frames), m_Report.RateText());
        }
    }

    void Report(Json& result) {
        m_Report.interrupted = Interrupted();
        if (m_Json) return result.update(m_Report.ToJson());
        WriteOutput(m_Report.Text());
        FlushOutput();
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
