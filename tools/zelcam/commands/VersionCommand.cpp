// zelcam version: the versions of the tool, the SDK and the interface libraries.
#include <cstdio>

#include "include/ZelSDK.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Json.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

class VersionCommand : public Command {
  public:
    const char* Name() const override { return "version"; }
    const char* Help() const override { return "Print the versions of the tool, the SDK and the interface libraries"; }
    void Declare(CLI::App& command) override { DeclareJson(command); }

    int Run() override {
        const std::string libraries = TextOrEmpty(get_version_str());
        if (!m_Json) {
            std::printf("zelcam %s\n%s\n", ZELCAM_VERSION, libraries.c_str());
            return kExitSuccess;
        }
        Json json{{"zelcam", ZELCAM_VERSION}, {"libraries", Json::array()}};
        for (std::size_t start = 0; start < libraries.size();) {
            const std::size_t end = std::min(libraries.find('\n', start), libraries.size());
            json["libraries"].push_back(libraries.substr(start, end - start));
            start = end + 1;
        }
        PrintJson(json);
        return kExitSuccess;
    }
};

}  // namespace

std::unique_ptr<Command> MakeVersionCommand() { return std::make_unique<VersionCommand>(); }

}  // namespace zelcam
