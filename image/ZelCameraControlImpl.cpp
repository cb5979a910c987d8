// State of the post-processing half: geometry, buffers, hand-over.
#include "image/ZelCameraControlImpl.h"

#include <exception>

#include "image/FrameSamples.h"

#include "platform/Clock.h"
#include "platform/Memory.h"

namespace zel {

namespace {

// The pool's answers as public error codes.
int PublicPoolCode(int answer) {
    if (answer == kPoolNegativeCount) return ZEL_ERROR_INVALID_NUMBER_OF_IMAGE_BUFFERS;
    if (answer == kPoolNotEnoughMemory) return ZEL_ERROR_IMAGE_BUFFER_ALLOCATION_FAILURE;
    return answer;
}
}  // namespace

ZelCameraControlImpl::ZelCameraControlImpl(const char* instance_name)
    : m_Logger("ZelCameraControl", instance_name), m_ImageManager(instance_name) {}

ZelCameraControlImpl::~ZelCameraControlImpl() = default;

void ZelCameraControlImpl::SetGeometry(const FrameGeometry& geometry) {
    for (ColorPipeline& pipeline : m_ColorPipelines) {
        pipeline.Stage([&](ColorSettings& settings) { settings.transform.SetInputBitDepth(geometry.bit_depth); });
    }
    const std::lock_guard lock(m_GeometryLock);
    m_Geometry = geometry;
}

FrameGeometry ZelCameraControlImpl::Geometry() {
    const std::lock_guard lock(m_GeometryLock);
    return m_Geometry;
}

int ZelCameraControlImpl::UpdateImagePool(int num_image_buffers) {
    const FrameGeometry geometry = Geometry();
    std::unique_lock processing(m_ProcessingLock);
    m_ImageManager.SetFrameGeometry(geometry.width, geometry.height, geometry.bit_depth, geometry.bytes_per_pixel);
    if (!m_ImageManager.Keeps(num_image_buffers)) AwaitScratchpads(processing);
    const int code = PublicPoolCode(m_ImageManager.PixelBufferAllocate(num_image_buffers));
    if (code == 0 && geometry.taps == 4) {
        // A scratch that can't be had makes the tap step of each frame answer false.
        m_ReorderBuffer.Reserve(std::size_t{geometry.width} * geometry.height * geometry.bytes_per_pixel);
    }
    return code;
}

void ZelCameraControlImpl::ReleaseImagePool() {
    std::unique_lock processing(m_ProcessingLock);
    AwaitScratchpads(processing);
    m_ImageManager.FreeImages();
}

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
    const std::lock_guard processing(m_ProcessingLock);
    return (m_ReorderBuffer.pixels ? 1 : 0) + (m_SpareBuffer.pixels ? 1 : 0) + (m_RowScratch.empty() ? 0 : 1) +
           (m_ColorRows.empty() ? 0 : 1);
}

void ZelCameraControlImpl::ReleaseScratchBuffers() {
    const std::lock_guard processing(m_ProcessingLock);
    m_ReorderBuffer.Release();
    m_SpareBuffer.Release();
    m_RowScratch = {};
    m_ColorRows = {};
}

ZelImageInternal* ZelCameraControlImpl::GetPendingImageImpl() {
    ZelImageInternal* image = m_ImageManager.GetPendingImage();
    if (!image) return nullptr;
    const platform::TimerResolution resolution;
    const std::uint32_t first = platform::MillisecondClock();
    const std::uint32_t now = platform::MillisecondClock();
    // On purpose: the difference of two readings in a row.
    image->hand_over_delta_ms = now - first;
    image->queue_delay_ms = now - image->arrival_time_ms;
    image->hand_over_time_ms = now;
    return image;
}

ZelCameraControlImpl::Outcome ZelCameraControlImpl::PostProcessOnce(ZelImageInternal* image, Path path, Caller caller) {
    std::unique_lock processing(m_ProcessingLock);
    const AtScratchpad* elsewhere = nullptr;
    m_ScratchpadDone.wait(processing, [&] {
        elsewhere = ScratchpadElsewhere(image);
        return !elsewhere || (elsewhere->leaving && caller == Caller::kTransport);
    });
    if (elsewhere || !m_ImageManager.Holds(image)) return Outcome::kGone;
    if (image->post_processed) return Outcome::kDone;
    image->post_processed = 1;
    if (path == Path::kMonochrome) return PostProcessImage(image) ? Outcome::kDone : Outcome::kFailed;
    return PostProcessColorImage(image, kMainPipeline, processing) ? Outcome::kDone : Outcome::kGone;
}

void ZelCameraControlImpl::SetAveraging(int frame_count_max, bool reset) {
    const std::lock_guard processing(m_ProcessingLock);
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
    const std::uint64_t sums = std::uint64_t{pixels} * sizeof m_ImageAvgSums[0];
    if (sums + std::uint64_t{slots} * (m_ImageAvgRingBytes + sizeof m_ImageAvgRing[0]) >=
        platform::AvailablePhysicalMemory()) {
        return false;
    }
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
    const std::lock_guard processing(m_ProcessingLock);
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
    ZEL_LOG(m_Logger, kLogTrace, kUpdate, "returning true");
    return 0;
}

bool IsUsbOrCameraLink(int interface_type) { return interface_type == 3 || interface_type == 5; }

}  // namespace zel
