// The color transform's depths, shift and curve, as the kernels get them.
#include <gmock/gmock.h>

#include "image/ZelColorTransformMatrix.h"

namespace zel::test {
namespace {

struct Depth {
    unsigned input, requested;
    kernels::ColorFormat format;
    bool answer;
    unsigned output, shift;
};
class ColorDepthTest : public testing::TestWithParam<Depth> {};

TEST_P(ColorDepthTest, OutputFollowsInput) {
    const Depth& depth = GetParam();
    ZelColorTransformMatrix transform;
    transform.SetFormat(depth.format);
    transform.SetInputBitDepth(depth.input);
    EXPECT_EQ(transform.SetOutputBitDepth(depth.requested), depth.answer);
    EXPECT_EQ(transform.OutputBits(), depth.output);
    EXPECT_EQ(transform.Kernel(transform.InputBits()).shift, depth.shift);
    EXPECT_EQ(transform.Kernel(transform.InputBits()).largest, (1u << depth.input) - 1);
}

INSTANTIATE_TEST_SUITE_P(, ColorDepthTest,
                         testing::Values(Depth{14, 0, kernels::ColorFormat::k16, true, 14, 0},
                                         Depth{14, 10, kernels::ColorFormat::k16, true, 10, 4},
                                         Depth{12, 13, kernels::ColorFormat::k16, false, 12, 0},
                                         Depth{16, 2, kernels::ColorFormat::k16, true, 2, 14},
                                         Depth{12, 10, kernels::ColorFormat::k8, true, 8, 4},
                                         Depth{6, 0, kernels::ColorFormat::k8Padded, true, 6, 0}));

// 8-bit formats take 8 bits of what there is and leave the depth there; a refused depth changes nothing.
TEST(ColorDepthHistoryTest, StaysUntilAnotherOneIsAccepted) {
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

TEST(ColorCurveTest, GoesOnWithItsLastEntry) {
    ZelColorTransformMatrix transform;
    EXPECT_EQ(transform.Kernel(transform.InputBits()).table, nullptr);
    transform.SetTable({5, 4, 9});
    const ZelColorTransformMatrix copy = transform;  // as staged settings become active ones
    transform.SetTable({});
    EXPECT_EQ(transform.Kernel(transform.InputBits()).table, nullptr);
    std::uint16_t samples[3][1] = {{0}, {2}, {16383}};
    kernels::scalar::TransformRow({{samples[0], samples[1], samples[2]}, 1}, copy.Kernel(copy.InputBits()));
    EXPECT_THAT(samples,
                testing::ElementsAre(testing::ElementsAre(5), testing::ElementsAre(9), testing::ElementsAre(9)));
}

}  // namespace
}  // namespace zel::test
