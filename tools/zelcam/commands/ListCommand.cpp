// zelcam list: the cameras that can be opened.
#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/camera/Session.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

class ListCommand : public Command {
  public:
    const char* Name() const override { return "list"; }
    const char* Help() const override { return "List the cameras without opening them"; }
    const char* Example() const override { return "list --json"; }
    void Declare(CLI::App& command) override { DeclareJson(command); }

    void Run(Json& result) override {
        const Session session;
        if (m_Json) {
            result = Json::array();
            for (const CameraEntry& camera : session.Cameras()) result.push_back(ToJson(camera));
            return;
        }
        if (session.Cameras().empty()) return Print("no cameras\n");
        std::vector<std::vector<std::string>> rows{{"camera", "name", "serial", "interface", "address"}};
        for (const CameraEntry& camera : session.Cameras()) {
            std::string addresses;
            for (const std::string& address : camera.addresses) addresses += (addresses.empty() ? "" : ", ") + address;
            rows.push_back(
                {std::to_string(camera.number), camera.name, camera.serial, camera.interface_type, addresses});
        }
        WriteOutput(FormatTable(rows));
    }
};

}  // namespace

std::unique_ptr<Command> MakeListCommand() { return std::make_unique<ListCommand>(); }

}  // namespace zelcam
