// zelcam manual: the tool's pages for man(1).
#include "platform/UserTexts.h"
#include "tools/manual/ManPage.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/OutputFile.h"

namespace zelcam {

namespace {

namespace fs = std::filesystem;
using zel::manual::ManSection;

ManSection ExitStatus() {
    ManSection section{"Exit status", {{"0", "success"}}};
    for (const FailureKind& kind : kFailureKinds) {
        const bool signal = kind.exit_code == kInterrupted.exit_code;
        section.terms.emplace_back(std::to_string(kind.exit_code) + (signal ? "+" : ""),
                                   std::string(kind.meaning) + "; with --json the code is " + kind.code);
    }
    return section;
}

ManSection Environment() {
    return {"Environment",
            {{"ZEL_LOG",
              "error, warning or trace: the SDK writes lines of this level and above to the error stream; "
              "trace:FILE adds them to a file. It needs the logging library."},
             {"ZEL_SIM_...", "number, size, pace and scene of the simulated cameras (docs/simulator.md)"},
             {"XDG_DATA_HOME", "the folder above ZEL, where calibration files are kept (default: ~/.local/share)"}}};
}

class ManualCommand : public Command {
  public:
    const char* Name() const override { return "manual"; }
    const char* Help() const override { return "Write the manual pages of this tool, one for each command"; }
    const char* Example() const override { return "manual ~/.local/share/man/man1"; }

    void Declare(CLI::App& command) override {
        m_Program = command.get_parent();
        command.add_option("folder", m_Folder, "Folder for the pages, made when missing")->required();
        DeclareJson(command);
    }

    void Run(Json& result) override {
        const zel::manual::CommandText program = zel::manual::ReadCommand(*m_Program);
        const zel::manual::ManBook book{"zelcam", ZELCAM_VERSION, {}};
        const fs::path folder = zel::platform::Utf8Path(m_Folder);
        std::error_code ignored;
        fs::create_directories(folder, ignored);
        WritePage(folder, program, book, {ExitStatus(), Environment()}, result);
        for (const auto& command : program.commands) WritePage(folder, command, book, {}, result);
    }

  private:
    void WritePage(const fs::path& folder, const zel::manual::CommandText& command, const zel::manual::ManBook& book,
                   const std::vector<ManSection>& more, Json& result) const {
        const fs::path path = folder / zel::manual::ManFileName(command, book);
        WriteWhole(path, ManPage(command, book, more));
        const std::string name = zel::platform::Utf8Text(path);
        m_Json ? result["files"].push_back(name) : Print("{}\n", name);
    }

    const CLI::App* m_Program = nullptr;
    std::string m_Folder;
};

}  // namespace

std::unique_ptr<Command> MakeManualCommand() { return std::make_unique<ManualCommand>(); }

}  // namespace zelcam
