// zelcam params: every parameter of a camera.
#include <chrono>

#include "include/ZelParameters.h"
#include "tools/zelcam/camera/CameraParameters.h"
#include "tools/zelcam/camera/Session.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/Progress.h"
#include "tools/zelcam/text/TextTools.h"

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
        const Session session;
        const OpenCamera camera(session, m_Camera);
        result = Json::array();
        std::vector<std::vector<std::string>> rows{
            {"id", "name", "value", "unit", "type", "range", "default", "access", "description"}};
        Progress progress("reading");
        for (const ParameterInfo& info : AllParameters()) {
            progress.Show(result.size(), AllParameters().size());
            Describe(camera, info, result, rows);
        }
        progress.Wipe();
        if (!m_Json) WriteOutput(FormatTable(rows));
    }

  private:
    static void Describe(const OpenCamera& camera, const ParameterInfo& info, Json& list,
                         std::vector<std::vector<std::string>>& rows) {
        const auto start = std::chrono::steady_clock::now();
        const auto value = ReadParameter(camera.Get(), info);
        if (!value && std::chrono::steady_clock::now() - start > kSilence) {
            throw Failure(camera.Label() + " does not answer", std::string("reading ") + info.name + " timed out",
                          "check cable and power", kTimeout);
        }
        const bool selector = info.kind == ValueKind::kSelector;
        const ValueRange range = selector ? ValueRange{} : ReadRange(camera.Get(), info);
        const auto type = selector ? std::nullopt : ReadAttribute(camera.Get(), info.id, ZEL_ATTR_DATA_TYPE);
        const std::string unit = UnitOf(camera.Get(), info);
        Json json;
        json["id"] = info.id;
        json["name"] = info.name;
        json["value"] = value ? value->ToJson() : Json();
        json["unit"] = unit;
        json["type"] = KindText(info.kind);
        json["data_type_code"] = type ? Json(*type) : Json();
        json["minimum"] = range.known ? Json(range.minimum) : Json();
        json["maximum"] = range.known ? Json(range.maximum) : Json();
        json["default"] = range.known ? Json(range.standard) : Json();
        const Access access = value ? ReadAccess(camera.Get(), info) : info.access;
        json["access"] = AccessText(access);
        json["available"] = value.has_value() || info.access == Access::kWriteOnly;
        json["description"] = info.description;
        list.push_back(json);
        const std::string id = info.id < ZEL_MAX_PARAMS ? std::to_string(info.id) : "-";
        rows.push_back({id, info.name, value ? value->Text() : "-", unit, KindText(info.kind),
                        range.known ? range.Text() : "-", range.known ? std::to_string(range.standard) : "-",
                        AccessText(access), info.description});
    }
};

}  // namespace

std::unique_ptr<Command> MakeParamsCommand() { return std::make_unique<ParamsCommand>(); }

}  // namespace zelcam
