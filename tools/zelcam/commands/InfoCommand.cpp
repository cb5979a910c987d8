// zelcam info: what one camera is and how it is set; or what recordings are.
#include <fmt/format.h>

#include "tools/zelcam/calibration/CalibrationSource.h"
#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/record/RecordingReport.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

// The parameters that describe a camera at a glance, with their names in JSON.
struct Row {
    unsigned id;
    const char* key;
    const char* label;
};
constexpr Row kRows[] = {
    {ZEL_PARAM_HSIZE, "width", "sensor width"},
    {ZEL_PARAM_VSIZE, "height", "sensor height"},
    {ZEL_PARAM_BITS_PER_PIXEL, "bits", "bits per pixel"},
    {ZEL_PARAM_COLOR_FILTER_TYPE, "color_filter", "color filter"},
    {ZEL_PARAM_ROI_BIN, "region", "region and binning"},
    {ZEL_PARAM_EXPOSURE_TIME_US, "exposure_us", "exposure"},
    {ZEL_PARAM_GAIN, "gain", "gain"},
    {ZEL_PARAM_TAPS_INDEX, "taps_index", "taps index"},
    {ZEL_PARAM_READOUT_SPEED_INDEX, "readout_speed_index", "pixel clock index"},
    {ZEL_PARAM_READOUT_TIME, "readout_time_us", "readout time"},
    {ZEL_PARAM_FRAME_TIME, "frame_time_us", "frame time"},
    {ZEL_PARAM_FRAME_RATE, "frames_per_1000_s", "frame rate"},
    {ZEL_PARAM_TEMPERATURE, "temperature_tenths_c", "sensor temperature"},
    {ZEL_PARAM_CAMSTATE, "state", "state"},
};

std::string ValueText(const zel::ParameterInfo& info, const zel::ParameterValue& value) {
    if (info.id == ZEL_PARAM_TEMPERATURE) return fmt::format("{:.1f} C", static_cast<double>(value.integer()) / 10.0);
    if (info.id == ZEL_PARAM_COLOR_FILTER_TYPE && value.text().empty()) return "none";
    return value.text() + (*info.unit ? std::string(" ") + info.unit : "");
}

class InfoCommand : public Command {
  public:
    const char* Name() const override { return "info"; }
    const char* Help() const override {
        return "Tell what a camera is and how it is set, or what recordings hold and lack";
    }
    const char* Example() const override { return "info --camera 1"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        command.add_option("files", m_Files, "Recordings or TIFF stacks, instead of a camera")->excludes("--camera");
        DeclareJson(command);
    }

    void Run(Json& result) override {
        if (m_Files.empty()) return TellCamera(result);
        std::vector<RecordingReport> reports;
        for (const std::string& file : m_Files) reports.push_back(LookAtRecording(file));
        const bool one = reports.size() == 1;
        if (!m_Json) return WriteOutput(one ? ToText(reports.front()) : ToText(reports));
        result = one ? ToJson(reports.front()) : ToJson(reports);
    }

  private:
    void TellCamera(Json& result) const {
        zel::Sdk sdk;
        zel::Camera camera = sdk.open(m_Camera);
        result = ToJson(ReadFacts(camera));
        std::vector<std::vector<std::string>> rows;
        for (const auto& [key, value] : result.items()) {
            rows.push_back({key, value.is_string() ? value.get<std::string>() : JsonText(value, -1)});
        }
        for (const Row& row : kRows) {
            const zel::Parameter parameter = camera.parameter(row.id);
            const auto value = parameter.try_value();
            result[row.key] = value ? ToJson(*value) : Json();
            rows.push_back({row.label, value ? ValueText(parameter.info(), *value) : "-"});
        }
        const CalibrationSource calibration = FindCalibrationSource(camera);
        result["calibration"] = calibration.ToJson();
        rows.push_back({"calibration", calibration.Text()});
        if (!m_Json) WriteOutput(FormatTable(rows));
    }

    std::vector<std::string> m_Files;
};

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() { return std::make_unique<InfoCommand>(); }

}  // namespace zelcam
