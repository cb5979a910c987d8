// zelcam list: the cameras that can be opened.
#include <cstdio>

#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/camera/Session.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

class ListCommand : public Command {
  public:
    const char* Name() const override { return "list"; }
    const char* Help() const override { return "List the cameras without opening them"; }
    void Declare(CLI::App& command) override { DeclareJson(command); }

    int Run() override {
        const Session session;
        if (m_Json) {
            Json json = Json::array();
            for (const CameraEntry& camera : session.Cameras()) json.push_back(ToJson(camera));
            PrintJson(json);
            return kExitSuccess;
        }
        if (session.Cameras().empty()) {
            std::printf("no cameras\n");
            return kExitSuccess;
        }
        std::vector<std::vector<std::string>> rows{{"camera", "name", "serial", "interface", "address"}};
        for (const CameraEntry& camera : session.Cameras()) {
            std::string addresses;
            for (const std::string& address : camera.addresses) addresses += (addresses.empty() ? "" : ", ") + address;
            rows.push_back(
                {std::to_string(camera.number), camera.name, camera.serial, camera.interface_type, addresses});
        }
        std::fputs(FormatTable(rows).c_str(), stdout);
        return kExitSuccess;
    }
};

}  // namespace

std::unique_ptr<Command> MakeListCommand() { return std::make_unique<ListCommand>(); }

}  // namespace zelcam
