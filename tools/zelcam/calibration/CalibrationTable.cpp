#include "tools/zelcam/calibration/CalibrationTable.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>

#include "calibration/TableText.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/OutputFile.h"

namespace zelcam {

namespace {

constexpr std::size_t kFewestRows = 4;  // a correction is computed from four rows at a time
constexpr std::uintmax_t kLargestFile = 1 << 20;

constexpr const char* kLevelBounds = "a level is 0 to 5000 mV";
constexpr const char* kGainBounds = "a gain is 0 to 2";
constexpr const char* kRowBounds = "a table has 4 to 1000 rows";

[[noreturn]] void FailToRead(const std::filesystem::path& path, const std::string& why) {
    throw Failure(zel::platform::Utf8Text(path) + " is no calibration table", why, "");
}

std::string FileContents(const std::filesystem::path& path) {
    std::ifstream file(path);
    if (!file) throw Failure(zel::platform::Utf8Text(path) + " can't be read", "", "check the name");
    std::error_code error;
    if (std::filesystem::file_size(path, error) > kLargestFile) FailToRead(path, "it is too large");
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::string> WordsOfLine(const std::string& text, int number) {
    std::istringstream lines(text);
    std::string line;
    for (int i = 0; i < number; ++i) std::getline(lines, line);
    std::istringstream words(line);
    return std::vector<std::string>(std::istream_iterator<std::string>(words), {});
}

// What makes this text no table's, for the user.
std::string Reason(const zel::TableTextFault& fault, const std::string& text) {
    using Kind = zel::TableTextFault::Kind;
    const std::string line = "line " + std::to_string(fault.line) + ": ";
    if (fault.kind == Kind::kMoreLines) return line + "more lines follow than rows were announced";
    if (fault.ended) return line + "it ends too early";
    for (const std::string& word : WordsOfLine(text, fault.line)) {
        char* end = nullptr;
        std::strtod(word.c_str(), &end);
        if (*end != '\0') return line + "'" + word + "' is no number";
    }
    switch (fault.kind) {
        case Kind::kDigest:
            return line + "a digest consists of 20 numbers from 0 to 255";
        case Kind::kShape:
            return line + "expected the number of rows and the number of taps";
        case Kind::kTaps:
            return std::to_string(fault.number) + " taps; a table has 2 or 4";
        case Kind::kRows:
            return line + kRowBounds;
        case Kind::kValue:
            return "row " + std::to_string(fault.row) + ": " + (fault.number == 0 ? kLevelBounds : kGainBounds);
        default:
            return line + "a row has five numbers";
    }
}

}  // namespace

std::string HexText(const Digest& digest) {
    std::string text;
    for (const unsigned byte : digest) {
        char two[3];
        std::snprintf(two, sizeof two, "%02x", byte);
        text += two;
    }
    return text;
}

CalibrationTable::CalibrationTable(const zel::TapTable& table) : taps(table.Taps()) {
    for (int row = 0; row < table.Rows(); ++row) rows.push_back(table.Row(row));
}

std::string CalibrationTable::Fault() const {
    if (rows.size() < kFewestRows || rows.size() > static_cast<std::size_t>(zel::TapTable::kMostRows)) {
        return std::to_string(rows.size()) + " rows; a table has 4 to 1000";
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::string where = "row " + std::to_string(i + 1) + ": ";
        if (!zel::IsGoodLevel(rows[i].millivolts)) return where + kLevelBounds;
        if (i > 0 && rows[i].millivolts <= rows[i - 1].millivolts) return where + "the levels must rise";
        if (!zel::IsGoodRow(rows[i], taps)) return where + kGainBounds;
    }
    return "";
}

Digest CalibrationTable::ComputeDigest() const {
    zel::TapTable table(static_cast<int>(rows.size()), taps);
    for (int row = 0; row < table.Rows(); ++row) table.SetRow(row, rows[static_cast<std::size_t>(row)]);
    return table.Digest();
}

double CalibrationTable::LargestDifference(const CalibrationTable& other) const {
    if (taps != other.taps || rows.size() != other.rows.size()) return std::numeric_limits<double>::infinity();
    double largest = 0.0;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t tap = 0; tap < static_cast<std::size_t>(taps); ++tap) {
            const double difference = static_cast<double>(rows[row].gains[tap]) - other.rows[row].gains[tap];
            largest = std::max(largest, std::fabs(difference));
        }
    }
    return largest;
}

Json CalibrationTable::ToJson() const {
    Json json{{"taps", taps}, {"digest", HexText(ComputeDigest())}, {"rows", Json::array()}};
    for (const CalibrationRow& row : rows) {
        Json gains = Json::array();
        for (std::size_t tap = 0; tap < static_cast<std::size_t>(taps); ++tap) gains.push_back(row.gains[tap]);
        json["rows"].push_back({{"millivolts", row.millivolts}, {"gains", gains}});
    }
    return json;
}

int SpeedOfFile(const std::filesystem::path& path) {
    const int speed = zel::TableOfFileName(zel::platform::Utf8Text(path.filename()));
    if (speed >= 0) return speed;
    throw Failure(zel::platform::Utf8Text(path) + " belongs to no readout speed",
                  "its name has neither 20MHz nor 40MHz in it", "rename it");
}

CalibrationFile ReadCalibrationFile(const std::filesystem::path& path) {
    const std::string text = FileContents(path);
    CalibrationFile file;
    zel::TableTextFault fault;
    std::optional<zel::TapTable> table;
    if (WordsOfLine(text, 1).size() == file.digest.size()) {
        if (const std::optional<zel::CacheFile> cache = zel::ParseCacheFile(text, fault)) {
            file.cache = true;
            file.digest = cache->digest;
            table = cache->table;
        }
    } else {
        table = zel::ParseMasterFile(text, zel::Remarks::kNone, fault);
    }
    if (!table) FailToRead(path, Reason(fault, text));
    file.table = CalibrationTable(*table);
    if (const std::string wrong = file.table.Fault(); !wrong.empty()) FailToRead(path, wrong);
    return file;
}

void WriteMasterFile(const std::filesystem::path& path, const CalibrationTable& table) {
    std::string text = std::to_string(table.rows.size()) + " " + std::to_string(table.taps) + "\n";
    for (const CalibrationRow& row : table.rows) {
        char line[128];
        std::snprintf(line, sizeof line, "%.9g %.9g %.9g %.9g %.9g\n", static_cast<double>(row.millivolts),
                      static_cast<double>(row.gains[0]), static_cast<double>(row.gains[1]),
                      static_cast<double>(row.gains[2]), static_cast<double>(row.gains[3]));
        text += line;
    }
    WriteWhole(path, text);
}

}  // namespace zelcam
