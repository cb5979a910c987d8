// What surrounds the steps: geometry, the pool's hand-over, and who processes a frame.
#include "image/ZelCameraControlImpl.h"

#include <cstring>
#include <utility>

#include "include/ZelParameters.h"
#include "kernels/CpuSupport.h"
#include "kernels/Kernels.h"
#include "platform/Clock.h"

namespace zel {

namespace {

// The pool's answers as public error codes.
int PublicPoolCode(int answer) {
    if (answer == kPoolNegativeCount) return ZEL_ERROR_INVALID_NUMBER_OF_IMAGE_BUFFERS;
    if (answer == kPoolNotEnoughMemory) return ZEL_ERROR_IMAGE_BUFFER_ALLOCATION_FAILURE;
    return answer;
}

}  // namespace

ZelCameraControlImpl::ZelCameraControlImpl(const char* instance_name, TapBalance* balance)
    : m_Logger("ZelCameraControl", instance_name),
      m_TransformLogger("ZelColorTransformMatrix", instance_name),
      m_ImageManager(instance_name),
      m_TapReadout(m_Logger, balance),
      m_Average(m_Logger),
      m_Renderer(m_Logger) {}

ZelCameraControlImpl::~ZelCameraControlImpl() = default;

void ZelCameraControlImpl::SetGeometry(const FrameGeometry& geometry) {
    for (ColorPipeline* const pipeline : {&m_MainPipeline, &m_ScratchpadPipeline}) {
        pipeline->Stage([&](ColorSettings& settings) { settings.transform.SetInputBitDepth(geometry.bit_depth); });
    }
    const platform::ScopedLock lock(m_GeometryLock);
    m_Geometry = geometry;
}

FrameGeometry ZelCameraControlImpl::Geometry() {
    const platform::ScopedLock lock(m_GeometryLock);
    return m_Geometry;
}

int ZelCameraControlImpl::UpdateImagePool(int num_image_buffers, bool color) {
    const FrameGeometry geometry = Geometry();
    m_ImageManager.SetFrameGeometry(geometry.width, geometry.height, geometry.bit_depth, geometry.bytes_per_pixel);
    const int code = PublicPoolCode(m_ImageManager.PixelBufferAllocate(num_image_buffers));
    if (code == 0) PrepareProcessing(geometry, color);
    return code;
}

// What frames need is chosen, made and touched here, by the thread that starts: the first frame finds it all.
void ZelCameraControlImpl::PrepareProcessing(const FrameGeometry& geometry, bool color) {
    kernels::Kernels();
    const std::shared_ptr<RecordSet> records = m_ImageManager.Records();
    const platform::ScopedLock processing(m_ProcessingLock);
    m_TapReadout.Prepare(geometry);
    if (!color) return;
    m_Renderer.Prepare(geometry.width);
    const ZelRoiBin& roi = geometry.roi;
    const bool whole = roi.XPixels == geometry.width && roi.YPixels == geometry.height;
    if (records) records->MakePictures(whole && Scratchpad().callback ? geometry.width * geometry.height : 0);
}

int ZelCameraControlImpl::UpdateImageAvgBuffer() {
    const FrameGeometry geometry = Geometry();
    const platform::ScopedLock processing(m_ProcessingLock);
    return m_Average.Prepare(geometry.width * geometry.height);
}

void ZelCameraControlImpl::SetAveraging(int frame_count_max, bool reset) {
    const platform::ScopedLock processing(m_ProcessingLock);
    m_Average.SetLength(frame_count_max, reset);
}

int ZelCameraControlImpl::ScratchBufferCount() {
    const platform::ScopedLock processing(m_ProcessingLock);
    return m_TapReadout.BufferCount() + m_Renderer.BufferCount();
}

void ZelCameraControlImpl::ReleaseScratchBuffers() {
    const platform::ScopedLock processing(m_ProcessingLock);
    m_TapReadout.ReleaseBuffers();
    m_Renderer.ReleaseBuffers();
}

FrameLease ZelCameraControlImpl::GetFreeImageImpl() {
    FrameLease frame = m_ImageManager.TakeFree();
    if (!frame) return frame;
    frame.Geometry() = Geometry();
    frame->post_processed = 0;
    frame->color_size_in_bytes = 0;  // what `color_pixels` holds is an earlier frame's picture
    return frame;
}

FrameLease ZelCameraControlImpl::GetPendingImageImpl() { return Stamp(m_ImageManager.TakePending()); }

FrameLease ZelCameraControlImpl::GetLastPendingImageImpl() { return Stamp(m_ImageManager.TakeLastPending()); }

FrameLease ZelCameraControlImpl::Stamp(FrameLease frame) {
    if (!frame) return frame;
    const platform::TimerResolution resolution;
    const std::uint32_t first = platform::MillisecondClock();
    const std::uint32_t now = platform::MillisecondClock();
    // On purpose: the difference of two readings in a row.
    frame->hand_over_delta_ms = now - first;
    frame->queue_delay_ms = now - frame->arrival_time_ms;
    frame->hand_over_time_ms = now;
    return frame;
}

bool ZelCameraControlImpl::PostProcessOnce(const FrameLease& frame, Path path, Caller caller) {
    platform::ScopedLock processing(m_ProcessingLock);
    if (!m_Scratchpads.Await(frame.image, caller, processing) || !m_ImageManager.IsCurrent(frame)) return false;
    if (std::exchange(frame->post_processed, 1u)) return true;
    if (path == Path::kMonochrome) {
        PostProcessImage(frame.image, frame.Geometry());
    } else {
        ExpectColor();
        PostProcessColorImage(frame, processing);
    }
    return m_ImageManager.IsCurrent(frame);
}

void ZelCameraControlImpl::SetScratchpad(ZelScratchpadCallback callback, void* context) {
    const platform::ScopedLock lock(m_ScratchpadLock);
    m_Scratchpad = {callback, context};
}

ScratchpadHook ZelCameraControlImpl::Scratchpad() {
    const platform::ScopedLock lock(m_ScratchpadLock);
    return m_Scratchpad;
}

void ZelCameraControlImpl::LeaveScratchpad() {
    const platform::ScopedLock processing(m_ProcessingLock);
    m_Scratchpads.Leave();
}

void ZelCameraControlImpl::LogExtendedInstructionSetPresence(const char* name) {
    const bool present = std::strcmp(name, "AVX2") == 0 ? kernels::CpuHasAvx2() : kernels::CpuHasFma();
    ZEL_LOG(m_Logger, kLogTrace, "ZelCameraControlImpl::LogExtendedInstructionSetPresence", "This CPU %s support %s",
            present ? "does" : "does NOT", name);
}

}  // namespace zel
