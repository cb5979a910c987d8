#include "tools/zelcam/calibration/CalibrationCamera.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

#include "calibration/TableDirectory.h"
#include "platform/User.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Progress.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

constexpr std::size_t kSequence = 8;  // bytes that are read at a time

// Empty when there is no reply.
std::string Ask(const zel::Camera& camera, const std::string& command) {
    try {
        return Trim(camera.command(command));
    } catch (const zel::Error&) {
        return "";
    }
}

// Appends `count` bytes of the page that the camera has in hand.
bool ReadBytes(const zel::Camera& camera, std::size_t offset, std::size_t count, std::vector<std::uint8_t>& bytes) {
    std::istringstream words(Ask(camera, fmt::format("tb r {:x} {:x}", offset, count)));
    unsigned byte = 0;
    std::size_t got = 0;
    for (; words >> std::hex >> byte && byte <= 0xFF; ++got) bytes.push_back(static_cast<std::uint8_t>(byte));
    return words.eof() && got == count;
}

std::string SpeedLabel(const zel::Camera& camera, int speed) {
    return camera.label() + ", table " + kSpeedNames[speed];
}

CalibrationTable ReadTable(const zel::Camera& camera, int speed, Progress& progress) {
    ZelCameraInternal& internal = Internal(camera);
    int rows = 0;
    CalibrationTable table;
    if (!internal.TapBalanceSelectTable(speed) || !internal.TapBalanceGetTableConfig(&rows, &table.taps)) {
        throw Failure(camera.label() + " tells of no calibration tables",
                      "it has one tap, was never calibrated, or did not answer", "ZEL_LOG shows the conversation");
    }
    if (!zel::TapTable::IsValidShape(rows, table.taps + 1)) {
        throw Failure(SpeedLabel(camera, speed) + " makes no sense",
                      std::to_string(rows) + " rows of " + std::to_string(table.taps) + " taps",
                      "write a good one with 'zelcam calibrate write'");
    }
    for (int i = 0; i < rows; ++i) {
        CalibrationRow& row = table.rows.emplace_back();
        if (!internal.TapBalanceGetTableData(i, &row.millivolts, row.gains.data())) {
            throw Failure(SpeedLabel(camera, speed) + " can't be read",
                          "row " + std::to_string(i + 1) + " did not come", "check cable and power");
        }
        progress.Show(static_cast<std::uint64_t>(i) + 1, static_cast<std::uint64_t>(rows), kSpeedNames[speed]);
    }
    return table;
}

bool SetTable(ZelCameraInternal& internal, int speed, const CalibrationTable& table) {
    const int rows = static_cast<int>(table.rows.size());
    if (!internal.TapBalanceSelectTable(speed) || !internal.TapBalanceSetTableConfig(speed, rows, table.taps)) {
        return false;
    }
    for (int i = 0; i < rows; ++i) {
        const CalibrationRow& row = table.rows[static_cast<std::size_t>(i)];
        if (!internal.TapBalanceSetTableData(i, row.millivolts, row.gains.data())) return false;
    }
    return true;
}

}  // namespace

CalibrationTables ReadTables(const zel::Camera& camera) {
    Progress progress("reading");
    CalibrationTables tables;
    for (int speed = 0; speed < kSpeeds; ++speed) {
        tables[static_cast<std::size_t>(speed)] = ReadTable(camera, speed, progress);
    }
    return tables;
}

std::optional<FlashDirectory> ReadDirectory(const zel::Camera& camera) {
    if (Ask(camera, "tb g 0") != "OK") return std::nullopt;
    std::vector<std::uint8_t> read;
    zel::TableDirectory::Bytes bytes{};
    while (read.size() < bytes.size()) {
        if (!ReadBytes(camera, read.size(), std::min(kSequence, bytes.size() - read.size()), read)) return std::nullopt;
    }
    std::ranges::copy(read, bytes.begin());
    const zel::TableDirectory directory = zel::TableDirectory::Decode(bytes);
    FlashDirectory result{directory.num_tables != zel::TableDirectory::kEmpty, {}};
    std::ranges::transform(directory.entries, result.digests.begin(), &zel::TableEntry::digest);
    return result;
}

void WriteTables(const zel::Camera& camera, const CalibrationTables& tables) {
    ZelCameraInternal& internal = Internal(camera);
    const std::string advice = "the camera may now hold half a table: write again before it is used";
    for (int speed = 0; speed < kSpeeds; ++speed) {
        if (!SetTable(internal, speed, tables[static_cast<std::size_t>(speed)])) {
            throw Failure(SpeedLabel(camera, speed) + " was not taken", "nothing has been written", "");
        }
    }
    if (!internal.TapBalanceWriteTableConfigToCamera()) {
        throw Failure(camera.label() + " did not store the directory of its tables", "", advice);
    }
    if (!internal.TapBalanceWriteDataToCamera()) {
        throw Failure(camera.label() + " did not store its tables", "", advice);
    }
    const std::optional<FlashDirectory> directory = ReadDirectory(camera);
    const CalibrationTables stored = ReadTables(camera);
    for (std::size_t speed = 0; speed < tables.size(); ++speed) {
        const bool right = stored[speed] == tables[speed] && directory && directory->has_tables &&
                           directory->digests[speed] == tables[speed].ComputeDigest();
        if (!right) {
            throw Failure(SpeedLabel(camera, static_cast<int>(speed)) + " reads back differently", "", advice);
        }
    }
}

std::filesystem::path CacheFile(const zel::CameraInfo& camera, int speed) {
    const std::string folder = zel::platform::CalibrationFolder();
    const std::string ending = std::string("_") + kSpeedNames[speed] + ".txt";
    if (folder.empty() || camera.serial.empty()) return {};
    std::error_code error;
    for (std::filesystem::directory_iterator file(zel::platform::Utf8Path(folder), error), end; !error && file != end;
         file.increment(error)) {
        const std::string name = zel::platform::Utf8Text(file->path().filename());
        if (name.starts_with("zel_") && name.ends_with(ending) && name.find(camera.serial) != std::string::npos) {
            return file->path();
        }
    }
    return {};
}

}  // namespace zelcam
