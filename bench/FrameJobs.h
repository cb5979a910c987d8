// What the benchmarks of the frame path share: frames of a 2048 x 2048 camera and the two ways of going over them.
//
// *hot* works on the same frame again and again; *pool* rotates eight, as an acquisition does. A stage's figure is the
// time of memcpy of the frame, measured in turns with it, divided by the stage's time: 1.0 is as fast as copying.
#ifndef BENCH_FRAMEJOBS_H
#define BENCH_FRAMEJOBS_H

#include <sys/resource.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "bench/Figure.h"
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

// The frame path of a camera object on the records of its pool.
class FramePath {
  public:
    explicit FramePath(const FrameGeometry& geometry) {
        camera.SetGeometry(geometry);
        camera.UpdateImagePool(kRing);
        for (FrameLease& frame : m_Frames) {
            frame = camera.GetFreeImageImpl();
            Draw({frame->pixels, kSamples}, geometry.bit_depth);
        }
    }
    // As the transport delivers it: with the geometry of a full frame.
    const FrameLease& Fresh(std::size_t i) {
        camera.Pool().RestoreGeometry(m_Frames[i].image);
        m_Frames[i]->post_processed = 0;
        return m_Frames[i];
    }
    ZelCameraControlImpl camera{"Bench"};

  private:
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

  private:
    const FrameGeometry m_Geometry;
    FramePath m_Path;
    Logger m_Logger{"ZelCameraControl"};
    TapReadout m_Readout;
};

// Pages that the system gave this process so far.
inline long PageFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

// Measures jobs that are called with the number of the frame to work on.
class FrameBench {
  public:
    explicit FrameBench(Report& report) : m_Report(report), m_Source(MakeRing(12)), m_Copy(MakeRing(12)) {}

    struct Targets {
        double hot = 0;  // 0: none
        double pool = 0;
    };

    // Adds `name`.hot and `name`.pool; `share` tells how much of the frame's bytes the job really moves, if it is to be
    // measured against that. The peers' figures say how many times faster the job is than each of them.
    template <class Job, class... Peers>
    void Stage(const std::string& name, Targets targets, double share, Job&& job, Peers&&... peers) {
        for (const bool pool : {false, true}) {
            const std::size_t frames = m_Report.DryRun() ? 1 : kRing;
            const auto all = [&](auto& one) {
                return [&] {
                    for (std::size_t i = 0; i < frames; ++i) one(pool ? i : 0);
                };
            };
            auto copy = [&](std::size_t i) {
                std::memcpy(m_Copy[i].data(), m_Source[i].data(), kSamples * 2);
                Keep(m_Copy[i]);
            };
            const auto times = Medians(m_Report.Repetitions(15), all(copy), all(job), all(peers.job)...);
            const std::string mode = pool ? ".pool" : ".hot";
            const double target = pool ? targets.pool : targets.hot;
            m_Report.Add(
                {name + mode, times[0] * share / times[1], "x memcpy", target > 0 ? AtLeast(target) : Target{}});
            std::size_t at = 2;
            (..., AddPeer(name + mode, pool, peers, times[at++] / times[1]));
            m_Report.Add({name + mode + ".time", times[1] / static_cast<double>(frames) * 1e3, "ms"});
        }
    }

  private:
    template <class P>
    void AddPeer(const std::string& name, bool pool, const P& peer, double ratio) {
        if (!peer.there) return;
        const double target = pool ? peer.targets.pool : peer.targets.hot;
        m_Report.Add({name + "." + peer.name, ratio, "x", target > 0 ? AtLeast(target) : Target{}});
    }

    Report& m_Report;
    Ring m_Source, m_Copy;
};

// Something else that does the same work, and how many times as fast as it we want to be.
template <class Job>
struct Peer {
    const char* name;
    FrameBench::Targets targets;
    Job job;
    bool there = true;  // false: not on this machine, no figure
};
template <class Job>
Peer(const char*, FrameBench::Targets, Job) -> Peer<Job>;
template <class Job>
Peer(const char*, FrameBench::Targets, Job, bool) -> Peer<Job>;

}  // namespace zel::bench

#endif
