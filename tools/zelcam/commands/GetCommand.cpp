// zelcam get: the values of single parameters.
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Output.h"
#include "zel/Sdk.h"

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
        std::vector<unsigned> wanted;
        for (const std::string& name : m_Names) wanted.push_back(zel::find_parameter(name).id);
        zel::Sdk sdk;
        const zel::Camera camera = sdk.open(m_Camera);
        for (const unsigned id : wanted) {
            const zel::Parameter parameter = camera.parameter(id);
            const auto value = parameter.try_value();
            if (!value) Fail(camera, parameter.info());
            result[parameter.name()] = ToJson(*value);
            const std::string unit = parameter.unit();
            if (!m_Json) Print("{} = {}{}{}\n", parameter.name(), value->text(), unit.empty() ? "" : " ", unit);
        }
    }

  private:
    [[noreturn]] static void Fail(const zel::Camera& camera, const zel::ParameterInfo& info) {
        const std::string what = std::string(info.name) + " of " + camera.label() + " can't be read";
        if (info.access == zel::Access::write_only) throw Failure(what, "it is write-only", "", kRefused);
        throw Failure(what, "this camera does not offer it or did not answer", "'zelcam params' shows what it offers",
                      kRefused);
    }

    std::vector<std::string> m_Names;
};

}  // namespace

std::unique_ptr<Command> MakeGetCommand() { return std::make_unique<GetCommand>(); }

}  // namespace zelcam
