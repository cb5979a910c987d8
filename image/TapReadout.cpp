#include "image/TapReadout.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <utility>

#include "image/FrameSamples.h"
#include "image/TapRows.h"
#include "kernels/Kernels.h"
#include "tapbalance/TapBalance.h"

namespace zel {

using kernels::scalar::PackedSize12;

namespace {
constexpr int kSlowReadoutMhz = 20;  // the readout speeds that cameras are calibrated for
constexpr int kFastReadoutMhz = 40;

// Every row begins on a whole byte, and the taps cover all of the frame.
bool RowsAreWhole(const ZelImageInternal& image, int taps) {
    return image.w % 2 == 0 && (taps == 2 || (taps == 4 && image.h % 2 == 0)) && image.h > 0 && image.w > 0;
}
}  // namespace

void TapReadout::Prepare(const FrameGeometry& geometry) {
    if (geometry.taps < 2) return;
    const std::uint64_t bytes = Area(geometry.width, geometry.height) * geometry.bytes_per_pixel;
    if (geometry.taps == 4) m_ReorderBuffer.Reserve(static_cast<std::size_t>(bytes));
    if (geometry.packed) ReserveSpare(Area(geometry.width, geometry.height) * kBytesPerSample, bytes);
    if (geometry.taps == 2) ReserveRows(geometry.width);
}

int TapReadout::BufferCount() const {
    return (m_ReorderBuffer.pixels ? 1 : 0) + (m_SpareBuffer.pixels ? 1 : 0) + (m_RowScratch.empty() ? 0 : 1);
}

void TapReadout::ReleaseBuffers() {
    m_ReorderBuffer.Release();
    m_SpareBuffer.Release();
    m_RowScratch = {};
}

bool TapReadout::Process(ZelImageInternal* image, const FrameGeometry& geometry) {
    ZEL_SCOPE_TIMER(timer, "PostProcessTapBalance", m_Logger, "ZelCameraControlImpl::PostProcessTapBalance");
    if (!image) return false;
    const int taps = geometry.taps;
    const bool fast = geometry.readout_mhz == kFastReadoutMhz;
    TapBalance* const balance = taps > 1 && (fast || geometry.readout_mhz == kSlowReadoutMhz) ? m_Balance : nullptr;
    const TapRows rows(balance && !m_Logger.Enabled() ? balance->TablesFor(fast) : TapTables(), taps, image->h);
    bool corrected = false;
    const bool answer = ReadOut(image, geometry, rows, corrected);
    const std::span frame = Samples(*image, Area(image->w, image->h));
    if (balance && !corrected && !frame.empty()) {
        balance->TranslatePixels(static_cast<int>(image->w), static_cast<int>(image->h), taps, fast, frame.data());
    }
    return answer;
}

// Unpacks and reorders; tells whether the rows were corrected on the way.
bool TapReadout::ReadOut(ZelImageInternal* image, const FrameGeometry& geometry, const TapRows& rows, bool& corrected) {
    const int taps = geometry.taps;
    if (taps < 2 || !geometry.packed) return ReorderTaps(image, taps, rows, corrected);
    const std::uint64_t count = Area(image->w, image->h);
    // A packed sample takes more than a byte: the first test keeps the second from overflowing.
    if (!image->pixels || count > image->buffer_size) return false;
    if (PackedSize12(static_cast<std::size_t>(count)) > image->buffer_size) return false;
    // The packed frame goes on through the other steps when there is no memory.
    if (!ReserveSpare(count * kBytesPerSample, image->buffer_size)) return ReorderTaps(image, taps, rows, corrected);
    if (RowsAreWhole(*image, taps) && (taps == 2 || m_ReorderBuffer.capacity >= count * kBytesPerSample)) {
        ReadOutByRows(image, taps, rows);
        corrected = rows.There();
        return true;
    }
    UnpackFrame(image);
    return ReorderTaps(image, taps, rows, corrected);
}

// The spare is as large as the record's buffer, or as the frame when that is larger: the record can hold a full frame
// also after the two have changed places.
bool TapReadout::ReserveSpare(std::uint64_t frame_bytes, std::uint64_t record_bytes) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessTapBalance";
    const std::uint64_t capacity = std::max(frame_bytes, record_bytes);
    if (m_SpareBuffer.capacity != capacity) m_SpareBuffer.Release();
    if (capacity <= 0xFFFFFFFFu && m_SpareBuffer.Reserve(static_cast<std::size_t>(capacity))) return true;
    ZEL_LOG(m_Logger, kLogError, kFunction, "***ERROR***: ptr is 0");
    ZEL_LOG(m_Logger, kLogError, kFunction,
            "***ERROR***: m_ImageManager.PixelBufferAllocate(total_num_bytes:%d) failed",
            static_cast<int>(frame_bytes));
    return false;
}

void TapReadout::SwapBuffer(ZelImageInternal* image, PageBuffer& buffer) {
    const std::size_t old_capacity = image->buffer_size;
    if (buffer.capacity != old_capacity) {
        // Its size follows from the other buffer's.
        FreePixels(image->color_pixels);
        image->color_pixels = nullptr;
        image->color_size_in_bytes = 0;
    }
    std::swap(image->pixels, buffer.pixels);
    image->buffer_size = static_cast<unsigned>(buffer.capacity);
    buffer.capacity = old_capacity;
}

bool TapReadout::ReserveRows(std::size_t samples) {
    try {
        if (m_RowScratch.size() < samples) m_RowScratch.resize(samples);
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

// Unpacks and reorders in one go.
void TapReadout::ReadOutByRows(ZelImageInternal* image, int taps, const TapRows& rows) {
    const kernels::KernelTable& kernel = kernels::Kernels();
    const std::size_t w = image->w;
    const std::size_t h = image->h;
    const std::size_t block = taps == 4 ? 2 * w : w;  // samples that arrive together
    const std::size_t block_bytes = PackedSize12(block);
    const std::span packed(reinterpret_cast<const std::uint8_t*>(image->pixels), image->buffer_size);
    const std::span picture(m_SpareBuffer.pixels, w * h);
    for (std::size_t i = 0; i < w * h / block; ++i) {
        const std::span raw = packed.subspan(i * block_bytes, block_bytes);
        const std::span row = picture.subspan(i * w, w);
        if (taps == 4) {
            const std::span bottom = picture.subspan((h - 1 - i) * w, w);
            kernel.unpack_row_pair_four_taps(raw, row, bottom);
            rows.Correct(bottom, h - 1 - i);
        } else {
            kernel.unpack_row_two_taps(raw, row);
        }
        rows.Correct(row, i);
    }
    SwapBuffer(image, m_SpareBuffer);
    image->size_in_bytes = static_cast<unsigned>(picture.size_bytes());
}

void TapReadout::UnpackFrame(ZelImageInternal* image) {
    const std::span packed(reinterpret_cast<const std::uint8_t*>(image->pixels), image->buffer_size);
    const std::span samples(m_SpareBuffer.pixels, static_cast<std::size_t>(Area(image->w, image->h)));
    kernels::Kernels().unpack12(packed, samples);
    SwapBuffer(image, m_SpareBuffer);
    image->size_in_bytes = static_cast<unsigned>(samples.size_bytes());
}

bool TapReadout::ReorderTaps(ZelImageInternal* image, int taps, const TapRows& rows, bool& corrected) {
    if (taps == 2) return ReorderTwoTaps(image, rows, corrected);
    if (taps == 4) return ReorderFourTaps(image, rows, corrected);
    return true;
}

bool TapReadout::ReorderTwoTaps(ZelImageInternal* image, const TapRows& rows, bool& corrected) {
    const std::span frame = Samples(*image, Area(image->w, image->h));
    const std::size_t w = image->w;
    if (frame.empty() || !ReserveRows(w)) return false;
    const std::span scratch = std::span(m_RowScratch).first(w);
    for (std::size_t row = 0; row < image->h; ++row) {
        const std::span samples = frame.subspan(row * w, w);
        kernels::Kernels().reorder_row_two_taps(samples, scratch);
        rows.Correct(scratch, row);
        std::memcpy(samples.data(), scratch.data(), samples.size_bytes());
    }
    corrected = rows.There();
    return true;
}

bool TapReadout::ReorderFourTaps(ZelImageInternal* image, const TapRows& rows, bool& corrected) {
    const std::size_t w = image->w;
    const std::size_t h = image->h;
    const std::span frame = Samples(*image, Area(image->w, image->h));
    if (frame.empty() || !m_ReorderBuffer.pixels || m_ReorderBuffer.capacity < image->size_in_bytes) return false;
    if (image->size_in_bytes > image->buffer_size || frame.size_bytes() > m_ReorderBuffer.capacity) return false;
    // A buffer of the same size in which every sample gets written takes the record's place.
    const bool swaps = w % 2 == 0 && h % 2 == 0 && frame.size_bytes() == image->size_in_bytes &&
                       m_ReorderBuffer.capacity == image->buffer_size;
    const std::span picture(m_ReorderBuffer.pixels, frame.size());
    const std::size_t block = w / 2 * 4;
    for (std::size_t pair = 0; pair < h / 2; ++pair) {
        const std::span top = picture.subspan(pair * w, w);
        const std::span bottom = picture.subspan((h - 1 - pair) * w, w);
        kernels::Kernels().reorder_row_pair_four_taps(frame.subspan(pair * block, block), top, bottom);
        if (!swaps) continue;
        rows.Correct(top, pair);
        rows.Correct(bottom, h - 1 - pair);
    }
    if (swaps) {
        SwapBuffer(image, m_ReorderBuffer);
        corrected = rows.There();
        return true;
    }
    // On purpose: a frame of fewer than two rows is not reordered, but the scratch is copied over it all the same.
    std::memcpy(image->pixels, m_ReorderBuffer.pixels, image->size_in_bytes);
    return true;
}

}  // namespace zel
