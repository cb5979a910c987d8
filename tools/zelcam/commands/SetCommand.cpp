// zelcam set: writes parameters and reads them back.
#include "tools/zelcam/camera/CameraParameters.h"
#include "tools/zelcam/camera/Session.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Output.h"

namespace zelcam {

namespace {

class SetCommand : public Command {
  public:
    const char* Name() const override { return "set"; }
    const char* Help() const override { return "Write parameters and read them back"; }
    const char* Example() const override { return "set EXPOSURE_TIME_US=20000 GAIN=10"; }

    void Declare(CLI::App& command) override {
        command.add_option("assignment", m_Words, "NAME VALUE, or any number of NAME=VALUE")->required();
        DeclareCamera(command);
        DeclareJson(command);
    }

    void Run(Json& result) override {
        const std::vector<Assignment> assignments = Assignments();
        const Session session;
        const OpenCamera camera(session, m_Camera);
        result = Json::array();
        std::vector<WriteOutcome> refused;
        for (const Assignment& assignment : assignments) {
            const WriteOutcome outcome = WriteParameter(camera.Get(), *assignment.info, assignment.value);
            result.push_back(outcome.ToJson());
            if (!m_Json) Print("{}\n", outcome.Text());
            if (!outcome.accepted) refused.push_back(outcome);
        }
        if (refused.empty()) return;
        std::string names;
        for (const WriteOutcome& outcome : refused) {
            names += (names.empty() ? "" : ", ") + std::string(outcome.info->name) + " (" + outcome.reason + ")";
        }
        throw Failure(camera.Label() + " did not take every value", names, "choose values within the ranges printed",
                      kRefused);
    }

  private:
    std::vector<Assignment> Assignments() const {
        if (m_Words.size() == 2 && m_Words[0].find('=') == std::string::npos) {
            return {{&FindParameter(m_Words[0]), m_Words[1]}};
        }
        std::vector<Assignment> assignments;
        for (const std::string& word : m_Words) assignments.push_back(ParseAssignment(word));
        PutUnitsFirst(assignments);
        return assignments;
    }

    std::vector<std::string> m_Words;
};

}  // namespace

std::unique_ptr<Command> MakeSetCommand() { return std::make_unique<SetCommand>(); }

}  // namespace zelcam
