// Calibration tables of the tool: files, plot; and the measurement of seams.

#include <limits>

#include "tests/tools/zelcam/commands/ToolProcess.h"
#include "tools/zelcam/calibration/CalibrationPlot.h"
#include "tools/zelcam/calibration/CalibrationTable.h"
#include "tools/zelcam/calibration/Seams.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

using testing::HasSubstr;

static CalibrationTable GoodTable(int taps) {
    CalibrationTable table;
    table.taps = taps;
    for (float i = 0; i < 5; ++i) table.rows.push_back({i * 100.1f, {1.0f, 1.01f + 0.0001f * i}});
    return table;
}

TEST(CalibrationFileTest, BadFilesAreRefusedWithTheirLine) {
    const std::string rows = "0 1 1 0 0\n1 1 1 0 0\n2 1 1 0 0\n3 1 1 0 0\n";
    const std::string digest = "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 ";
    const std::pair<std::string, const char*> cases[] = {
        {"", "line 0: it ends too early"},
        {"4 2 1\n" + rows, "line 1: expected the number of rows and the number of taps"},
        {"5 2\n" + rows, "line 5: it ends too early"},
        {"3 2\n" + rows, "line 4: more lines follow"},
        {"4 3\n" + rows, ": 3 taps; a table has 2 or 4"},
        {"1001 2\n" + rows, "line 1: a table has 4 to 1000 rows"},
        {"3 2\n" + rows.substr(0, 30), ": 3 rows; a table has 4 to 1000"},
        {"4 2\n0 1 1 0\n", "line 2: a row has five numbers"},
        {"4 2\n0 1 1 0 0\n1 one 1 0 0\n", "line 3: 'one' is no number"},
        {"4 2\n-1 1 1 0 0\n" + rows.substr(10), "row 1: a level is 0 to 5000 mV"},
        {"4 2\n0 1 1 0 0\n1 2.0001 1 0 0\n" + rows.substr(20), "row 2: a gain is 0 to 2"},
        {"4 2\n0 1 1 0 0\n1 1 nan 0 0\n" + rows.substr(20), "row 2: a gain is 0 to 2"},
        {"4 2\n0 1 1 0 0\n0 1 1 0 0\n" + rows.substr(20), "row 2: the levels must rise"},
        {digest + "256\n4 2\n" + rows, "line 1: a digest consists of 20 numbers from 0 to 255"},
        {std::string(2 << 20, '1'), "too large"},
    };
    const TemporaryFolder folder;
    const std::string path = folder / "bad_20MHz.txt";
    const auto read = [&] { ReadCalibrationFile(path); };
    EXPECT_THAT(read, testing::ThrowsMessage<Failure>(HasSubstr("can't be read")));
    for (const auto& [text, reason] : cases) {
        std::ofstream(path, std::ios::binary) << text;
        EXPECT_THAT(read, testing::ThrowsMessage<Failure>(HasSubstr(reason))) << text.substr(0, 60);
    }
    std::ofstream(path, std::ios::binary) << digest << "255\n4 2\n" << rows;
    const CalibrationFile cache = ReadCalibrationFile(path);
    EXPECT_EQ(HexText(cache.cache ? cache.digest : Digest()), "000102030405060708090a0b0c0d0e0f101112ff");
}

// Whatever the numbers are, flat gains and those that no plot can show included.
TEST(CalibrationPlotTest, HasACurveForEachTapInsideThePicture) {
    using Limits = std::numeric_limits<float>;
    CalibrationTable nonsense = GoodTable(4);
    nonsense.rows[1] = {Limits::infinity(), {Limits::quiet_NaN(), -Limits::infinity(), Limits::max(), 0}};
    for (const CalibrationTable& table : {GoodTable(2), nonsense, CalibrationTable()}) {
        const std::string svg = PlotSvg(table, "a <camera> & more");
        EXPECT_THAT(svg, testing::AllOf(HasSubstr("a &lt;camera> &amp; more"), HasSubstr("</svg>")));
        int curves = 0;
        for (std::size_t at = 0; (at = svg.find("<path d=\"", at)) != std::string::npos;) {
            std::istringstream points(svg.substr(at += 9));
            std::size_t inside = 0;
            char letter = 0, comma = 0;
            for (double x = 0, y = 0; points >> letter >> x >> comma >> y;)
                inside += x >= 0.0 && x <= 720.0 && y >= 0.0 && y <= 440.0;
            curves += inside == table.rows.size();
        }
        EXPECT_EQ(curves, table.taps);
    }
}

// A sloping scene read by four taps of different offsets: steps of the offsets' differences, whatever the slope.
TEST(SeamMeterTest, MeasuresTheStepAndNotTheSlope) {
    constexpr unsigned kW = 300, kH = 260;
    constexpr unsigned kOffsets[] = {5000, 5040, 5100, 5010};  // clockwise
    std::vector<std::uint16_t> pixels(kW * kH);
    for (unsigned i = 0; i < kW * kH; ++i) {
        const unsigned x = i % kW, y = i / kW, right = x >= kW / 2;
        pixels[i] = static_cast<std::uint16_t>(kOffsets[y < kH / 2 ? right : 3 - right] + 4 * x - 6 * y);
    }
    SeamMeter meter, small;
    EXPECT_TRUE(meter.Seams(4).empty());
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(meter.Add(pixels, kW, kH));
    EXPECT_FALSE(meter.Add(pixels, kH, kW) || meter.Add(std::span(pixels).first(9), kW, kH));
    EXPECT_EQ(meter.Frames(), 3u);
    const auto is = [](const char* name, double step) {
        return testing::AllOf(testing::Field(&Seam::name, name), testing::Field(&Seam::error, testing::Lt(0.5)),
                              testing::Field(&Seam::step, testing::DoubleNear(step, 0.5)));
    };
    EXPECT_THAT(meter.Seams(4), testing::ElementsAre(is("1|2", 40), is("4|3", 90), is("1|4", 10), is("2|3", 60)));
    EXPECT_EQ(meter.Seams(2).size() + meter.Seams(1).size(), 1u);
    ASSERT_TRUE(small.Add(std::span(pixels).first(100 * 200), 100, 200));
    EXPECT_TRUE(small.Seams(4).empty());
}

}  // namespace zelcam
