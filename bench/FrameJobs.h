// What the benchmarks of the frame path work on: frames of a 2048 x 2048 camera, and the path with its records.
#ifndef BENCH_FRAMEJOBS_H
#define BENCH_FRAMEJOBS_H

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <span>
#include <vector>

#include "image/PixelMemory.h"
#include "image/TapReadout.h"
#include "image/ZelCameraControlImpl.h"

namespace zel::bench {

inline constexpr unsigned kSide = 2048;
inline constexpr std::size_t kSamples = std::size_t{kSide} * kSide;
inline constexpr std::size_t kRing = 8;

// A frame in page memory, as the pool's records have it.
class Frame {
  public:
    Frame() : m_Samples(static_cast<std::uint16_t*>(AllocatePixels(kSamples * 2))) {}
    std::uint16_t* data() const { return m_Samples.get(); }
    std::uint16_t& operator[](std::size_t i) const { return m_Samples.get()[i]; }
    operator std::span<std::uint16_t>() const { return {m_Samples.get(), kSamples}; }
    std::span<const std::uint8_t> Packed() const {
        return {reinterpret_cast<const std::uint8_t*>(m_Samples.get()), kSamples / 2 * 3};
    }

  private:
    struct Free {
        void operator()(std::uint16_t* samples) const { FreePixels(samples); }
    };
    std::unique_ptr<std::uint16_t, Free> m_Samples;
};

// A smooth picture of `bits` bits with a little noise.
inline void Draw(std::span<std::uint16_t> frame, unsigned bits, unsigned seed = 1) {
    std::mt19937 random(seed);
    const unsigned largest = (1u << bits) - 1;
    for (std::size_t i = 0; i < kSamples; ++i) {
        const std::size_t x = i % kSide, y = i / kSide;
        const auto level = static_cast<unsigned>((x + y) * (largest - 64) / (2 * kSide));
        frame[i] = static_cast<std::uint16_t>(level + random() % 64);
    }
}

using Ring = std::vector<Frame>;
inline Ring MakeRing(unsigned bits) {
    Ring ring(kRing);
    for (std::size_t i = 0; i < kRing; ++i) Draw(ring[i], bits, static_cast<unsigned>(i + 1));
    return ring;
}

// What a camera of this depth and so many taps sends; the region is the frame.
inline FrameGeometry GeometryOf(unsigned bits, int taps) {
    FrameGeometry geometry;
    geometry.cuts_region = geometry.region_is_size = true;
    geometry.width = geometry.height = kSide;
    geometry.bit_depth = bits;
    geometry.bytes_per_pixel = 2;
    geometry.taps = taps;
    geometry.roi = {0, 0, kSide, kSide, 1, 1};
    return geometry;
}

// A job that works in the frames themselves, which get their content anew before each time.
template <class Run>
struct InPlace {
    const Ring& frames;
    const Ring& content;
    Run run;

    void operator()(std::size_t i) const { run(i); }
    void Refresh(std::size_t i) const { std::memcpy(frames[i].data(), content[i].data(), kSamples * 2); }
};
template <class Run>
InPlace(const Ring&, const Ring&, Run) -> InPlace<Run>;

// The frame path of a camera object on the records of its pool.
class FramePath {
  public:
    using Way = ZelCameraControlImpl::Path;
    explicit FramePath(const FrameGeometry& geometry, Way way = Way::kMonochrome)
        : m_Content(MakeRing(geometry.bit_depth)), m_Way(way) {
        camera.SetGeometry(geometry);
        camera.UpdateImagePool(kRing, way == Way::kColor);
        for (std::size_t i = 0; i < kRing; ++i) {
            m_Frames[i] = camera.GetFreeImageImpl();
            Refresh(i);
        }
    }
    // As the transport fills the record.
    void Refresh(std::size_t i) { std::memcpy(m_Frames[i]->pixels, m_Content[i].data(), kSamples * 2); }
    // As the transport delivers it: with the geometry of a full frame.
    const FrameLease& Fresh(std::size_t i) {
        camera.Pool().RestoreGeometry(m_Frames[i].image);
        m_Frames[i]->post_processed = 0;
        return m_Frames[i];
    }
    void operator()(std::size_t i) { camera.PostProcessOnce(Fresh(i), m_Way); }
    ZelCameraControlImpl camera{"Bench"};

  private:
    const Ring m_Content;
    const Way m_Way;
    std::array<FrameLease, kRing> m_Frames;
};

// The tap readout alone.
class Readout {
  public:
    explicit Readout(const FrameGeometry& geometry, TapBalance* balance = nullptr)
        : m_Geometry(geometry), m_Path(geometry), m_Readout(m_Logger, balance) {
        m_Readout.Prepare(geometry);
    }
    void operator()(std::size_t i) { m_Readout.Process(m_Path.Fresh(i).image, m_Geometry); }
    void Refresh(std::size_t i) { m_Path.Refresh(i); }

  private:
    const FrameGeometry m_Geometry;
    FramePath m_Path;
    Logger m_Logger{"ZelCameraControl"};
    TapReadout m_Readout;
};

}  // namespace zel::bench

#endif
