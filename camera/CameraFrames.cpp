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
    return entry ? GetFreeImageImpl().image : nullptr;
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
    const FrameLease frame = m_ImageManager.Lease(Internal(image));
    if (!frame) return;
    const FrameGeometry geometry = Geometry();
    frame.Geometry() = geometry;
    image->x_origin = geometry.roi.XOrigin;
    image->y_origin = geometry.roi.YOrigin;
    image->x_pixels = geometry.roi.XPixels;
    image->y_pixels = geometry.roi.YPixels;
    image->x_bin = geometry.roi.XBin;
    image->y_bin = geometry.roi.YBin;
    image->exposure_time_us = m_ExposureTimeUs;
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
    const FrameLease frame = GetPendingImageImpl();
    if (!frame) {
        ZEL_LOG(m_Logger, kLogTrace, kGetPending, "GetPendingImage() returned 0");
        return nullptr;
    }
    if (!PostProcessOnce(frame, Path::kMonochrome)) return nullptr;
    ZEL_LOG(m_Logger, kLogTrace, kGetPending, "ZelCameraControl::GetPendingImage() - image:%s w:%d h:%d",
            PointerText(frame.image).text, frame->w, frame->h);
    return frame.image;
}

ZelImage* ZelCameraControl::GetLastPendingImage() {
    const Operation entry(*this);
    if (!entry) return nullptr;
    if (!m_Camera) return nullptr;
    const FrameLease frame = GetLastPendingImageImpl();
    return frame && PostProcessOnce(frame, Path::kMonochrome) ? frame.image : nullptr;
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
