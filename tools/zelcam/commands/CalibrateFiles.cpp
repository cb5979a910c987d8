// zelcam calibrate download, export, import, write: tables on their way between camera, cache and master files.
#include <cstdio>
#include <iostream>

#include "platform/UserTexts.h"
#include "tools/zelcam/calibration/CalibrationSource.h"
#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/commands/CalibrateActions.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/ProgressBar.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

namespace fs = std::filesystem;
using zel::platform::Utf8Path;
using zel::platform::Utf8Text;

std::string ShapeText(const CalibrationTable& table) {
    return std::to_string(table.rows.size()) + " rows, " + std::to_string(table.taps) + " taps";
}

fs::path MasterFile(const fs::path& folder, const std::string& prefix, std::size_t speed) {
    return folder / Utf8Path(prefix + "_" + kSpeedNames[speed] + ".txt");
}

// A beginning that no file in the folder has yet: an earlier backup may be all that is left of a camera's own tables.
std::string FreePrefix(const fs::path& folder, const std::string& prefix) {
    std::error_code error;
    std::string free = prefix;
    const auto taken = [&](std::size_t speed) { return fs::exists(MasterFile(folder, free, speed), error); };
    for (int number = 2; taken(0) || taken(1); ++number) free = fmt::format("{}{}", prefix, number);
    return free;
}

// Writes a camera's tables as master files. Result: their paths.
std::vector<fs::path> ExportTables(const CalibrationTables& tables, const fs::path& folder, const std::string& prefix) {
    std::error_code error;
    fs::create_directories(folder, error);
    std::vector<fs::path> paths;
    for (std::size_t speed = 0; speed < tables.size(); ++speed) {
        paths.push_back(MasterFile(folder, prefix, speed));
        WriteMasterFile(paths.back(), tables[speed]);
    }
    return paths;
}

class DownloadAction : public Command {
  public:
    const char* Name() const override { return "download"; }
    const char* Help() const override { return "Have the SDK fetch the tables into this computer's cache files"; }
    const char* Example() const override { return "download --camera 1"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        command.add_flag("--again", m_Again, "Even when the cache files are there and right");
        DeclareJson(command);
    }

    void Run(Json& result) override {
        zel::Sdk sdk;
        const zel::CameraInfo info = sdk.info(zel::select_camera(sdk.cameras(), m_Camera));
        if (m_Again) RemoveCache(info);
        const ProgressBar bar("camera " + std::to_string(info.number), !m_Json);
        zel::Camera camera = sdk.open_found(info.number, {.calibrated = true});
        if (!camera.set_calibration(true)) {
            throw Failure(camera.label() + " gave no calibration that can be used",
                          "it has one tap, was never calibrated, or the data were damaged on the way",
                          "see 'zelcam calibrate check'");
        }
        const bool downloaded = bar.Reported();
        const CalibrationSource source = FindCalibrationSource(camera);
        if (downloaded && source.name != "cache") {
            throw Failure("the tables of " + camera.label() + " came, but are not in its cache files", source.why,
                          "check the calibration folder's rights and the disk's room; every program downloads anew",
                          kOutput);
        }
        Report(info, downloaded, source, result);
    }

  private:
    void Report(const zel::CameraInfo& info, bool downloaded, const CalibrationSource& source, Json& result) const {
        Json files = Json::array();
        for (int speed = 0; source.name == "cache" && speed < kSpeeds; ++speed) {
            files.push_back(Utf8Text(CacheFile(info, speed)));
        }
        if (m_Json) {
            result = Json{{"camera", ToJson(info)}, {"downloaded", downloaded}, {"cache_files", files}};
            return;
        }
        Print("camera {}: {}\n", info.number,
              downloaded      ? "downloaded"
              : files.empty() ? "nothing to download, calibrated from " + source.Text()
                              : "the cache files are right already");
        for (const Json& file : files) Print("{}\n", file.get<std::string>());
    }
    static void RemoveCache(const zel::CameraInfo& camera) {
        for (int speed = 0; speed < kSpeeds; ++speed) {
            std::error_code ignored;
            fs::remove(CacheFile(camera, speed), ignored);
        }
    }

    bool m_Again = false;
};

class ExportAction : public Command {
  public:
    const char* Name() const override { return "export"; }
    const char* Help() const override { return "Save the tables in the camera as master files"; }
    const char* Example() const override { return "export --camera 1 --out tables"; }

    void Declare(CLI::App& command) override {
        DeclareCamera(command);
        command.add_option("-o,--out", m_Out, "Folder for the files, made when missing")->capture_default_str();
        command.add_option("-p,--prefix", m_Prefix, "Beginning of the file names (default: the serial number)");
        DeclareJson(command);
    }

    void Run(Json& result) override {
        zel::Sdk sdk;
        zel::Camera camera = sdk.open(m_Camera);
        const std::string prefix = m_Prefix.empty() ? camera.info().serial : m_Prefix;
        const std::vector<fs::path> paths = ExportTables(ReadTables(camera), Utf8Path(m_Out), prefix);
        for (const fs::path& path : paths) {
            m_Json ? result["files"].push_back(Utf8Text(path)) : Print("{}\n", Utf8Text(path));
        }
    }

  private:
    std::string m_Out = ".";
    std::string m_Prefix;
};

// The files that a user names, each under the speed that its name tells.
class TableFiles {
  public:
    void Declare(CLI::App& command) {
        command.add_option("files", m_Paths, "Master files, with 20MHz or 40MHz in their names")
            ->required()
            ->expected(1, kSpeeds);
    }

    void Read() {
        for (const std::string& path : m_Paths) {
            const auto speed = static_cast<std::size_t>(SpeedOfFile(Utf8Path(path)));
            if (!m_Names[speed].empty()) {
                throw Failure("two files for one table", m_Names[speed] + " and " + path, "", kUsage);
            }
            m_Tables[speed] = ReadCalibrationFile(Utf8Path(path)).table;
            m_Names[speed] = path;
        }
    }
    bool Has(std::size_t speed) const { return !m_Names[speed].empty(); }
    const std::string& Name(std::size_t speed) const { return m_Names[speed]; }
    const CalibrationTable& Table(std::size_t speed) const { return m_Tables[speed]; }

  private:
    std::vector<std::string> m_Paths;
    std::array<std::string, kSpeeds> m_Names;
    CalibrationTables m_Tables;
};

class ImportAction : public Command {
  public:
    const char* Name() const override { return "import"; }
    const char* Help() const override { return "Load master files into the SDK and compare them with the camera"; }
    const char* Example() const override { return "import tables/400101_20MHz.txt --camera 1"; }

    void Declare(CLI::App& command) override {
        m_Files.Declare(command);
        DeclareCamera(command);
        command.footer("Nothing is written; 'zelcam calibrate write' writes files into the camera.\n" +
                       command.get_footer());
        DeclareJson(command);
    }

    void Run(Json& result) override {
        m_Files.Read();
        zel::Sdk sdk;
        zel::Camera camera = sdk.open(m_Camera);
        const CalibrationTables present = ReadTables(camera);
        result = Json::array();
        for (std::size_t speed = 0; speed < present.size(); ++speed) {
            if (!m_Files.Has(speed)) continue;
            if (!Internal(camera).TapBalanceLoadDataFromMasterFile(
                    zel::platform::SystemPath(m_Files.Name(speed)).c_str())) {
                throw Failure(m_Files.Name(speed) + " was not loaded", "the SDK refused it",
                              "ZEL_LOG tells why (docs/zelcam.md)", kRefused);
            }
            const CalibrationTable& table = m_Files.Table(speed);
            const bool same = table == present[speed];
            const double difference = table.LargestDifference(present[speed]);
            if (m_Json) {
                result.push_back({{"table", kSpeedNames[speed]},
                                  {"file", m_Files.Name(speed)},
                                  {"rows", table.rows.size()},
                                  {"taps", table.taps},
                                  {"same_as_camera", same},
                                  {"largest_difference", difference}});
                continue;
            }
            Print("{}: {}, {}; ", kSpeedNames[speed], m_Files.Name(speed), ShapeText(table));
            if (same) {
                Print("the same as in the camera\n");
            } else {
                Print("the camera has {}, gains differ by up to {:.5f}\n", ShapeText(present[speed]), difference);
            }
        }
    }

  private:
    TableFiles m_Files;
};

class WriteAction : public Command {
  public:
    const char* Name() const override { return "write"; }
    const char* Help() const override { return "Write master files into the camera's flash memory"; }
    const char* Example() const override { return "write tables/400101_20MHz.txt --camera 1"; }

    void Declare(CLI::App& command) override {
        m_Files.Declare(command);
        DeclareCamera(command);
        command.add_flag("-y,--yes", m_Yes, "Do not ask");
        command
            .add_option("--backup", m_Backup,
                        "Folder for the tables that are overwritten in the camera; earlier backups stay")
            ->capture_default_str();
        command.footer("A table that no file is given for stays. Both are written and read back.\n" +
                       command.get_footer());
        DeclareJson(command);
    }

    void Run(Json& result) override {
        m_Files.Read();
        zel::Sdk sdk;
        zel::Camera camera = sdk.open(m_Camera);
        const std::optional<CalibrationTables> present = Present(camera);
        CalibrationTables tables = Merge(present);
        if (!m_Yes) Confirm(camera);
        std::vector<fs::path> backup;
        if (present) {
            const fs::path folder = Utf8Path(m_Backup);
            backup = ExportTables(*present, folder, FreePrefix(folder, camera.info().serial + "_before"));
        }
        WriteTables(camera, tables);
        Report(camera, tables, backup, result);
    }

  private:
    // A camera that was never calibrated has none.
    static std::optional<CalibrationTables> Present(zel::Camera& camera) {
        try {
            return ReadTables(camera);
        } catch (const Failure&) {
            return std::nullopt;
        }
    }

    CalibrationTables Merge(const std::optional<CalibrationTables>& present) const {
        CalibrationTables tables;
        for (std::size_t speed = 0; speed < tables.size(); ++speed) {
            if (!m_Files.Has(speed) && !present) {
                throw Failure(std::string("no file for the ") + kSpeedNames[speed] + " table",
                              "the camera has none that could stay", "give both files");
            }
            tables[speed] = m_Files.Has(speed) ? m_Files.Table(speed) : (*present)[speed];
        }
        if (tables[0].taps != tables[1].taps) {
            throw Failure("the two tables have different numbers of taps", "", "give two files of the same camera");
        }
        return tables;
    }

    void Confirm(const zel::Camera& camera) const {
        std::fprintf(stderr, "This overwrites the calibration of %s (serial number %s):\n", camera.label().c_str(),
                     camera.info().serial.c_str());
        for (std::size_t speed = 0; speed < kSpeeds; ++speed) {
            if (!m_Files.Has(speed)) continue;
            std::fprintf(stderr, "  %s <- %s, %s\n", kSpeedNames[speed], m_Files.Name(speed).c_str(),
                         ShapeText(m_Files.Table(speed)).c_str());
        }
        std::fprintf(stderr, "Type yes to go on: ");
        std::string answer;
        std::getline(std::cin, answer);
        if (Trim(answer) != "yes") {
            throw Failure("nothing was written", "the answer was not 'yes'", "answer, or give --yes");
        }
    }

    void Report(const zel::Camera& camera, const CalibrationTables& tables, const std::vector<fs::path>& backup,
                Json& result) const {
        Json json{{"camera", ToJson(camera.info())}, {"tables", Json::array()}, {"backup", Json::array()}};
        for (std::size_t speed = 0; speed < tables.size(); ++speed) {
            const std::string digest = HexText(tables[speed].ComputeDigest());
            json["tables"].push_back({{"table", kSpeedNames[speed]}, {"digest", digest}});
            if (!m_Json) Print("{} written and read back, digest {}\n", kSpeedNames[speed], digest);
        }
        for (const fs::path& path : backup) {
            json["backup"].push_back(Utf8Text(path));
            if (!m_Json) Print("before: {}\n", Utf8Text(path));
        }
        if (m_Json) result = json;
    }

    TableFiles m_Files;
    bool m_Yes = false;
    std::string m_Backup = ".";
};

}  // namespace

std::unique_ptr<Command> MakeCalibrateDownload() { return std::make_unique<DownloadAction>(); }
std::unique_ptr<Command> MakeCalibrateExport() { return std::make_unique<ExportAction>(); }
std::unique_ptr<Command> MakeCalibrateImport() { return std::make_unique<ImportAction>(); }
std::unique_ptr<Command> MakeCalibrateWrite() { return std::make_unique<WriteAction>(); }

}  // namespace zelcam
