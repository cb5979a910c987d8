// zelcam version: the versions of the tool, the SDK and the interface libraries.
#include "include/ZelSDK.h"
#include "tools/zelcam/camera/PluginSet.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Output.h"

namespace zelcam {

namespace {

class VersionCommand : public Command {
  public:
    const char* Name() const override { return "version"; }
    const char* Help() const override { return "Print the versions of the tool, the SDK and the interface libraries"; }
    const char* Example() const override { return "version --json"; }
    void Declare(CLI::App& command) override { DeclareJson(command); }

    void Run(Json& result) override {
        const std::string libraries = get_version_str();
        const PluginSet& plugins = ChosenPlugins();
        if (!m_Json) {
            Print("zelcam {}\n{}\n", ZELCAM_VERSION, libraries);
            return plugins.folder.empty() ? void() : Print("plug-ins: {}\n", plugins.Text());
        }
        result = Json{{"zelcam", ZELCAM_VERSION}, {"libraries", Json::array()}, {"plugins", ToJson(plugins)}};
        for (std::size_t start = 0; start < libraries.size();) {
            const std::size_t end = std::min(libraries.find('\n', start), libraries.size());
            result["libraries"].push_back(libraries.substr(start, end - start));
            start = end + 1;
        }
    }
};

}  // namespace

std::unique_ptr<Command> MakeVersionCommand() { return std::make_unique<VersionCommand>(); }

}  // namespace zelcam
