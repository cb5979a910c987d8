#include "image/FrameAverage.h"

#include <algorithm>
#include <exception>

#include "image/FrameSamples.h"
#include "kernels/Kernels.h"
#include "platform/Memory.h"

namespace zel {

namespace {
constexpr std::size_t kHeapOverhead = 64;  // of one allocation
constexpr const char* kDashes = "----------------------------------------------------------------";
}  // namespace

void FrameAverage::SetLength(int frames, bool reset) {
    if (reset || frames != m_Length) Release();
    m_Length = frames;
}

void FrameAverage::Release() {
    m_Ring = {};
    m_Sums = {};
    m_Count = 0;
    m_Next = 0;
    m_FrameBytes = 0;
    m_FramePixels = 0;
    m_RingPixels = 0;
    m_RingBytes = 0;
}

// A ring that the machine has no memory for is refused before any of it is taken.
bool FrameAverage::Allocate(unsigned pixels) {
    m_RingPixels = pixels;
    m_RingBytes = pixels * kBytesPerSample;
    const auto slots = static_cast<std::size_t>(m_Length);
    // A slot comes from the heap, in the worst case as pages of its own.
    const std::uint64_t sums = PagesTaken(std::uint64_t{pixels} * sizeof m_Sums[0], kHeapOverhead);
    const std::uint64_t per_slot = PagesTaken(m_RingBytes, kHeapOverhead) + sizeof m_Ring[0];
    if (sums + slots * per_slot >= platform::AvailablePhysicalMemory()) return false;
    try {
        m_Ring.resize(slots);
        for (auto& slot : m_Ring) slot.resize(pixels);
        m_Sums.resize(pixels);
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

int FrameAverage::Prepare(unsigned pixels_of_frame) {
    constexpr const char* kUpdate = "ZelCameraControlImpl::UpdateImageAvgBuffer";
    if (m_Length == 0) {
        ZEL_LOG(m_Logger, kLogTrace, kUpdate, "m_ImageAvgFrameCountMax == 0");
        return 0;
    }
    if (m_Ring.empty() && !Allocate(pixels_of_frame)) {
        Release();
        m_Length = 0;
        ZEL_LOG(m_Logger, kLogError, kUpdate, "malloc() failed");
        return 1;
    }
    if (m_RingPixels < pixels_of_frame) {
        ZEL_LOG(m_Logger, kLogWarning, kUpdate,
                "The averaging ring holds smaller frames: full frames are not averaged!");
    }
    ZEL_LOG(m_Logger, kLogTrace, kUpdate, "returning true");
    return 0;
}

bool FrameAverage::Process(ZelImageInternal* image) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessAverageImage";
    ZEL_SCOPE_TIMER(timer, "PostProcessAverageImage", m_Logger, kFunction);
    if (!image) return false;
    if (m_Length == 0 || m_Ring.empty()) return true;
    const std::span frame = Samples(*image, image->num_pixels);
    const unsigned bytes = image->size_in_bytes;
    if (frame.empty() || bytes > m_RingBytes || bytes > image->buffer_size || frame.size_bytes() > bytes) {
        return false;
    }
    // Frames of another size than those in the ring begin it anew.
    if (bytes != m_FrameBytes || image->num_pixels != m_FramePixels) {
        m_FrameBytes = bytes;
        m_FramePixels = image->num_pixels;
        m_Count = 0;
        m_Next = 0;
        std::ranges::fill(m_Sums, 0u);
    }
    if (m_Next >= m_Length) m_Next = 0;
    const bool ring_is_full = m_Count >= m_Length;
    if (!ring_is_full) ++m_Count;
    // The sums over the ring are kept from frame to frame: a long ring costs no more than a short one.
    kernels::Kernels().average_step(frame, std::span(m_Ring[static_cast<std::size_t>(m_Next)]).first(frame.size()),
                                    std::span(m_Sums).first(frame.size()), static_cast<std::uint32_t>(m_Count),
                                    ring_is_full);
    ++m_Next;
    ZEL_LOG(m_Logger, kLogTrace, kFunction, "%s", kDashes);
    ZEL_LOG(m_Logger, kLogTrace, kFunction, "m_ImageAvgFrameCount:%4d  m_ImageAvgFrameIndex:%4d ", m_Count, m_Next);
    ZEL_LOG(m_Logger, kLogTrace, kFunction, "%s", kDashes);
    return true;
}

}  // namespace zel
