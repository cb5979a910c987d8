#include "tools/zelcam/commands/CommandLine.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <sstream>

#include "platform/Terminal.h"
#include "tools/zelcam/camera/PluginSet.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/commands/PlayOption.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

using Words = std::vector<std::string>;

std::string Footer() {
    std::vector<std::vector<std::string>> rows;
    for (const FailureKind& kind : kFailureKinds) {
        const bool signal = kind.exit_code == kInterrupted.exit_code;
        rows.push_back({"  " + std::to_string(kind.exit_code) + (signal ? "+" : ""), kind.code, kind.meaning});
    }
    return "Exit codes, and the failure's code with --json:\n  0     success\n" + FormatTable(rows) +
           "Environment: ZEL_LOG has the SDK write a log (docs/zelcam.md), ZEL_SIM_... set the simulated cameras up "
           "(docs/simulator.md).\n"
           "'zelcam help COMMAND' or 'zelcam COMMAND --help' shows a command's options.\n"
           "Example: zelcam capture --frames 10 --exposure 20000 --out pictures";
}

// CLI11 takes an unknown word for a missing command. words: what follows the name of `app`.
void RefuseUnknownCommand(const CLI::App& app, const std::string& path, std::span<const std::string> words) {
    if (words.empty() || words[0].starts_with('-') || app.get_subcommands({}).empty()) return;
    Words names;
    for (const CLI::App* entry : app.get_subcommands({})) {
        const std::string name = entry->get_name();
        if (name == words[0]) return RefuseUnknownCommand(*entry, path + " " + name, words.subspan(1));
        names.push_back(name);
    }
    throw Failure("no command '" + words[0] + "'", "",
                  DidYouMean(words[0], names) + "'" + path + " --help' lists the commands", kUsage);
}

// The name of the innermost command that the line has got to, from the program on.
std::string NameOfReached(const CLI::App& app) {
    const auto reached = app.get_subcommands();
    return app.get_name() + (reached.empty() ? "" : " " + NameOfReached(*reached.front()));
}

void Parse(CLI::App& app, Words words) {
    // "help COMMAND" is "COMMAND --help".
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        words.push_back("--help");
    }
    RefuseUnknownCommand(app, app.get_name(), words);
    std::reverse(words.begin(), words.end());  // CLI11 takes them from the end
    try {
        app.parse(words);
    } catch (const CLI::Success&) {
        throw;
    } catch (const CLI::ParseError& error) {
        throw Failure(error.what(), "", "see '" + NameOfReached(app) + " --help'", kUsage);
    }
}

void Run(const Words& words, Json& result) {
    CLI::App app{"Finds, sets up and runs cameras.", "zelcam"};
    app.set_version_flag("--version", "zelcam " ZELCAM_VERSION);
    app.require_subcommand(1);
    std::string played;
    app.add_option(
        "--play", played,
        "FILE[,once|loop[:RATE]]: the simulated cameras play this recording or TIFF stack (docs/simulator.md)");
    std::string plugins;
    app.add_option(
        "--plugins", plugins,
        "sim|gige|FOLDER: where the cameras come from: the simulated ones, GigE Vision cameras on the network, or "
        "the plug-ins of a folder, whose path begins at the root (docs/install.md)");
    app.fallthrough();  // both may stand behind the command as well
    std::vector<std::pair<std::unique_ptr<Command>, CLI::App*>> commands;
    for (auto make : {&MakeListCommand, &MakeInfoCommand, &MakeCaptureCommand, &MakeParamsCommand, &MakeGetCommand,
                      &MakeSetCommand, &MakeTriggerCommand, &MakeStreamCommand, &MakeRecordCommand, &MakeExportCommand,
                      &MakeViewCommand, &MakeWatchCommand, &MakeTextCommand, &MakeCalibrateCommand, &MakeDoctorCommand,
                      &MakeCompletionCommand, &MakeManualCommand, &MakeVersionCommand}) {
        std::unique_ptr<Command> command = make();
        CLI::App* const entry = app.add_subcommand(command->Name(), command->Help());
        entry->footer(std::string("Example: zelcam ") + command->Example());
        command->Declare(*entry);
        commands.emplace_back(std::move(command), entry);
    }
    app.footer(Footer());
    try {
        Parse(app, words);
    } catch (const CLI::Success& help) {
        std::ostringstream text;
        app.exit(help, text, text);
        return WriteOutput(text.str());
    }
    if (plugins == "gige" && !played.empty()) {
        throw Failure("real cameras can't play '" + played + "'", "", "leave --play or --plugins gige out", kUsage);
    }
    if (app.count("--plugins") > 0) ChoosePlugins(plugins);
    if (!played.empty()) Play(played);
    for (const auto& [command, entry] : commands) {
        if (entry->parsed()) command->Run(result);
    }
}

// Result: the exit code.
int TellFailure(const Failure& failure, bool json, Json& result) {
    // The line comes behind what was printed before.
    std::fflush(stdout);
    std::fprintf(stderr, "zelcam: %s\n", failure.what());
    if (!json || std::ferror(stdout)) return failure.ExitCode();
    if (!result.is_object()) result = result.is_null() ? Json::object() : Json{{"result", result}};
    result["error"] = {{"code", failure.Kind().code}, {"exit_code", failure.ExitCode()}, {"message", failure.what()}};
    try {
        PrintJson(result, result.size() > 1 ? 2 : -1);
    } catch (const Failure& unprinted) {
        std::fprintf(stderr, "zelcam: %s\n", unprinted.what());
    }
    return failure.ExitCode();
}

}  // namespace

int RunCommandLine(int argc, char** argv) {
    zel::platform::GuardStandardStreams();
    const Words words(argv + std::min(argc, 1), argv + argc);
    const bool json = std::find(words.begin(), words.end(), "--json") != words.end();
    Json result;
    try {
        Run(words, result);
        if (json && !result.is_null()) PrintJson(result);
        FlushOutput();
        return kExitSuccess;
    } catch (const Failure& failure) {
        return TellFailure(failure, json, result);
    } catch (const zel::Error& error) {
        return TellFailure(Failure(error), json, result);
    } catch (const std::exception& error) {
        return TellFailure(Failure("internal error", error.what(), ""), json, result);
    }
}

}  // namespace zelcam
