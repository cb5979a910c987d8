// One command of the tool: its place on the command line and what it does.
#ifndef ZELCAM_COMMAND_H
#define ZELCAM_COMMAND_H

#include <CLI/CLI.hpp>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "tools/zelcam/camera/Assignments.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Json.h"

namespace zelcam {

class Command {
  public:
    virtual ~Command() = default;

    virtual const char* Name() const = 0;
    virtual const char* Help() const = 0;
    // A command line to begin with, without the program's name.
    virtual const char* Example() const = 0;
    // Adds the command's options to its part of the command line.
    virtual void Declare(CLI::App& command) = 0;
    // Carries the command out; throws Failure or zel::Error. With --json nothing is printed: what is known goes into
    // `result`, as soon as it is known, and is printed at the end whatever that is.
    virtual void Run(Json& result) = 0;

  protected:
    void DeclareJson(CLI::App& command) {
        command.add_flag("--json", m_Json, "Print JSON and nothing else on the standard output");
    }
    void DeclareCamera(CLI::App& command) {
        command.add_option("-c,--camera", m_Camera, "Number or serial number, see 'zelcam list'")
            ->capture_default_str();
    }
    static void DeclareFrames(CLI::App& command, int& frames) {
        command.add_option("-n,--frames", frames, "How many frames")
            ->check(CLI::Range(1, 1000000))
            ->capture_default_str();
    }

    // Tells what became of the settings, before the run that they are for.
    void Tell(const std::vector<zel::SetResult>& settings, Json& result) const;

    // Carries out `work`, then `report`, also when the work fails; its failure is the one that is told.
    template <class Work, class Report>
    static void ReportAlways(Work work, Report report) {
        std::exception_ptr failure;
        try {
            work();
        } catch (const std::exception&) {
            failure = std::current_exception();
        }
        try {
            report();
        } catch (const std::exception&) {
            if (!failure) throw;
        }
        if (failure) std::rethrow_exception(failure);
    }

    bool m_Json = false;
    std::string m_Camera = "0";
};

std::unique_ptr<Command> MakeListCommand();
std::unique_ptr<Command> MakeInfoCommand();
std::unique_ptr<Command> MakeExportCommand();
std::unique_ptr<Command> MakeCaptureCommand();
std::unique_ptr<Command> MakeParamsCommand();
std::unique_ptr<Command> MakeGetCommand();
std::unique_ptr<Command> MakeSetCommand();
std::unique_ptr<Command> MakeTriggerCommand();
std::unique_ptr<Command> MakeStreamCommand();
std::unique_ptr<Command> MakeRecordCommand();
std::unique_ptr<Command> MakeWatchCommand();
std::unique_ptr<Command> MakeViewCommand();
std::unique_ptr<Command> MakeTextCommand();
std::unique_ptr<Command> MakeCalibrateCommand();
std::unique_ptr<Command> MakeDoctorCommand();
std::unique_ptr<Command> MakeCheckPluginCommand();
std::unique_ptr<Command> MakeCompletionCommand();
std::unique_ptr<Command> MakeManualCommand();
std::unique_ptr<Command> MakeVersionCommand();

}  // namespace zelcam

#endif
