// zelcam calibrate: the tables that even out the taps of a camera.
#include "tools/zelcam/commands/CalibrateActions.h"

namespace zelcam {

namespace {

class CalibrateCommand : public Command {
  public:
    const char* Name() const override { return "calibrate"; }
    const char* Help() const override { return "Look at, move and check the tables that even out a camera's taps"; }
    const char* Example() const override { return "calibrate check --camera 1"; }

    void Declare(CLI::App& command) override {
        command.require_subcommand(1);
        command.footer("Each has a --help of its own and takes --json. docs/calibration.md tells how to use them.\n" +
                       command.get_footer());
        for (auto make : {&MakeCalibrateShow, &MakeCalibrateCheck, &MakeCalibrateDownload, &MakeCalibrateExport,
                          &MakeCalibrateImport, &MakeCalibrateWrite, &MakeCalibrateSeams}) {
            Action& action = m_Actions.emplace_back();
            action.command = make();
            action.entry = command.add_subcommand(action.command->Name(), action.command->Help());
            action.entry->footer(std::string("Example: zelcam calibrate ") + action.command->Example());
            action.command->Declare(*action.entry);
        }
    }

    void Run(Json& result) override {
        for (const Action& action : m_Actions) {
            if (action.entry->parsed()) action.command->Run(result);
        }
    }

  private:
    struct Action {
        std::unique_ptr<Command> command;
        CLI::App* entry = nullptr;
    };
    std::vector<Action> m_Actions;
};

}  // namespace

std::unique_ptr<Command> MakeCalibrateCommand() { return std::make_unique<CalibrateCommand>(); }

}  // namespace zelcam
