#include "bench/OpenCvPeers.h"

#if defined(ZEL_HAVE_OPENCV)
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace zel::bench {

#if defined(ZEL_HAVE_OPENCV)

namespace {
cv::Mat View(const std::uint16_t* frame, unsigned side) {
    cv::setNumThreads(1);
    const int n = static_cast<int>(side);
    return cv::Mat(n, n, CV_16UC1, const_cast<std::uint16_t*>(frame));
}
}  // namespace

bool HaveOpenCv() { return true; }

void OpenCvHalve(const std::uint16_t* frame, unsigned side) {
    static cv::Mat half;
    cv::resize(View(frame, side), half, {}, 0.5, 0.5, cv::INTER_AREA);
}

void OpenCvAccumulate(const std::uint16_t* frame, float* sums, unsigned side) {
    const int n = static_cast<int>(side);
    cv::Mat total(n, n, CV_32FC1, sums);
    cv::accumulate(View(frame, side), total);
}

#else

bool HaveOpenCv() { return false; }
void OpenCvHalve(const std::uint16_t*, unsigned) {}
void OpenCvAccumulate(const std::uint16_t*, float*, unsigned) {}

#endif

}  // namespace zel::bench
