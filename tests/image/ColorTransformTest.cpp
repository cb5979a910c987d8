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
    EXPECT_EQ(transform.Kernel().shift, depth.shift);
    EXPECT_EQ(transform.Kernel().largest, (1u << depth.input) - 1);
}

INSTANTIATE_TEST_SUITE_P(, ColorDepthTest,
                         testing::Values(Depth{14, 0, kernels::ColorFormat::k16, true, 14, 0},
                                         Depth{14, 10, kernels::ColorFormat::k16, true, 10, 4},
                                         Depth{12, 13, kernels::ColorFormat::k16, false, 12, 0},
                                         Depth{16, 2, kernels::ColorFormat::k16, true, 2, 14},
                                         Depth{12, 10, kernels::ColorFormat::k8, true, 8, 4},
                                         Depth{6, 0, kernels::ColorFormat::k8Padded, true, 6, 0}));

TEST(ColorCurveTest, GoesOnWithItsLastEntry) {
    ZelColorTransformMatrix transform;
    EXPECT_EQ(transform.Kernel().table, nullptr);
    transform.SetTable({5, 4, 9});
    const ZelColorTransformMatrix copy = transform;  // as staged settings become active ones
    transform.SetTable({});
    EXPECT_EQ(transform.Kernel().table, nullptr);
    std::uint16_t samples[3][1] = {{0}, {2}, {16383}};
    kernels::scalar::TransformRow({{samples[0], samples[1], samples[2]}, 1}, copy.Kernel());
    EXPECT_THAT(samples,
                testing::ElementsAre(testing::ElementsAre(5), testing::ElementsAre(9), testing::ElementsAre(9)));
}

}  // namespace
}  // namespace zel::test
