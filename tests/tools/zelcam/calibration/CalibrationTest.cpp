// Calibration tables of the tool: files, digest, plot; and the measurement of seams.
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "tests/tools/zelcam/commands/ToolProcess.h"
#include "tools/zelcam/calibration/CalibrationPlot.h"
#include "tools/zelcam/calibration/CalibrationTable.h"
#include "tools/zelcam/calibration/Seams.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

using testing::HasSubstr;

namespace {

CalibrationTable GoodTable(int taps, int rows = 5) {
    CalibrationTable table;
    table.taps = taps;
    for (int i = 0; i < rows; ++i) {
        CalibrationRow& row = table.rows.emplace_back();
        row.millivolts = static_cast<float>(i) * 100.1f;
        for (std::size_t tap = 0; tap < static_cast<std::size_t>(taps); ++tap) {
            row.gains[tap] = 1.0f + 0.01f * static_cast<float>(tap) + 0.0001f * static_cast<float>(i);
        }
    }
    return table;
}

std::string ReadFailure(const std::string& path) {
    try {
        ReadCalibrationFile(path);
        return "";
    } catch (const Failure& failure) {
        return failure.what();
    }
}

}  // namespace

TEST(CalibrationFileTest, AMasterFileGivesEveryBitBack) {
    const TemporaryFolder folder;
    for (const int taps : {2, 4}) {
        CalibrationTable table = GoodTable(taps);
        table.rows[1].gains[0] = std::nextafter(1.0f, 0.0f);
        table.rows[4].millivolts = 5000.0f;
        table.rows[4].gains[1] = 2.0f;
        WriteMasterFile(folder / "x_40MHz.txt", table);
        const CalibrationFile file = ReadCalibrationFile(folder / "x_40MHz.txt");
        EXPECT_EQ(file.table, table);
        EXPECT_FALSE(file.cache);
        EXPECT_EQ(file.table.ComputeDigest(), table.ComputeDigest());
    }
    EXPECT_EQ(SpeedOfFile("a20MHz/x_40MHz.txt"), 1);
    EXPECT_EQ(SpeedOfFile("x_20MHz_new.txt"), 0);
    EXPECT_THROW(SpeedOfFile("20MHz/x.txt"), Failure);
    EXPECT_THROW(WriteMasterFile(folder / "no/x_20MHz.txt", GoodTable(2)), Failure);
}

TEST(CalibrationFileTest, BadFilesAreRefusedWithTheirLine) {
    const std::string rows = "0 1 1 0 0\n1 1 1 0 0\n2 1 1 0 0\n3 1 1 0 0\n";
    const std::string digest = "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 255\n";
    const struct {
        std::string text;
        const char* reason;
    } cases[] = {
        {"", "line 0: it ends too early"},
        {"4\n" + rows, "line 1: expected the number of rows"},
        {"4 2 1\n" + rows, "line 1: expected the number of rows"},
        {"5 2\n" + rows, "line 5: it ends too early"},
        {"3 2\n" + rows, "line 4: more lines follow"},
        {"4 3\n" + rows, "3 taps"},
        {"4 -2\n" + rows, "-1 taps"},
        {"1001 2\n" + rows, "line 1: a table has 4 to 1000 rows"},
        {"2e9 2\n" + rows, "line 1: a table has 4 to 1000 rows"},
        {"3 2\n0 1 1 0 0\n1 1 1 0 0\n2 1 1 0 0\n", "3 rows"},
        {"4 2\n0 1 1 0\n", "line 2: a row has five numbers"},
        {"4 2\n0 1 1 0 0\n1 one 1 0 0\n", "line 3: 'one' is no number"},
        {"4 2\n0 1 1 0 0\n1 2.0001 1 0 0\n2 1 1 0 0\n3 1 1 0 0\n", "row 2: a gain is 0 to 2"},
        {"4 2\n0 1 1 0 0\n1 nan 1 0 0\n2 1 1 0 0\n3 1 1 0 0\n", "row 2: a gain is 0 to 2"},
        {"4 2\n0 1 1 0 0\n1 1 -1e-9 0 0\n2 1 1 0 0\n3 1 1 0 0\n", "row 2: a gain is 0 to 2"},
        {"4 2\n0 1 1 0 0\n1 1 1 0 0\n2 1 1 0 0\ninf 1 1 0 0\n", "row 4: a level is 0 to 5000"},
        {"4 2\n0 1 1 0 0\n1 1 1 0 0\n1 1 1 0 0\n3 1 1 0 0\n", "row 3: the levels must rise"},
        {"0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18\n4 2\n" + rows, "line 1: expected the number of rows"},
        {"0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 256\n4 2\n" + rows, "line 1: a digest"},
        {digest, "line 1: it ends too early"},
        {std::string(2 << 20, '1'), "too large"},
    };
    const TemporaryFolder folder;
    const std::string path = folder / "bad_20MHz.txt";
    for (const auto& c : cases) {
        std::ofstream(path, std::ios::binary) << c.text;
        EXPECT_THAT(ReadFailure(path), HasSubstr(c.reason)) << c.text.substr(0, 60);
    }
    EXPECT_THAT(ReadFailure(folder / "none"), HasSubstr("can't be read"));
    std::ofstream(path, std::ios::binary) << digest << "4 2\n" << rows;
    const CalibrationFile cache = ReadCalibrationFile(path);
    EXPECT_TRUE(cache.cache);
    EXPECT_EQ(HexText(cache.digest), "000102030405060708090a0b0c0d0e0f101112ff");
}

// Digests computed with another program from the same bytes.
TEST(CalibrationTableTest, DigestCoversTapsRowsAndColumns) {
    CalibrationTable table = GoodTable(2, 4);
    for (std::size_t i = 0; i < 4; ++i) table.rows[i] = {static_cast<float>(i), {1.0f, 0.5f}};
    EXPECT_EQ(HexText(table.ComputeDigest()), "c98e293455413886eeb085f726eeb277c56fe55d");
    table.rows[3].gains[2] = 9.0f;  // behind the last tap
    EXPECT_EQ(HexText(table.ComputeDigest()), "c98e293455413886eeb085f726eeb277c56fe55d");
    table.taps = 4;
    EXPECT_EQ(HexText(table.ComputeDigest()), "f6686df9382b1ec2a034413dcf64425821c89161");
}

TEST(CalibrationTableTest, DifferenceIsThatOfGainsOfTablesOfOneShape) {
    const CalibrationTable table = GoodTable(4);
    CalibrationTable other = table;
    other.rows[2].gains[3] -= 0.25f;
    EXPECT_NEAR(table.LargestDifference(other), 0.25, 1e-6);
    EXPECT_EQ(table.LargestDifference(table), 0.0);
    EXPECT_EQ(table.LargestDifference(GoodTable(2)), std::numeric_limits<double>::infinity());
}

TEST(CalibrationPlotTest, HasACurveForEachTapInsideThePicture) {
    for (const int taps : {2, 4}) {
        CalibrationTable table = GoodTable(taps, 9);
        const std::string svg = PlotSvg(table, "a <camera> & more");
        EXPECT_THAT(svg, HasSubstr("a &lt;camera> &amp; more"));
        std::size_t curves = 0;
        for (std::size_t at = svg.find("<path d=\""); at != std::string::npos; at = svg.find("<path d=\"", at + 1)) {
            std::istringstream points(svg.substr(at + 9, svg.find('"', at + 9) - at - 9));
            int count = 0;
            char letter = 0;
            char comma = 0;
            for (double x = 0, y = 0; points >> letter >> x >> comma >> y; ++count) {
                EXPECT_TRUE(x >= 0.0 && x <= 720.0 && y >= 0.0 && y <= 440.0) << x << ' ' << y;
            }
            curves += count == 9;
        }
        EXPECT_EQ(curves, static_cast<std::size_t>(taps));
    }
    // Flat gains, and numbers that no plot can show, still give a document.
    CalibrationTable flat = GoodTable(2);
    for (CalibrationRow& row : flat.rows) row.gains = {1.0f, 1.0f};
    EXPECT_THAT(PlotSvg(flat, ""), HasSubstr("</svg>"));
    flat.rows[0].gains[0] = std::numeric_limits<float>::quiet_NaN();
    flat.rows[1].gains[0] = std::numeric_limits<float>::infinity();
    flat.rows[2].gains[0] = std::numeric_limits<float>::max();
    EXPECT_THAT(PlotSvg(flat, ""), HasSubstr("</svg>"));
    EXPECT_THAT(PlotSvg({}, ""), HasSubstr("</svg>"));
}

// A sloping scene read by four taps of gains 1, 1.1, 1.3 and 1.6: steps of the gains' differences, whatever the slope.
TEST(SeamMeterTest, MeasuresTheStepAndNotTheSlope) {
    constexpr unsigned kW = 300;
    constexpr unsigned kH = 260;
    std::vector<std::uint16_t> pixels(kW * kH);
    for (unsigned y = 0; y < kH; ++y) {
        for (unsigned x = 0; x < kW; ++x) {
            const double gain = y < kH / 2 ? (x < kW / 2 ? 1.0 : 1.1) : (x < kW / 2 ? 1.6 : 1.3);
            pixels[y * kW + x] = static_cast<std::uint16_t>(std::lround(gain * (5000.0 + 4.0 * x - 6.0 * y)));
        }
    }
    SeamMeter meter;
    EXPECT_TRUE(meter.Seams(4).empty());
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(meter.Add(pixels, kW, kH));
    EXPECT_FALSE(meter.Add(pixels, kH, kW));
    EXPECT_FALSE(meter.Add(std::span(pixels).first(9), kW, kH));
    EXPECT_EQ(meter.Frames(), 3u);
    const std::vector<Seam> seams = meter.Seams(4);
    ASSERT_EQ(seams.size(), 4u);
    // The scene's value in the middle of each seam: half of what the rectangle leaves out is at its corner.
    const auto scene = [](double x, double y) { return 5000.0 + 4.0 * x - 6.0 * y; };
    const double reach = SeamMeter::kReach;
    const struct {
        const char* name;
        double step;
    } expected[] = {
        {"1|2", 0.1 * scene(kW / 2 - 0.5, (kH / 2 - reach) / 2 - 0.5)},
        {"4|3", -0.3 * scene(kW / 2 - 0.5, (kH + kH / 2 + reach) / 2 - 0.5)},
        {"1|4", 0.6 * scene((kW / 2 - reach) / 2 - 0.5, kH / 2 - 0.5)},
        {"2|3", 0.2 * scene((kW + kW / 2 + reach) / 2 - 0.5, kH / 2 - 0.5)},
    };
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(seams[i].name, expected[i].name);
        EXPECT_NEAR(seams[i].step, expected[i].step, 0.5) << seams[i].name;
        EXPECT_LT(seams[i].error, 0.5);
    }
    EXPECT_EQ(meter.Seams(2).size(), 1u);
    EXPECT_TRUE(meter.Seams(1).empty());
    SeamMeter small;
    ASSERT_TRUE(small.Add(std::span(pixels).first(100 * 200), 100, 200));
    EXPECT_TRUE(small.Seams(4).empty());
}

}  // namespace zelcam
