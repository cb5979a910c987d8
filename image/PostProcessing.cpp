// The post-processing steps of a frame in the order in which they run. Every step checks the geometry against the
// buffers it is about to touch. What a step came to is logged; the frame is delivered with what was done.
#include "image/RegionAndBinning.h"
#include "image/ZelCameraControlImpl.h"
#include "kernels/ColorKernels.h"

namespace zel {

void ZelCameraControlImpl::PostProcessImage(ZelImageInternal* image, const FrameGeometry& geometry) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessImage";
    ZEL_SCOPE_TIMER(timer, "PostProcessImage", m_Logger, kFunction);
    if (!m_TapReadout.Process(image, geometry)) {
        ZEL_LOG(m_Logger, kLogError, kFunction, "Failed to tap balance the image!");
    }
    CropToRegion(image, geometry, m_Logger);
    BinFrame(image, geometry);
    if (m_Average.IsOn()) m_Average.Process(image);
}

void ZelCameraControlImpl::PostProcessColorImage(const FrameLease& lease, ScratchpadGate::Lock& processing) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessColorImage";
    ZEL_SCOPE_TIMER(timer, "PostProcessColorImage", m_Logger, kFunction);
    ZelImageInternal* const image = lease.image;
    const FrameGeometry& geometry = lease.Geometry();
    if (!m_TapReadout.Process(image, geometry)) {
        ZEL_LOG(m_Logger, kLogError, kFunction, "Failed to tap balance the image!");
    }
    // On purpose: one factor of 1 is enough to keep the color stages going.
    const bool color = geometry.roi.XBin == 1 || geometry.roi.YBin == 1;
    if (!color) {
        ZEL_LOG(
            m_Logger, kLogError, kFunction,
            "The color pipeline has been deactivated because xbin > 1 and/or ybin > 1 with a single sensor camera!");
        ColorWasBinned();
    }
    const unsigned full_w = image->w;
    const unsigned full_h = image->h;
    if (!CropToRegion(image, geometry, m_Logger)) {
        ZEL_LOG(m_Logger, kLogWarning, kFunction, "ROI processing was not done!");
    }
    if (m_Average.IsOn()) m_Average.Process(image);
    if (!m_Renderer.ReservePicture(image)) return;
    if (!color) return;
    // A region that was cut out begins at another place of the mosaic.
    const bool cut = image->w != full_w || image->h != full_h;
    const int phase =
        kernels::PhaseAt(geometry.cfa_phase, cut ? geometry.roi.XOrigin : 0, cut ? geometry.roi.YOrigin : 0);
    if (phase == 0) ZEL_LOG(m_Logger, kLogError, kFunction, "Failed to demosaic the color image!");

    const ColorFrame frame(image, geometry.bit_depth, phase);
    const ScratchpadHook hook = Scratchpad();
    bool in_planes = hook.callback && m_Renderer.Demosaic(frame);
    if (in_planes) {
        m_Renderer.Render(frame, m_ScratchpadPipeline, in_planes);
        const bool again = m_Scratchpads.Call(hook, image, processing);
        if (!m_ImageManager.IsCurrent(lease)) return;
        if (again) {
            in_planes = m_Renderer.Demosaic(frame);
            ZEL_LOG(m_Logger, kLogTrace, kFunction, "Demosaic again because of scratchpad pipeline invocation!");
        }
    }
    m_Renderer.Render(frame, m_MainPipeline, in_planes);
}

}  // namespace zel
