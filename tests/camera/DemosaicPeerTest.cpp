// Demosaicing against OpenCV's, where that is installed.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <vector>

#include "kernels/Kernels.h"

#if defined(ZEL_HAVE_OPENCV)
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace zel::test {
namespace {

class DemosaicPeerTest : public testing::TestWithParam<int> {};

TEST_P(DemosaicPeerTest, InsideTheFrameBothAgreeWithinOneCount) {
#if defined(ZEL_HAVE_OPENCV)
    constexpr unsigned kW = 64, kH = 48;
    // OpenCV names a mosaic by its second row: phase 1, whose first pixel is red, is its BG.
    constexpr int kCodes[] = {cv::COLOR_BayerBG2BGR, cv::COLOR_BayerRG2BGR, cv::COLOR_BayerGB2BGR,
                              cv::COLOR_BayerGR2BGR};
    const int phase = GetParam();
    std::mt19937 random(static_cast<unsigned>(phase));
    std::vector<std::uint16_t> mosaic(kW * kH);
    for (auto& sample : mosaic) sample = static_cast<std::uint16_t>(random() & 0x3FFF);
    cv::setNumThreads(1);
    cv::Mat theirs;
    cv::cvtColor(cv::Mat(kH, kW, CV_16UC1, mosaic.data()), theirs, kCodes[phase - 1]);
    std::vector<std::uint16_t> blue(kW), green(kW), red(kW);
    for (unsigned y = 1; y + 1 < kH; ++y) {
        const std::uint16_t* row = mosaic.data() + y * kW;
        kernels::Kernels().demosaic_row({row - kW, row, row + kW, kW, kernels::PhaseAt(phase, 0, y), true},
                                        {{blue.data(), green.data(), red.data()}, kW});
        for (unsigned x = 1; x + 1 < kW; ++x) {
            const auto& pixel = theirs.at<cv::Vec3w>(static_cast<int>(y), static_cast<int>(x));
            ASSERT_LE(std::abs(pixel[0] - blue[x]), 1) << "blue at " << x << ", " << y;
            ASSERT_LE(std::abs(pixel[1] - green[x]), 1) << "green at " << x << ", " << y;
            ASSERT_LE(std::abs(pixel[2] - red[x]), 1) << "red at " << x << ", " << y;
        }
    }
#else
    GTEST_SKIP() << "built without OpenCV: its headers or libraries were not found, or this is the Windows product";
#endif
}

INSTANTIATE_TEST_SUITE_P(Phase, DemosaicPeerTest, testing::Range(1, 5), testing::PrintToStringParamName());

}  // namespace
}  // namespace zel::test
