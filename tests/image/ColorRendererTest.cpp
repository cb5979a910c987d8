// The color steps alone: settings, and the picture that they make of a frame.
#include "image/ColorRenderer.h"

#include <gmock/gmock.h>

#include <limits>

#include "include/ZelCamera.h"
#include "tests/image/Record.h"

namespace zel::test {
namespace {

using Matrix = std::array<float, 9>;
using Kind = ColorPipeline::Kind;

struct ColorRendererTest : testing::Test {
    Matrix Transform() {
        Matrix matrix{};
        EXPECT_TRUE(m_Pipeline.CopyTransform(matrix.data()));
        return matrix;
    }
    Logger m_Logger{"ColorRendererTest"};
    ColorRenderer m_Renderer{m_Logger};
    ColorPipeline m_Pipeline{Kind::kMain, m_Logger};
};

// The matrix concatenated last acts first: T x M. An operation that does not exist changes nothing.
TEST_F(ColorRendererTest, OperationsBuildATransform) {
    m_Pipeline.Stage([](ColorSettings& settings) {
        settings.transform.camera_correction = {2, 0, 0, 0, 1, 0, 0, 0, 1};
        settings.transform.white_balance = {1, 1, 0, 0, 1, 0, 0, 0, 1};
    });
    const std::tuple<int, bool, Matrix> rows[] = {{9, true, {2, 2, 0, 0, 1, 0, 0, 0, 1}},
                                                  {0, true, {1, 0, 0, 0, 1, 0, 0, 0, 1}},
                                                  {10, true, {2, 1, 0, 0, 1, 0, 0, 0, 1}},
                                                  {11, false, {2, 0, 0, 0, 1, 0, 0, 0, 1}},
                                                  {-1, false, {2, 0, 0, 0, 1, 0, 0, 0, 1}}};
    for (const auto& [operation, answer, transform] : rows) {
        m_Pipeline.ResetTransform();
        EXPECT_TRUE(operation == 10 || m_Pipeline.ConcatenateTransform(8, 0));
        EXPECT_EQ(m_Pipeline.ConcatenateTransform(operation, 0), answer) << operation;
        EXPECT_EQ(Transform(), transform) << operation;
    }
    // Matrices that lead nowhere are refused, too.
    m_Pipeline.ResetTransform();
    const Matrix none{std::numeric_limits<float>::infinity(), 0, 0, 0, 1, 0, 0, 0, 1};
    const Matrix huge{1e30f, 0, 0, 0, 1, 0, 0, 0, 1};
    EXPECT_FALSE(m_Pipeline.ConcatenateMatrix(nullptr) || m_Pipeline.ConcatenateMatrix(none.data()));
    EXPECT_FALSE(m_Pipeline.CopyTransform(nullptr));
    EXPECT_TRUE(m_Pipeline.ConcatenateMatrix(huge.data()));
    EXPECT_FALSE(m_Pipeline.ConcatenateMatrix(huge.data())) << "their product overflows";
    EXPECT_EQ(Transform(), huge);
}

// Sample v of channel k becomes 3 v + k, and at the end 1000 - v. The last entry goes on beyond the table's end.
const Words kInput = Counting(750);
const Words kOutput = [] {
    Words table(3000);
    for (unsigned i = 0; i < 3000; ++i) table[i] = static_cast<std::uint16_t>(1000 - i / 3);
    return table;
}();

struct Format {
    unsigned bits;
    int operation, depth;
    unsigned shift, channels, sample_bytes;
};
class PictureTest : public ColorRendererTest, public testing::WithParamInterface<Format> {};

// Every format with and without tables, through the planes and straight, down to the smallest mosaics.
TEST_P(PictureTest, IsTheDemosaicedFrameThroughTablesAndShift) {
    const Format& format = GetParam();
    for (int variant = 0; variant < 16; ++variant) {
        const bool from_planes = variant & 1, input = variant & 2, output = variant & 4;
        ColorPipeline pipeline(variant & 8 ? Kind::kMain : Kind::kScratchpad, m_Logger);
        pipeline.Stage([&](ColorSettings& settings) { settings.transform.SetInputBitDepth(format.bits); });
        ASSERT_TRUE(pipeline.ConcatenateTransform(format.operation, format.depth));
        // Tables that have not three channels are not applied.
        pipeline.SetTable(&ColorSettings::input_linearization, kInput.data(), 250 - !input, input ? 3 : 4);
        pipeline.SetTable(&ColorSettings::output_non_linearization, kOutput.data(), 1000, output ? 3 : 1);
        for (const auto& [w, h] : {std::pair(6u, 4u), {71u, 3u}, {1u, 1u}, {1u, 5u}, {5u, 1u}, {2u, 2u}}) {
            SCOPED_TRACE(testing::Message() << "variant " << variant << ", " << w << " x " << h);
            Record record(w, h, Counting(w * h, 1, (1u << format.bits) / 30), format.bits);
            ASSERT_TRUE(m_Renderer.ReservePicture(&record));
            const ColorFrame frame(&record, format.bits, 1);
            ASSERT_TRUE(!from_planes || m_Renderer.Demosaic(frame));
            m_Renderer.Render(frame, pipeline, from_planes);
            const Words whole = Demosaiced(record, 1);
            ASSERT_EQ(record.color_size_in_bytes, w * h * format.channels * format.sample_bytes);
            const auto* bytes = static_cast<const std::uint8_t*>(record.color_pixels);
            for (unsigned i = 0; i < w * h * format.channels; ++i) {
                const unsigned pixel = i / format.channels, c = i % format.channels;
                unsigned expected = 255;
                if (c < 3) {
                    expected = whole[pixel * 3 + c];
                    if (input) expected = kInput[3 * std::min(expected, 249u) + c];
                    expected = std::min(expected, (1u << format.bits) - 1) >> format.shift;
                    if (output) expected = kOutput[3 * std::min(expected, 999u) + c];
                    if (format.sample_bytes == 1) expected = std::min(expected, 255u);
                }
                const unsigned seen = format.sample_bytes == 1 ? bytes[i] : bytes[2 * i] + 256u * bytes[2 * i + 1];
                ASSERT_EQ(seen, expected) << "pixel " << pixel << " channel " << c;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, PictureTest,
                         testing::Values(Format{14, ZEL_COLOR_TRANSFORM_16_BIT, 0, 0, 3, 2},
                                         Format{14, ZEL_COLOR_TRANSFORM_16_BIT, 10, 4, 3, 2},
                                         Format{12, ZEL_COLOR_TRANSFORM_16_BIT, 13, 0, 3, 2},  // refused
                                         Format{16, ZEL_COLOR_TRANSFORM_16_BIT, 2, 14, 3, 2},
                                         Format{12, ZEL_COLOR_TRANSFORM_8_BIT_RGB, 0, 4, 3, 1},
                                         Format{6, ZEL_COLOR_TRANSFORM_8_BIT_RGBX, 0, 0, 4, 1}));

// One entry decides whether a table is a subtraction. Channels share their entries.
TEST(ColorTableTest, IsASubtractionOnlyWhereEveryEntryIs) {
    Words black(3 * 1024);
    for (unsigned i = 0; i < black.size(); ++i) black[i] = static_cast<std::uint16_t>(std::max(i / 3, 64u) - 64);
    Words almost = black;
    almost[3 * 500 + 2] += 1;
    Words first = black;
    first[0] = 1;
    const kernels::SampleMap subtraction{nullptr, 64, 959};
    EXPECT_EQ(ColorTable::Make(black.data(), 1024, 3)->Maps(),
              (kernels::ChannelMaps{subtraction, subtraction, subtraction}));
    EXPECT_EQ(ColorTable::Make(Words(3 * 9).data(), 9, 3)->Maps()[1], (kernels::SampleMap{nullptr, 65535, 0}));
    const auto other = ColorTable::Make(almost.data(), 1024, 3), start = ColorTable::Make(first.data(), 1024, 3);
    EXPECT_EQ(other->Maps()[1], subtraction);
    ASSERT_TRUE(other->Maps()[2].table && start->Maps()[0].table);
    EXPECT_EQ(other->Maps()[2].table[500], 437);
    EXPECT_EQ(other->Maps()[2].table[65535], 959);
    Words same(3 * 8, 3);
    const auto shared = ColorTable::Make(same.data(), 8, 3);
    EXPECT_TRUE(shared->Maps()[0].table && shared->Maps()[0] == shared->Maps()[2]);
}

TEST_F(ColorRendererTest, TheDepthIsTheFrames) {
    ASSERT_TRUE(m_Pipeline.ConcatenateTransform(ZEL_COLOR_TRANSFORM_8_BIT_RGB, 0));
    Record record(1, 1, {0xABCD}, 16);
    ASSERT_TRUE(m_Renderer.ReservePicture(&record));
    m_Renderer.Render(ColorFrame(&record, 16, 1), m_Pipeline, false);
    EXPECT_EQ(*static_cast<const std::uint8_t*>(record.color_pixels), 0xAB);
    record.size_in_bytes = 1u << 30;
    EXPECT_FALSE(m_Renderer.ReservePicture(&record));
    EXPECT_EQ(record.color_size_in_bytes, 0u);
}

// 8-bit formats take 8 bits of what there is and leave the depth there; a refused depth changes nothing.
TEST(ColorTransformTest, TheDepthStaysUntilAnotherOneIsAccepted) {
    ZelColorTransformMatrix transform;
    transform.SetInputBitDepth(14);
    transform.SetFormat(kernels::ColorFormat::k8);
    transform.SetFormat(kernels::ColorFormat::k16);
    EXPECT_FALSE(transform.SetOutputBitDepth(20));
    EXPECT_EQ(transform.OutputBits(), 8u);
    transform.SetInputBitDepth(6);
    EXPECT_TRUE(transform.SetOutputBitDepth(4));
    transform.SetFormat(kernels::ColorFormat::k8);
    EXPECT_EQ(transform.OutputBits(), 4u);
}

TEST(ColorTransformTest, TheCurveGoesOnWithItsLastEntry) {
    ZelColorTransformMatrix transform;
    transform.SetTable({5, 4, 9});
    const ZelColorTransformMatrix copy = transform;  // as staged settings become active ones
    transform.SetTable({});
    EXPECT_EQ(transform.Kernel(14).table, nullptr);
    for (const auto& [sample, result] : {std::pair(0, 5), {2, 9}, {16383, 9}, {65537, 9}}) {
        EXPECT_EQ(copy.Kernel(14).table[sample], result);
    }
}

}  // namespace
}  // namespace zel::test
