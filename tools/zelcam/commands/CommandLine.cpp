#include "tools/zelcam/commands/CommandLine.h"

#include <span>

#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/EditDistance.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

namespace {

constexpr const char* kFooter =
    "Exit code: 0 success, 1 the command failed, 2 the command line was not understood.\n"
    "Each command has a --help of its own. Example: zelcam capture --frames 10 --exposure 20000 --out pictures";

// CLI11 takes an unknown word for a missing command. words: what follows the name of `app`.
void RefuseUnknownCommand(const CLI::App& app, std::span<char* const> words) {
    if (words.empty() || words[0][0] == '-' || app.get_subcommands({}).empty()) return;
    const std::string word = words[0];
    std::vector<std::string> names;
    for (const CLI::App* entry : app.get_subcommands({})) {
        if (entry->get_name() == word) return RefuseUnknownCommand(*entry, words.subspan(1));
        names.push_back(entry->get_name());
    }
    const std::vector<std::string> near = NearestWords(word, names, 1);
    throw Failure("no command '" + word + "'", "",
                  (near.empty() ? "" : "did you mean " + near.front() + "? ") + "'" + app.get_display_name() +
                      " --help' lists the commands",
                  kExitUsage);
}

}  // namespace

int RunCommandLine(int argc, char** argv) {
    CLI::App app{"Finds, sets up and runs cameras.", "zelcam"};
    app.footer(kFooter);
    app.require_subcommand(1);
    std::vector<std::unique_ptr<Command>> commands;
    for (auto make : {&MakeListCommand, &MakeInfoCommand, &MakeCaptureCommand, &MakeParamsCommand, &MakeGetCommand,
                      &MakeSetCommand, &MakeTriggerCommand, &MakeStreamCommand, &MakeWatchCommand, &MakeTextCommand,
                      &MakeCalibrateCommand, &MakeVersionCommand}) {
        commands.push_back(make());
    }
    std::vector<CLI::App*> entries;
    for (const auto& command : commands) {
        CLI::App* const entry = app.add_subcommand(command->Name(), command->Help());
        command->Declare(*entry);
        entries.push_back(entry);
    }
    if (argc > 1) RefuseUnknownCommand(app, {argv + 1, argv + argc});
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        throw Failure(error.what(), "", "see 'zelcam --help'", kExitUsage);
    }
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i]->parsed()) return commands[i]->Run();
    }
    return kExitUsage;
}

}  // namespace zelcam
