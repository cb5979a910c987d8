// State of the post-processing half: geometry, buffers, hand-over.
#include "image/ZelCameraControlImpl.h"

#include <exception>
#include <utility>

#include "image/FrameSamples.h"

#include "platform/Clock.h"
#include "platform/Memory.h"

namespace zel {

namespace {

constexpr std::size_t kHeapOverhead = 64;  // of one allocation

// The pool's answers as public error codes.
int PublicPoolCode(int answer) {
    if (answer == kPoolNegativeCount) return ZEL_ERROR_INVALID_NUMBER_OF_IMAGE_BUFFERS;
    if (answer == kPoolNotEnoughMemory) return ZEL_ERROR_IMAGE_BUFFER_ALLOCATION_FAILURE;
    return answer;
}
}  // namespace

ZelCameraControlImpl::ZelCameraControlImpl(const char* instance_name)
    : m_Logger("ZelCameraControl", instance_name),
      m_TransformLogger("ZelColorTransformMatrix", instance_name),
      m_ImageManager(instance_name) {}

ZelCameraControlImpl::~ZelCameraControlImpl() = default;

void ZelCameraControlImpl::SetGeometry(const FrameGeometry& geometry) {
    for (ColorPipeline& pipeline : m_ColorPipelines) {
        pipeline.Stage([&](ColorSettings& settings) { settings.transform.SetInputBitDepth(geometry.bit_depth); });
    }
    const platform::ScopedLock lock(m_GeometryLock);
    m_Geometry = geometry;
}

FrameGeometry ZelCameraControlImpl::Geometry() {
    const platform::ScopedLock lock(m_GeometryLock);
    return m_Geometry;
}

int ZelCameraControlImpl::UpdateImagePool(int num_image_buffers) {
    const FrameGeometry geometry = Geometry();
    m_ImageManager.SetFrameGeometry(geometry.width, geometry.height, geometry.bit_depth, geometry.bytes_per_pixel);
    const int code = PublicPoolCode(m_ImageManager.PixelBufferAllocate(num_image_buffers));
    if (code == 0 && geometry.taps == 4) {
        const platform::ScopedLock processing(m_ProcessingLock);
        // A scratch that can't be had makes the tap step of each frame answer false.
        m_ReorderBuffer.Reserve(std::size_t{geometry.width} * geometry.height * geometry.bytes_per_pixel);
    }
    return code;
}

void ZelCameraControlImpl::ReleaseImagePool() { m_ImageManager.FreeImages(); }

bool ZelCameraControlImpl::PageBuffer::Reserve(std::size_t bytes) {
    if (capacity >= bytes) return true;
    Release();
    pixels = static_cast<unsigned short*>(AllocatePixels(bytes));
    if (pixels) capacity = bytes;
    return pixels != nullptr;
}

void ZelCameraControlImpl::PageBuffer::Release() {
    FreePixels(pixels);
    pixels = nullptr;
    capacity = 0;
}

int ZelCameraControlImpl::ScratchBufferCount() {
    const platform::ScopedLock processing(m_ProcessingLock);
    return (m_ReorderBuffer.pixels ? 1 : 0) + (m_SpareBuffer.pixels ? 1 : 0) + (m_RowScratch.empty() ? 0 : 1) +
           (m_ColorRows.empty() ? 0 : 1);
}

void ZelCameraControlImpl::ReleaseScratchBuffers() {
    const platform::ScopedLock processing(m_ProcessingLock);
    m_ReorderBuffer.Release();
    m_SpareBuffer.Release();
    m_RowScratch = {};
    m_ColorRows = {};
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

ZelCameraControlImpl::Outcome ZelCameraControlImpl::PostProcessOnce(const FrameLease& frame, Path path, Caller caller) {
    platform::ScopedLock processing(m_ProcessingLock);
    const AtScratchpad* elsewhere = nullptr;
    m_ScratchpadDone.wait(processing, [&]() ZEL_REQUIRES(m_ProcessingLock) {
        elsewhere = ScratchpadElsewhere(frame.image);
        return !elsewhere || (elsewhere->leaving && caller == Caller::kTransport);
    });
    if (elsewhere || !m_ImageManager.IsCurrent(frame)) return Outcome::kGone;
    if (std::exchange(frame->post_processed, 1u)) return Outcome::kDone;
    bool done = true;
    if (path == Path::kMonochrome) {
        done = PostProcessImage(frame.image, frame.Geometry());
    } else {
        PostProcessColorImage(frame, kMainPipeline, processing);
    }
    if (!m_ImageManager.IsCurrent(frame)) return Outcome::kGone;
    return done ? Outcome::kDone : Outcome::kFailed;
}

void ZelCameraControlImpl::SetAveraging(int frame_count_max, bool reset) {
    const platform::ScopedLock processing(m_ProcessingLock);
    if (reset || frame_count_max != m_ImageAvgFrameCountMax) ReleaseAvgBuffer();
    m_ImageAvgFrameCountMax = frame_count_max;
}

void ZelCameraControlImpl::ReleaseAvgBuffer() {
    m_ImageAvgRing = {};
    m_ImageAvgSums = {};
    m_ImageAvgFrameCount = 0;
    m_ImageAvgFrameIndex = 0;
    m_ImageAvgFrameBytes = 0;
    m_ImageAvgFramePixels = 0;
    m_ImageAvgRingPixels = 0;
    m_ImageAvgRingBytes = 0;
}

// A ring that the machine has no memory for is refused before any of it is taken.
bool ZelCameraControlImpl::AllocateAvgBuffer(unsigned pixels) {
    m_ImageAvgRingPixels = pixels;
    m_ImageAvgRingBytes = pixels * kBytesPerSample;
    const auto slots = static_cast<std::size_t>(m_ImageAvgFrameCountMax);
    // A slot comes from the heap, in the worst case as pages of its own.
    const std::uint64_t sums = PagesTaken(std::uint64_t{pixels} * sizeof m_ImageAvgSums[0], kHeapOverhead);
    const std::uint64_t per_slot = PagesTaken(m_ImageAvgRingBytes, kHeapOverhead) + sizeof m_ImageAvgRing[0];
    if (sums + slots * per_slot >= platform::AvailablePhysicalMemory()) return false;
    try {
        m_ImageAvgRing.resize(slots);
        for (auto& slot : m_ImageAvgRing) slot.resize(pixels);
        m_ImageAvgSums.resize(pixels);
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

int ZelCameraControlImpl::UpdateImageAvgBuffer() {
    constexpr const char* kUpdate = "ZelCameraControlImpl::UpdateImageAvgBuffer";
    const FrameGeometry geometry = Geometry();
    const platform::ScopedLock processing(m_ProcessingLock);
    if (m_ImageAvgFrameCountMax == 0) {
        ZEL_LOG(m_Logger, kLogTrace, kUpdate, "m_ImageAvgFrameCountMax == 0");
        return 0;
    }
    if (m_ImageAvgRing.empty() && !AllocateAvgBuffer(geometry.width * geometry.height)) {
        ReleaseAvgBuffer();
        m_ImageAvgFrameCountMax = 0;
        ZEL_LOG(m_Logger, kLogError, kUpdate, "malloc() failed");
        return 1;
    }
    if (m_ImageAvgRingPixels < geometry.width * geometry.height) {
        ZEL_LOG(m_Logger, kLogWarning, kUpdate,
                "The averaging ring holds smaller frames: full frames are not averaged!");
    }
    ZEL_LOG(m_Logger, kLogTrace, kUpdate, "returning true");
    return 0;
}

}  // namespace zel
