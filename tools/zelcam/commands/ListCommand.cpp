// zelcam list: the cameras that can be opened.
#include <algorithm>

#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/camera/PluginSet.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

class ListCommand : public Command {
  public:
    const char* Name() const override { return "list"; }
    const char* Help() const override { return "List the cameras without opening them"; }
    const char* Example() const override { return "list --json"; }
    void Declare(CLI::App& command) override { DeclareJson(command); }

    void Run(Json& result) override {
        const zel::Sdk sdk;
        const std::vector<zel::CameraInfo> cameras = sdk.cameras();
        if (m_Json) {
            result = Json::array();
            for (const zel::CameraInfo& camera : cameras) {
                result.push_back(ToJson(camera));
                result.back()["simulated"] = IsSimulated(camera);
            }
            return;
        }
        const PluginSet& plugins = ChosenPlugins();
        if (cameras.empty() && !plugins.folder.empty()) {
            return Print("no cameras; 'zelcam --plugins {} doctor' looks for the reason\n", plugins.name);
        }
        if (cameras.empty()) return Print("no cameras\n");
        std::vector<std::vector<std::string>> rows{{"camera", "name", "serial", "interface", "address"}};
        for (const zel::CameraInfo& camera : cameras) {
            std::string addresses;
            for (const std::string& address : camera.addresses) addresses += (addresses.empty() ? "" : ", ") + address;
            rows.push_back(
                {std::to_string(camera.number), camera.name, camera.serial, camera.interface_type, addresses});
        }
        WriteOutput(FormatTable(rows));
        const auto simulated = static_cast<std::size_t>(std::ranges::count_if(cameras, IsSimulated));
        if (simulated == 0) return;
        Print(
            "{} simulated; 'zelcam --plugins gige list' looks on the network, docs/install.md tells of other real "
            "ones\n",
            simulated == cameras.size() ? "all are" : Counted(simulated, "camera") + " of them");
    }
};

}  // namespace

std::unique_ptr<Command> MakeListCommand() { return std::make_unique<ListCommand>(); }

}  // namespace zelcam
