// The color transform's depths over several settings, and its curve, as the kernels get them.
#include <gmock/gmock.h>

#include "image/ZelColorTransformMatrix.h"

namespace zel::test {
namespace {

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
    EXPECT_EQ(transform.Kernel(14).table, nullptr);
    transform.SetTable({5, 4, 9});
    const ZelColorTransformMatrix copy = transform;  // as staged settings become active ones
    transform.SetTable({});
    EXPECT_EQ(transform.Kernel(14).table, nullptr);
    std::uint16_t samples[3][1] = {{0}, {2}, {16383}};
    kernels::scalar::TransformRow({{samples[0], samples[1], samples[2]}, 1}, copy.Kernel(14));
    EXPECT_THAT(samples,
                testing::ElementsAre(testing::ElementsAre(5), testing::ElementsAre(9), testing::ElementsAre(9)));
}

}  // namespace
}  // namespace zel::test
