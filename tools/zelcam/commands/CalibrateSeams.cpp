// zelcam calibrate seams: how far the taps differ, without the correction and with it.
#include <cstdio>

#include "include/ZelImage.h"
#include "include/ZelSDK.h"
#include "tools/zelcam/calibration/CalibrationCamera.h"
#include "tools/zelcam/calibration/Seams.h"
#include "tools/zelcam/commands/CalibrateActions.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/ProgressBar.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

class SeamsAction : public Command {
  public:
    const char* Name() const override { return "seams"; }
    const char* Help() const override { return "Measure the step across each seam, without and with the correction"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        command.add_option("-n,--frames", m_Frames, "Frames that are averaged")
            ->check(CLI::Range(1, 10000))
            ->capture_default_str();
        m_Settings.Declare(command);
        command.add_option("--save", m_Save, "Folder for the last frame of each kind, as PNG");
        command.footer("Point the camera at something even. A slope across the seam does no harm, edges do.");
        DeclareJson(command);
    }

    int Run() override {
        const Session session;
        WishForCalibration(session, m_Camera);
        const ProgressBar bar("calibration", !m_Json);
        OpenCamera camera(session, m_Camera);
        m_Settings.Apply(camera.Get());
        CatchInterrupts();
        Json json = Json::array();
        for (const bool corrected : {false, true}) {
            if (!Internal(camera.Get()).TapBalanceEnable(corrected) && corrected) {
                throw Failure(camera.Label() + " can't be corrected", "its calibration was not loaded",
                              "see 'zelcam calibrate check'");
            }
            const SeamMeter meter = Measure(camera, corrected);
            Report(camera, meter, corrected, json);
        }
        if (m_Json) PrintJson(json);
        return kExitSuccess;
    }

  private:
    SeamMeter Measure(OpenCamera& camera, bool corrected) const {
        SeamMeter meter;
        Acquisition acquisition(camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
        Progress progress(corrected ? "with correction" : "without", !m_Json);
        while (meter.Frames() < static_cast<std::uint64_t>(m_Frames)) {
            Frame frame = acquisition.Next();
            if (!frame) throw Failure("interrupted", "", "");
            const std::size_t count = std::size_t{frame->w} * frame->h;
            if (!meter.Add({frame->pixels, count}, frame->w, frame->h)) {
                throw Failure(camera.Label() + " changed the size of its frames", "", "");
            }
            progress.Show(meter.Frames(), static_cast<std::uint64_t>(m_Frames));
            if (m_Save.empty() || meter.Frames() < static_cast<std::uint64_t>(m_Frames)) continue;
            PictureOptions options;
            options.folder = m_Save;
            options.format = "png";
            options.prefix = corrected ? "corrected" : "uncorrected";
            PictureSaver(options, ReadFacts(camera), {ReadNumber(camera.Get(), ZEL_PARAM_GAIN), 0}).Save(frame.Get());
        }
        return meter;
    }

    void Report(const OpenCamera& camera, const SeamMeter& meter, bool corrected, Json& json) const {
        const int taps = 1 << ReadNumber(camera.Get(), ZEL_PARAM_TAPS_INDEX);
        const std::vector<Seam> seams = meter.Seams(taps);
        if (seams.empty()) {
            throw Failure(camera.Label() + " has no seams that can be measured",
                          "it is read out through " + std::to_string(taps) + " taps, or its frames are small",
                          "use whole frames, and --set TAPS_INDEX=1 or 2 for 2 or 4 taps");
        }
        std::vector<std::vector<std::string>> rows(1, {"seam", "step / counts", "error", "% of the level"});
        Json list = Json::array();
        for (const Seam& seam : seams) {
            const double share = meter.Level() > 0.0 ? 100.0 * seam.step / meter.Level() : 0.0;
            rows.push_back({seam.name, FixedText(seam.step, 2), FixedText(seam.error, 2), FixedText(share, 3)});
            list.push_back({{"seam", seam.name}, {"step", seam.step}, {"error", seam.error}});
        }
        json.push_back({{"corrected", corrected}, {"frames", m_Frames}, {"level", meter.Level()}, {"seams", list}});
        if (m_Json) return;
        std::printf("%s, mean level %s counts, %d frames\n%s", corrected ? "corrected" : "not corrected",
                    FixedText(meter.Level(), 1).c_str(), m_Frames, FormatTable(rows).c_str());
    }

    int m_Frames = 16;
    std::string m_Save;
    AcquisitionSettings m_Settings;
};

}  // namespace

std::unique_ptr<Command> MakeCalibrateSeams() { return std::make_unique<SeamsAction>(); }

}  // namespace zelcam
