// zelcam calibrate seams: how far the taps differ, without the correction and with it.
#include <fmt/format.h>

#include <cmath>
#include <cstdio>

#include "tools/zelcam/calibration/Seams.h"
#include "tools/zelcam/commands/CalibrateActions.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/ProgressBar.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

// Taps differ by a few per cent, and what is left around a straight line in an even scene is noise.
constexpr double kLargestStep = 0.2;    // of the level
constexpr double kLargestError = 0.01;  // of the level

bool IsEven(const std::vector<Seam>& seams, double level) {
    for (const Seam& seam : seams) {
        if (std::fabs(seam.step) > kLargestStep * level || seam.error > kLargestError * level) return false;
    }
    return true;
}

class SeamsAction : public Command {
  public:
    const char* Name() const override { return "seams"; }
    const char* Help() const override { return "Measure the step across each seam, without and with the correction"; }
    const char* Example() const override { return "seams --frames 64 --exposure 20000"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        command.add_option("-n,--frames", m_Frames, "Frames that are averaged")
            ->check(CLI::Range(1, 10000))
            ->capture_default_str();
        m_Settings.Declare(command);
        command.add_option("--save", m_Save, "Folder for the last frame of each kind, as PNG");
        command.footer("Point the camera at something even. A slope across the seam does no harm, edges do.\n" +
                       command.get_footer());
        DeclareJson(command);
    }

    void Run(Json& result) override {
        zel::Sdk sdk;
        const ProgressBar bar("calibration", !m_Json);
        zel::Camera camera = sdk.open(m_Camera, {.calibrated = true});
        const std::vector<zel::SetResult> settings = m_Settings.Apply(camera);
        for (const zel::SetResult& setting : settings) m_Json ? void() : Print("{}\n", setting.text());
        FlushOutput();
        CatchInterrupts();
        result = Json::array();
        for (const bool corrected : {false, true}) {
            if (!camera.set_calibration(corrected) && corrected) {
                throw Failure(camera.label() + " can't be corrected", "its calibration was not loaded",
                              "see 'zelcam calibrate check'", kRefused);
            }
            const SeamMeter meter = Measure(camera, corrected);
            Report(camera, meter, corrected, result);
        }
    }

  private:
    SeamMeter Measure(zel::Camera& camera, bool corrected) const {
        SeamMeter meter;
        Acquisition acquisition(camera, m_Settings);
        Progress progress(corrected ? "with correction" : "without", !m_Json);
        while (meter.Frames() < static_cast<std::uint64_t>(m_Frames)) {
            const zel::Frame frame = acquisition.Next();
            FailIfInterrupted(Counted(meter.Frames(), "frame") + " measured");
            if (!meter.Add(frame.pixels(), frame.width(), frame.height())) {
                throw Failure(camera.label() + " changed the size of its frames", "", "");
            }
            progress.Show(meter.Frames(), static_cast<std::uint64_t>(m_Frames));
            if (m_Save.empty() || meter.Frames() < static_cast<std::uint64_t>(m_Frames)) continue;
            PictureOptions options;
            options.folder = m_Save;
            options.format = "png";
            options.prefix = corrected ? "corrected" : "uncorrected";
            PictureSaver(options, 1, ReadFacts(camera), {camera.number(ZEL_PARAM_GAIN), 0}).Save(*frame.native());
        }
        return meter;
    }

    void Report(const zel::Camera& camera, const SeamMeter& meter, bool corrected, Json& result) const {
        const int taps = 1 << camera.number(ZEL_PARAM_TAPS_INDEX);
        const std::vector<Seam> seams = meter.Seams(taps);
        if (seams.empty()) {
            throw Failure(camera.label() + " has no seams that can be measured",
                          "it is read out through " + std::to_string(taps) + " taps, or its frames are small",
                          "use whole frames, and --set TAPS_INDEX=1 or 2 for 2 or 4 taps", kRefused);
        }
        std::vector<std::vector<std::string>> rows(1, {"seam", "step / counts", "error", "% of the level"});
        Json list = Json::array();
        for (const Seam& seam : seams) {
            const double share = meter.Level() > 0.0 ? 100.0 * seam.step / meter.Level() : 0.0;
            rows.push_back({seam.name, fmt::format("{:.2f}", seam.step), fmt::format("{:.2f}", seam.error),
                            fmt::format("{:.3f}", share)});
            list.push_back({{"seam", seam.name}, {"step", seam.step}, {"error", seam.error}});
        }
        const bool even = IsEven(seams, meter.Level());
        result.push_back({{"corrected", corrected},
                          {"frames", m_Frames},
                          {"level", meter.Level()},
                          {"even", even},
                          {"seams", list}});
        if (!m_Json) {
            Print("{}, mean level {:.1f} counts, {}\n{}", corrected ? "corrected" : "not corrected", meter.Level(),
                  Counted(static_cast<unsigned>(m_Frames), "frame"), FormatTable(rows));
        }
        if (!even && corrected) {
            std::fprintf(stderr,
                         "zelcam: warning: the scene is not even: the steps are its edges, not the taps'; point the "
                         "camera at something even\n");
        }
    }

    int m_Frames = 16;
    std::string m_Save;
    AcquisitionSettings m_Settings;
};

}  // namespace

std::unique_ptr<Command> MakeCalibrateSeams() { return std::make_unique<SeamsAction>(); }

}  // namespace zelcam
