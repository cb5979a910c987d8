#include "tools/zelcam/calibration/CalibrationTable.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>

#include "tapbalance/Sha1.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/OutputFile.h"

namespace zelcam {

namespace {

constexpr std::size_t kMostRows = 1000;
constexpr std::size_t kFewestRows = 4;  // a correction is computed from four rows at a time
constexpr float kLargestGain = 2.0f;
constexpr float kLargestLevel = 5000.0f;
constexpr std::uintmax_t kLargestFile = 1 << 20;

// NaN is outside, too.
bool Within(float value, float largest) { return value >= 0.0f && value <= largest; }

void AppendNumber(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

[[noreturn]] void FailToRead(const std::filesystem::path& path, const std::string& why) {
    throw Failure(path.string() + " is no calibration table", why, "");
}

// The lines of a file, one after another.
class LineReader {
  public:
    explicit LineReader(const std::filesystem::path& path) : m_Path(path), m_File(path) {
        if (!m_File) throw Failure(path.string() + " can't be read", "", "check the name");
        std::error_code error;
        if (std::filesystem::file_size(path, error) > kLargestFile) FailToRead(path, "it is too large");
    }

    std::vector<double> Numbers() {
        std::string line;
        if (!std::getline(m_File, line)) Fail("it ends too early");
        ++m_Line;
        std::istringstream words(line);
        std::vector<double> numbers;
        for (std::string word; words >> word;) {
            char* end = nullptr;
            numbers.push_back(std::strtod(word.c_str(), &end));
            if (*end != '\0') Fail("'" + word + "' is no number");
        }
        return numbers;
    }
    bool AtEnd() { return (m_File >> std::ws).eof(); }
    [[noreturn]] void Fail(const std::string& why) const {
        FailToRead(m_Path, "line " + std::to_string(m_Line) + ": " + why);
    }

  private:
    std::filesystem::path m_Path;
    std::ifstream m_File;
    int m_Line = 0;
};

// A whole number from 0 to `most`; -1 for any other.
int Whole(double value, int most) {
    return value >= 0.0 && value <= most && value == std::floor(value) ? static_cast<int>(value) : -1;
}

Digest DigestOfLine(const std::vector<double>& numbers, const LineReader& reader) {
    Digest digest;
    for (std::size_t i = 0; i < digest.size(); ++i) {
        const int byte = Whole(numbers[i], 255);
        if (byte < 0) reader.Fail("a digest consists of 20 numbers from 0 to 255");
        digest[i] = static_cast<std::uint8_t>(byte);
    }
    return digest;
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

std::string CalibrationTable::Fault() const {
    if (taps != 2 && taps != 4) return std::to_string(taps) + " taps; a table has 2 or 4";
    if (rows.size() < kFewestRows || rows.size() > kMostRows) {
        return std::to_string(rows.size()) + " rows; a table has 4 to 1000";
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::string where = "row " + std::to_string(i + 1) + ": ";
        if (!Within(rows[i].millivolts, kLargestLevel)) return where + "a level is 0 to 5000 mV";
        if (i > 0 && rows[i].millivolts <= rows[i - 1].millivolts) return where + "the levels must rise";
        for (int tap = 0; tap < taps; ++tap) {
            if (!Within(rows[i].gains[static_cast<std::size_t>(tap)], kLargestGain)) return where + "a gain is 0 to 2";
        }
    }
    return "";
}

// Taps, rows, then column after column, all little-endian.
Digest CalibrationTable::ComputeDigest() const {
    std::vector<std::uint8_t> bytes;
    AppendNumber(bytes, static_cast<std::uint32_t>(taps));
    AppendNumber(bytes, static_cast<std::uint32_t>(rows.size()));
    for (const CalibrationRow& row : rows) AppendNumber(bytes, std::bit_cast<std::uint32_t>(row.millivolts));
    for (std::size_t tap = 0; tap < static_cast<std::size_t>(taps); ++tap) {
        for (const CalibrationRow& row : rows) AppendNumber(bytes, std::bit_cast<std::uint32_t>(row.gains[tap]));
    }
    zel::Sha1 sha1;
    sha1.Update(bytes);
    return sha1.Finish();
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
    const std::string name = path.filename().string();
    for (int speed = 0; speed < kSpeeds; ++speed) {
        if (name.find(kSpeedNames[speed]) != std::string::npos) return speed;
    }
    throw Failure(path.string() + " belongs to no readout speed", "its name has neither 20MHz nor 40MHz in it",
                  "rename it");
}

CalibrationFile ReadCalibrationFile(const std::filesystem::path& path) {
    LineReader reader(path);
    CalibrationFile file;
    std::vector<double> numbers = reader.Numbers();
    if (numbers.size() == file.digest.size()) {
        file.cache = true;
        file.digest = DigestOfLine(numbers, reader);
        numbers = reader.Numbers();
    }
    if (numbers.size() != 2) reader.Fail("expected the number of rows and the number of taps");
    const int rows = Whole(numbers[0], kMostRows);
    file.table.taps = Whole(numbers[1], 4);
    if (rows < 0) reader.Fail("a table has 4 to 1000 rows");
    for (int i = 0; i < rows; ++i) {
        numbers = reader.Numbers();
        if (numbers.size() != 5) reader.Fail("a row has five numbers");
        CalibrationRow& row = file.table.rows.emplace_back();
        row.millivolts = static_cast<float>(numbers[0]);
        // What stands behind the last tap counts for nothing.
        for (int tap = 0; tap < file.table.taps; ++tap) {
            row.gains[static_cast<std::size_t>(tap)] = static_cast<float>(numbers[static_cast<std::size_t>(tap) + 1]);
        }
    }
    if (!reader.AtEnd()) reader.Fail("more lines follow than rows were announced");
    if (const std::string fault = file.table.Fault(); !fault.empty()) FailToRead(path, fault);
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
    WriteTextFile(path, text);
}

void WriteTextFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    const bool opened = file.good();
    file << text;
    file.close();
    if (!file) FailToWrite(path, opened);
}

}  // namespace zelcam
