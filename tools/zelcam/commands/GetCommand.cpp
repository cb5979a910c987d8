// zelcam get: the values of single parameters.
#include "tools/zelcam/camera/CameraParameters.h"
#include "tools/zelcam/camera/Session.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Output.h"

namespace zelcam {

namespace {

class GetCommand : public Command {
  public:
    const char* Name() const override { return "get"; }
    const char* Help() const override { return "Print the values of parameters"; }
    const char* Example() const override { return "get EXPOSURE_TIME_US GAIN"; }

    void Declare(CLI::App& command) override {
        command.add_option("parameter", m_Names, "Names or ids, see 'zelcam params'")->required();
        DeclareCamera(command);
        DeclareJson(command);
    }

    void Run(Json& result) override {
        // Names are looked at before a camera is touched.
        std::vector<const ParameterInfo*> wanted;
        for (const std::string& name : m_Names) wanted.push_back(&FindParameter(name));
        const Session session;
        const OpenCamera camera(session, m_Camera);
        for (const ParameterInfo* info : wanted) {
            const auto value = ReadParameter(camera.Get(), *info);
            if (!value) Fail(camera, *info);
            result[info->name] = value->ToJson();
            const std::string unit = UnitOf(camera.Get(), *info);
            if (!m_Json) Print("{} = {}{}{}\n", info->name, value->Text(), unit.empty() ? "" : " ", unit);
        }
    }

  private:
    [[noreturn]] static void Fail(const OpenCamera& camera, const ParameterInfo& info) {
        const std::string what = std::string(info.name) + " of " + camera.Label() + " can't be read";
        if (info.access == Access::kWriteOnly) throw Failure(what, "it is write-only", "", kRefused);
        throw Failure(what, "this camera does not offer it or did not answer", "'zelcam params' shows what it offers",
                      kRefused);
    }

    std::vector<std::string> m_Names;
};

}  // namespace

std::unique_ptr<Command> MakeGetCommand() { return std::make_unique<GetCommand>(); }

}  // namespace zelcam
