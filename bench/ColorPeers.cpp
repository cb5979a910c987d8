#include "bench/ColorPeers.h"

#if defined(ZEL_HAVE_OPENCV)
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif
#if defined(ZEL_HAVE_DC1394)
#include <dc1394/dc1394.h>
#endif

namespace zel::bench {

#if defined(ZEL_HAVE_OPENCV)

namespace {
cv::Mat View(const std::uint16_t* samples, unsigned side, int type) {
    cv::setNumThreads(1);
    const int n = static_cast<int>(side);
    return cv::Mat(n, n, type, const_cast<std::uint16_t*>(samples));
}
}  // namespace

void OpenCvDemosaic(const std::uint16_t* mosaic, std::uint16_t* picture, unsigned side) {
    cv::Mat out = View(picture, side, CV_16UC3);
    cv::cvtColor(View(mosaic, side, CV_16UC1), out, cv::COLOR_BayerBG2BGR);
}

void OpenCvTransform(const std::uint16_t* from, std::uint16_t* to, unsigned side, const float* matrix) {
    cv::Mat out = View(to, side, CV_16UC3);
    cv::transform(View(from, side, CV_16UC3), out, cv::Mat(3, 3, CV_32F, const_cast<float*>(matrix)));
    cv::min(out, cv::Scalar::all(16383), out);
}

#else

void OpenCvDemosaic(const std::uint16_t*, std::uint16_t*, unsigned) {}
void OpenCvTransform(const std::uint16_t*, std::uint16_t*, unsigned, const float*) {}

#endif

#if defined(ZEL_HAVE_DC1394)

bool HaveDc1394() { return true; }

void Dc1394Demosaic(const std::uint16_t* mosaic, std::uint16_t* picture, unsigned side) {
    dc1394_bayer_decoding_16bit(mosaic, picture, side, side, DC1394_COLOR_FILTER_RGGB, DC1394_BAYER_METHOD_BILINEAR,
                                14);
}

#else

bool HaveDc1394() { return false; }
void Dc1394Demosaic(const std::uint16_t*, std::uint16_t*, unsigned) {}

#endif

}  // namespace zel::bench
