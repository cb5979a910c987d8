// Frame hand-over: from the pool to the transport, from the transport to the application, and back.
#include "camera/ZelCameraControl.h"
#include "platform/Clock.h"

namespace zel {

namespace {
ZelImageInternal* Internal(ZelImage* image) { return static_cast<ZelImageInternal*>(image); }
}  // namespace

// The transport's side.

ZelImage* ZelCameraControl::GetFreeImage() {
    const Callee entry(*this, Gate::Kind::kOperation);
    if (!entry) return nullptr;
    ZelImageInternal* image = m_ImageManager.GetFreeImage();
    if (!image) return nullptr;
    m_ImageManager.RestoreGeometry(image);
    image->post_processed = 0;
    image->color_size_in_bytes = 0;  // what `color_pixels` holds is an earlier frame's picture
    return image;
}

bool ZelCameraControl::SetPendingImage(ZelImage* image) {
    const Callee entry(*this);
    return m_ImageManager.SetPendingImage(Internal(image), platform::MillisecondClock());
}

bool ZelCameraControl::ReleaseImage(ZelImage* image) {
    const Callee entry(*this);
    return m_ImageManager.ReleaseImage(Internal(image));
}

ZelImage* ZelCameraControl::GetPendingImageForTransport() {
    const Callee entry(*this, Gate::Kind::kOperation);
    return entry ? m_ImageManager.GetPendingImage() : nullptr;
}

void ZelCameraControl::FreeAllInUseImages() {
    const Callee entry(*this);
    m_ImageManager.FreeAllInUseImages();
}

void ZelCameraControl::FillImageInfo(ZelImage* image) {
    const Callee entry(*this);
    if (!image) return;
    const FrameGeometry geometry = Geometry();
    image->x_origin = geometry.roi.XOrigin;
    image->y_origin = geometry.roi.YOrigin;
    image->x_pixels = geometry.roi.XPixels;
    image->y_pixels = geometry.roi.YPixels;
    image->x_bin = geometry.roi.XBin;
    image->y_bin = geometry.roi.YBin;
    image->exposure_time_us = geometry.exposure_time_us;
}

// The application's side.

ZelImage* ZelCameraControl::GetPendingImageForApplication() {
    const Operation entry(*this);
    if (!entry) return nullptr;
    constexpr const char* kGetPending = "ZelCameraControl::GetPendingImage";
    if (!m_Camera) {
        ZEL_LOG(m_Logger, kLogTrace, kGetPending, "m_Camera == 0");
        return nullptr;
    }
    ZelImageInternal* image = GetPendingImageImpl();
    if (!image) {
        ZEL_LOG(m_Logger, kLogTrace, kGetPending, "GetPendingImage() returned 0");
        return nullptr;
    }
    const Outcome outcome = PostProcessOnce(image, Path::kMonochrome);
    if (outcome == Outcome::kGone) return nullptr;
    if (outcome == Outcome::kFailed) {
        ZEL_LOG(m_Logger, kLogError, kGetPending, "Failed to post process image %d!", image->image_number);
    }
    ZEL_LOG(m_Logger, kLogTrace, kGetPending, "ZelCameraControl::GetPendingImage() - image:%s w:%d h:%d",
            PointerText(image).text, image->w, image->h);
    return image;
}

ZelImage* ZelCameraControl::GetLastPendingImage() {
    const Operation entry(*this);
    if (!entry) return nullptr;
    if (!m_Camera) return nullptr;
    ZelImageInternal* image = m_ImageManager.GetLastPendingImage();
    if (!image) return nullptr;
    const Outcome outcome = PostProcessOnce(image, Path::kMonochrome);
    if (outcome == Outcome::kGone) return nullptr;
    if (outcome == Outcome::kFailed) {
        ZEL_LOG(m_Logger, kLogError, "ZelCameraControl::GetLastPendingImage", "Failed to post process image %d!",
                image->image_number);
    }
    return image;
}

bool ZelCameraControl::FreeImage(ZelImage* image) {
    const Visit entry(*this);
    if (!m_Camera) return false;
    ZEL_LOG(m_Logger, kLogTrace, "ZelCameraControl::FreeImage", "free image!");
    return image && m_ImageManager.ReleaseImage(Internal(image));
}

bool ZelCameraControl::FreeAllPendingImages() {
    const Visit entry(*this);
    m_ImageManager.FreeAllPendingImages();
    return true;
}

}  // namespace zel
