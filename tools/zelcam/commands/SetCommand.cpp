// zelcam set: writes parameters and reads them back.
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Output.h"
#include "zel/Sdk.h"

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
        zel::Sdk sdk;
        const zel::Camera camera = sdk.open(m_Camera);
        result = Json::array();
        std::string refused;
        for (const Assignment& assignment : assignments) {
            const zel::SetResult outcome = camera.parameter(assignment.id).try_set(assignment.value);
            result.push_back(ToJson(outcome));
            if (!m_Json) Print("{}\n", outcome.text());
            if (outcome) continue;
            refused += (refused.empty() ? "" : ", ") + std::string(outcome.info->name) + " (" + outcome.reason + ")";
        }
        if (refused.empty()) return;
        throw Failure(camera.label() + " did not take every value", refused, "choose values within the ranges printed",
                      kRefused);
    }

  private:
    std::vector<Assignment> Assignments() const {
        if (m_Words.size() == 2 && m_Words[0].find('=') == std::string::npos) {
            return {{zel::find_parameter(m_Words[0]).id, m_Words[1]}};
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
