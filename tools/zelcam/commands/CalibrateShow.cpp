// zelcam calibrate show, check: what the tables say, and whether camera, files and data agree.
#include <fmt/format.h>

#include "platform/UserTexts.h"
#include "tools/zelcam/calibration/CalibrationCamera.h"
#include "tools/zelcam/calibration/CalibrationPlot.h"
#include "tools/zelcam/commands/CalibrateActions.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/OutputFile.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

namespace fs = std::filesystem;
using zel::platform::Utf8Path;
using zel::platform::Utf8Text;

// A table with where it comes from.
struct NamedTable {
    std::string name;  // "camera 0, 20MHz"
    std::string stem;  // of the plot's file name
    CalibrationTable table;
};

std::string NumbersText(const CalibrationTable& table) {
    std::vector<std::vector<std::string>> lines(1, {"row", "mV"});
    for (int tap = 1; tap <= table.taps; ++tap) lines[0].push_back("tap " + std::to_string(tap));
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
        const CalibrationRow& row = table.rows[i];
        auto& line = lines.emplace_back();
        line = {std::to_string(i + 1), fmt::format("{:.3f}", row.millivolts)};
        for (std::size_t tap = 0; tap < static_cast<std::size_t>(table.taps); ++tap) {
            line.push_back(fmt::format("{:.5f}", row.gains[tap]));
        }
    }
    return FormatTable(lines);
}

class ShowAction : public Command {
  public:
    const char* Name() const override { return "show"; }
    const char* Help() const override { return "Print the gains of each tap and draw them as an SVG plot"; }
    const char* Example() const override { return "show --camera 1 --out plots"; }

    void Declare(CLI::App& command) override {
        command.add_option("files", m_Files, "Master or cache files (default: the tables in the camera)");
        DeclareCamera(command);
        command.add_option("-o,--out", m_Out, "Folder for the plots, made when missing")->capture_default_str();
        command.add_flag("--no-plot", m_NoPlot, "Numbers only");
        DeclareJson(command);
    }

    void Run(Json& result) override {
        result = Json::array();
        for (const NamedTable& named : Tables()) {
            const fs::path plot = m_NoPlot ? fs::path() : Plot(named);
            if (m_Json) {
                Json entry{{"name", named.name}};
                entry.update(named.table.ToJson());
                entry["fault"] = named.table.Fault();
                entry["plot"] = plot.empty() ? Json() : Json(Utf8Text(plot));
                result.push_back(entry);
                continue;
            }
            Print("{}\n{}", named.name, NumbersText(named.table));
            if (const std::string fault = named.table.Fault(); !fault.empty()) Print("BAD: {}\n", fault);
            if (!plot.empty()) Print("plot: {}\n", Utf8Text(plot));
        }
    }

  private:
    std::vector<NamedTable> Tables() const {
        std::vector<NamedTable> tables;
        for (const std::string& file : m_Files) {
            tables.push_back({file, Utf8Text(Utf8Path(file).stem()), ReadCalibrationFile(Utf8Path(file)).table});
        }
        if (!tables.empty()) return tables;
        zel::Sdk sdk;
        zel::Camera camera = sdk.open(m_Camera);
        const CalibrationTables read = ReadTables(camera);
        for (std::size_t speed = 0; speed < read.size(); ++speed) {
            const std::string name = kSpeedNames[speed];
            tables.push_back({camera.label() + ", " + name, camera.info().serial + "_" + name, read[speed]});
        }
        return tables;
    }

    fs::path Plot(const NamedTable& named) const {
        std::error_code error;
        fs::create_directories(Utf8Path(m_Out), error);
        const fs::path path = Utf8Path(m_Out) / Utf8Path(named.stem + ".svg");
        WriteWhole(path, PlotSvg(named.table, named.name));
        return path;
    }

    std::vector<std::string> m_Files;
    std::string m_Out = ".";
    bool m_NoPlot = false;
};

// What is known of one table's digests.
struct Digests {
    std::string data;         // computed from the rows in the camera
    std::string directory;    // that the camera keeps; empty: it does not tell
    std::string cache_path;   // empty: no cache file
    std::string cache_line;   // that the cache file begins with
    std::string cache_data;   // computed from the rows in the cache file
    std::string cache_fault;  // why the cache file can't be read

    bool CameraGood() const { return data == directory; }
    bool CacheGood() const { return cache_path.empty() || (cache_line == data && cache_data == data); }
};

Digests Collect(const zel::CameraInfo& camera, int speed, const CalibrationTable& table,
                const DirectoryDigests* directory) {
    Digests digests;
    digests.data = HexText(table.ComputeDigest());
    if (directory) digests.directory = HexText((*directory)[static_cast<std::size_t>(speed)]);
    const fs::path cache = CacheFile(camera, speed);
    digests.cache_path = Utf8Text(cache);
    if (cache.empty()) return digests;
    try {
        const CalibrationFile file = ReadCalibrationFile(cache);
        digests.cache_line = file.cache ? HexText(file.digest) : "none";
        digests.cache_data = HexText(file.table.ComputeDigest());
    } catch (const Failure& failure) {
        digests.cache_fault = failure.what();
    }
    return digests;
}

class CheckAction : public Command {
  public:
    const char* Name() const override { return "check"; }
    const char* Help() const override { return "Compare the digests of the camera, of its data and of the cache file"; }
    const char* Example() const override { return "check --camera 1"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        command.footer("A digest that differs is a failure. Without a cache file the camera alone is checked.\n" +
                       command.get_footer());
        DeclareJson(command);
    }

    void Run(Json& result) override {
        zel::Sdk sdk;
        zel::Camera camera = sdk.open(m_Camera);
        const CalibrationTables tables = ReadTables(camera);
        const std::optional<FlashDirectory> directory = ReadDirectory(camera);
        result = Json::array();
        std::string bad;
        for (int speed = 0; speed < kSpeeds; ++speed) {
            const CalibrationTable& table = tables[static_cast<std::size_t>(speed)];
            const Digests digests = Collect(camera.info(), speed, table, directory ? &directory->digests : nullptr);
            const std::string fault = table.Fault();
            if (!digests.CameraGood() || !digests.CacheGood() || !fault.empty()) {
                bad += (bad.empty() ? "" : " and ") + std::string(kSpeedNames[speed]);
            }
            m_Json ? result.push_back(ToJson(speed, digests, fault)) : PrintDigests(speed, digests, fault);
        }
        if (bad.empty()) return;
        throw Failure("the calibration of " + camera.label() + " is not as its digests say", bad,
                      "'zelcam calibrate download' makes new cache files, 'write' a new calibration");
    }

  private:
    static void PrintDigests(int speed, const Digests& digests, const std::string& fault) {
        const auto line = [](const char* what, const std::string& digest, const char* verdict) {
            Print("  {:<22} {:<40}  {}\n", what, digest, verdict);
        };
        const auto same = [&](const std::string& digest) { return digest == digests.data ? "same" : "DIFFERENT"; };
        Print("{}\n", kSpeedNames[speed]);
        line("data in the camera", digests.data, fault.empty() ? "" : ("BAD, " + fault).c_str());
        line("digest in the camera", digests.directory.empty() ? "-" : digests.directory,
             digests.directory.empty() ? "NOT TOLD" : same(digests.directory));
        if (digests.cache_path.empty()) return line("cache file", "-", "none");
        if (!digests.cache_fault.empty()) return line("cache file", "-", digests.cache_fault.c_str());
        line("digest in cache file", digests.cache_line, same(digests.cache_line));
        line("data in cache file", digests.cache_data, same(digests.cache_data));
    }

    static Json ToJson(int speed, const Digests& digests, const std::string& fault) {
        const auto known = [](const std::string& text) { return text.empty() ? Json() : Json(text); };
        return {{"table", kSpeedNames[speed]},
                {"camera_data", digests.data},
                {"camera_digest", known(digests.directory)},
                {"cache_file", known(digests.cache_path)},
                {"cache_digest", known(digests.cache_line)},
                {"cache_data", known(digests.cache_data)},
                {"fault", known(digests.cache_fault.empty() ? fault : digests.cache_fault)},
                {"camera_good", digests.CameraGood() && fault.empty()},
                {"cache_good", digests.CacheGood()}};
    }
};

}  // namespace

std::unique_ptr<Command> MakeCalibrateShow() { return std::make_unique<ShowAction>(); }
std::unique_ptr<Command> MakeCalibrateCheck() { return std::make_unique<CheckAction>(); }

}  // namespace zelcam
