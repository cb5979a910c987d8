// zelcam completion: has a shell complete the tool's command lines.
#include "tools/manual/Completion.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Output.h"
#include "zel/ParameterInfo.h"

namespace zelcam {

namespace {

using zel::manual::Completions;

std::vector<std::string> ParameterNames(bool writable) {
    std::vector<std::string> names;
    for (const zel::ParameterInfo& info : zel::all_parameters()) {
        if (info.access != (writable ? zel::Access::read_only : zel::Access::write_only)) names.emplace_back(info.name);
    }
    return names;
}

Completions SourcesOfValues() {
    using Kind = Completions::Kind;
    return {{{"--out", {Kind::kFolder, {}}},
             {"--backup", {Kind::kFolder, {}}},
             {"--save", {Kind::kFolder, {}}},
             {"folder", {Kind::kFolder, {}}},
             {"files", {Kind::kFile, {}}},
             {"file", {Kind::kFile, {}}},
             {"--play", {Kind::kFile, {}}},
             {"--plugins", {Kind::kFolder, {}}},
             {"parameter", {Kind::kWords, ParameterNames(false)}},
             {"assignment", {Kind::kAssignments, ParameterNames(true)}},
             {"--set", {Kind::kAssignments, ParameterNames(true)}}}};
}

class CompletionCommand : public Command {
  public:
    const char* Name() const override { return "completion"; }
    const char* Help() const override { return "Print a script that has a shell complete this tool's command lines"; }
    const char* Example() const override { return "completion bash >> ~/.bash_completion"; }

    void Declare(CLI::App& command) override {
        m_Program = command.get_parent();
        command.add_option("shell", m_Shell, "The shell")->required()->check(CLI::IsMember({"bash", "zsh", "fish"}));
        command.footer(
            "For zsh: a file _zelcam in a folder of $fpath; for fish: ~/.config/fish/completions/zelcam.fish.\n" +
            command.get_footer());
        DeclareJson(command);
    }

    void Run(Json& result) override {
        const zel::manual::CommandText program = zel::manual::ReadCommand(*m_Program);
        const auto make = m_Shell == "bash"  ? zel::manual::BashCompletion
                          : m_Shell == "zsh" ? zel::manual::ZshCompletion
                                             : zel::manual::FishCompletion;
        const std::string script = make(program, SourcesOfValues());
        if (!m_Json) return WriteOutput(script);
        result = Json{{"shell", m_Shell}, {"script", script}};
    }

  private:
    const CLI::App* m_Program = nullptr;
    std::string m_Shell;
};

}  // namespace

std::unique_ptr<Command> MakeCompletionCommand() { return std::make_unique<CompletionCommand>(); }

}  // namespace zelcam
