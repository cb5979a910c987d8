// zelcam doctor: what the SDK finds on this computer, what is missing, and what to do about it.
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/doctor/Checks.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

class DoctorCommand : public Command {
  public:
    const char* Name() const override { return "doctor"; }
    const char* Help() const override { return "Examine the installation, and say what is missing and what to do"; }
    const char* Example() const override { return "doctor --open"; }

    void Declare(CLI::App& command) override {
        command.add_flag("--open", m_Open, "Also open every camera and take one frame with each");
        command.footer("Nothing is changed, and no camera is opened unless --open is given.\n" + command.get_footer());
        DeclareJson(command);
    }

    void Run(Json& result) override {
        Examination examination(!m_Json);
        ReportAlways([&] { Examine(examination); },
                     [&] {
                         if (m_Json) result = examination.ToJson();
                     });
        const auto count = [&](State state) { return static_cast<unsigned>(examination.Count(state)); };
        if (!m_Json) {
            Print("{}, {}, {}\n", Counted(count(State::kProblem), "problem"),
                  Counted(count(State::kWarning), "warning"), Counted(count(State::kNote), "note"));
        }
        if (count(State::kProblem) == 0) return;
        throw Failure("the examination found " + Counted(count(State::kProblem), "problem"), "",
                      "each is told with what to do", kProblemsFound);
    }

  private:
    void Examine(Examination& examination) const {
        const SdkFile sdk = FindSdkFile();
        CheckLibraries(sdk, examination);
        const PluginCounts plugins = CheckPlugins(sdk, examination);
        CameraCounts cameras = CheckCameras(sdk, plugins, examination);
        if (m_Open) TryCameras(cameras, examination);
        CheckCalibrationFolder(examination);
        CheckSystem(cameras, examination);
        if (NetworkIsWanted(cameras)) CheckNetwork(cameras, examination);
        CheckEnvironment(examination);
    }

    bool m_Open = false;
};

}  // namespace

std::unique_ptr<Command> MakeDoctorCommand() { return std::make_unique<DoctorCommand>(); }

}  // namespace zelcam
