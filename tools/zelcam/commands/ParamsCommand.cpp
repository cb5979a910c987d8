// zelcam params: every parameter of a camera.
#include <chrono>

#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/Progress.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

// A read that takes this long has run into its time-outs: the camera answers nothing any more.
constexpr std::chrono::seconds kSilence{10};

class ParamsCommand : public Command {
  public:
    const char* Name() const override { return "params"; }
    const char* Help() const override {
        return "Print every parameter with value, type, range, default, access and unit";
    }
    const char* Example() const override { return "params --camera 1"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        DeclareJson(command);
    }

    void Run(Json& result) override {
        zel::Sdk sdk;
        const zel::Camera camera = sdk.open(m_Camera);
        result = Json::array();
        std::vector<std::vector<std::string>> rows{
            {"id", "name", "value", "unit", "type", "range", "default", "access", "description"}};
        Progress progress("reading");
        for (const zel::ParameterInfo& info : zel::all_parameters()) {
            progress.Show(result.size(), zel::all_parameters().size());
            Describe(camera, camera.parameter(info.id), result, rows);
        }
        progress.Wipe();
        if (!m_Json) WriteOutput(FormatTable(rows));
    }

  private:
    static void Describe(const zel::Camera& camera, const zel::Parameter& parameter, Json& list,
                         std::vector<std::vector<std::string>>& rows) {
        const zel::ParameterInfo& info = parameter.info();
        const auto start = std::chrono::steady_clock::now();
        const auto value = parameter.try_value();
        if (!value && std::chrono::steady_clock::now() - start > kSilence) {
            throw Failure(camera.label() + " does not answer", std::string("reading ") + info.name + " timed out",
                          "check cable and power", kTimeout);
        }
        const bool selector = info.kind == zel::ValueKind::selector;
        const zel::ValueRange range = parameter.range();
        const auto type = selector ? std::nullopt : parameter.attribute(ZEL_ATTR_DATA_TYPE);
        const std::string unit = parameter.unit();
        Json json;
        json["id"] = info.id;
        json["name"] = info.name;
        json["value"] = value ? ToJson(*value) : Json();
        json["unit"] = unit;
        json["type"] = text_of(info.kind);
        json["data_type_code"] = type ? Json(*type) : Json();
        json["minimum"] = range.known ? Json(range.minimum) : Json();
        json["maximum"] = range.known ? Json(range.maximum) : Json();
        json["default"] = range.known ? Json(range.standard) : Json();
        const zel::Access access = value ? parameter.access() : info.access;
        json["access"] = text_of(access);
        json["available"] = value.has_value() || info.access == zel::Access::write_only;
        json["description"] = info.description;
        list.push_back(json);
        const std::string id = info.id < ZEL_MAX_PARAMS ? std::to_string(info.id) : "-";
        rows.push_back({id, info.name, value ? value->text() : "-", unit, text_of(info.kind),
                        range.known ? range.text() : "-", range.known ? std::to_string(range.standard) : "-",
                        text_of(access), info.description});
    }
};

}  // namespace

std::unique_ptr<Command> MakeParamsCommand() { return std::make_unique<ParamsCommand>(); }

}  // namespace zelcam
