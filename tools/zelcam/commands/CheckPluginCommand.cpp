// zelcam check-plugin: holds a camera interface library to what the SDK expects of one.
#include "tools/zelcam/check/CheckReport.h"
#include "tools/zelcam/check/RawFrame.h"
#include "tools/zelcam/check/Worker.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/NumberCheck.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

class CheckPluginCommand : public Command {
  public:
    const char* Name() const override { return "check-plugin"; }
    const char* Help() const override { return "Hold a plug-in (camera interface library) to its contract"; }
    const char* Example() const override { return "check-plugin zel_usb.dll --only frame,stop"; }

    void Declare(CLI::App& command) override {
        m_Program = command.get_parent();
        command.add_option("file", m_Plan.file, "A plug-in: its name as the SDK has it (zel_usb.dll), or a path");
        command.add_option("--only", m_Only, "Only these clauses or groups of clauses, see --list")
            ->delimiter(',')
            ->allow_extra_args(false);
        command.add_flag("--list", m_List, "Show the clauses, and check nothing");
        command.add_option("-c,--camera", m_Plan.only_camera, "Only the camera with this number in the library")
            ->check(CLI::Range(0, 7));
        command
            .add_option("--time-limit", m_Plan.time_limit,
                        "Seconds that a clause may take with a camera before it has failed")
            ->check(SecondsBetween(0.1, 3600))
            ->capture_default_str();
        CLI::Option* const bytes = command.add_option(
            "--bytes", m_Bytes, "No check: a PGM file for one frame of the first camera as the link delivers it");
        CLI::Option* const samples =
            command.add_option("--samples", m_Samples, "The same with samples unpacked, in the order of the taps");
        bytes->excludes(samples);
        command
            .add_option("--taps", m_Taps, "With --bytes or --samples: taps to read the frame out by (default: as set)")
            ->check(CLI::IsMember({1, 2, 4}));
        // What this command has its own processes do.
        command.add_option("--worker", m_WorkerClauses)->delimiter(',')->allow_extra_args(false)->group("");
        command.add_option("--worker-camera", m_WorkerCamera)->group("");
        command.footer(
            "Cameras must be attached, and free for the check. The plug-in runs in a process of its own: one that "
            "crashes or "
            "hangs fails the clause that it was in, and the check goes on.\n" +
            command.get_footer());
        DeclareJson(command);
    }

    void Run(Json& result) override {
        if (m_List) return List(result);
        if (m_Plan.file.empty()) throw Failure("no plug-in is named", "", "see 'zelcam check-plugin --help'", kUsage);
        if (!m_WorkerClauses.empty()) {
            return check::RunWorker(
                {m_Plan.file, check::SelectClauses(m_WorkerClauses), m_Plan.only_camera, m_WorkerCamera});
        }
        if (!m_Bytes.empty() || !m_Samples.empty()) return SaveFrame(result);
        if (m_Taps > 0) throw Failure("--taps is for --bytes or --samples", "", "leave it out", kUsage);
        m_Plan.clauses = check::SelectClauses(m_Only);
        for (const CLI::Option* const option : m_Program->get_options()) {
            for (const std::string& value : option->results())
                m_Plan.program_options.push_back(option->get_name() + "=" + value);
        }
        CatchInterrupts();
        check::CheckReport report(!m_Json);
        ReportAlways([&] { check::RunChecks(m_Plan, [&](const check::ClauseResult& one) { report.Add(one); }); },
                     [&] {
                         report.Finish();
                         if (m_Json) result = report.ToJson(m_Plan.file);
                     });
        Conclude(report);
    }

  private:
    void Conclude(const check::CheckReport& report) const {
        if (!m_Json) Print("{} ok, {} failed, {} skipped\n", report.Kept(), report.Failed(), report.Skipped());
        const unsigned checked = report.Kept() + report.Failed();
        if (report.Failed() > 0) {
            throw Failure(m_Plan.file + " does not keep its contract",
                          std::to_string(report.Failed()) + " of " + Counted(checked, "clause"), "each is told above",
                          kProblemsFound);
        }
        if (report.NoCamera()) {
            throw Failure("no such camera is attached", "clauses of cameras were not checked", "", kNoCamera);
        }
    }

    void List(Json& result) const {
        std::vector<std::vector<std::string>> rows{{"group", "clause", ""}};
        for (const check::Clause* const clause : check::SelectClauses(m_Only)) {
            rows.push_back({clause->group, clause->id, clause->words});
            result.push_back({{"group", clause->group}, {"id", clause->id}, {"clause", clause->words}});
        }
        if (!m_Json) Print("{}", FormatTable(rows));
    }

    void SaveFrame(Json& result) const {
        const bool bytes = !m_Bytes.empty();
        const check::PluginLibrary library(m_Plan.file);
        const std::string line =
            check::SaveRawFrame(library, bytes ? check::RawFrameKind::kBytes : check::RawFrameKind::kSamples, m_Taps,
                                bytes ? m_Bytes : m_Samples, result);
        if (!m_Json) Print("{}", line);
    }

    const CLI::App* m_Program = nullptr;
    check::CheckPlan m_Plan;
    std::vector<std::string> m_Only;
    std::vector<std::string> m_WorkerClauses;
    std::string m_Bytes;
    std::string m_Samples;
    int m_Taps = 0;
    int m_WorkerCamera = 0;
    bool m_List = false;
};

}  // namespace

std::unique_ptr<Command> MakeCheckPluginCommand() { return std::make_unique<CheckPluginCommand>(); }

}  // namespace zelcam
