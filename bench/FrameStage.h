// How the stages of the frame path are measured.
//
// *hot* works on the same frame again and again, *pool* rotates eight, as an acquisition does. A stage's figure is the
// time of memcpy of the frame, measured in turns with it, divided by the stage's time: 1.0 is as fast as copying. Each
// job is alone with its frame: before a hot one is timed it has run once, before a pool is gone over the caches are
// filled with something else, so that what the jobs before it left there does not count. One that works in place gets
// the same input every time.
#ifndef BENCH_FRAMESTAGE_H
#define BENCH_FRAMESTAGE_H

#include <emmintrin.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/Figure.h"
#include "bench/FrameJobs.h"
#include "kernels/Kernels.h"

namespace zel::bench {

// Figures for the two ways of going over frames; 0: none.
struct Targets {
    double hot = 0;
    double pool = 0;
    double For(bool in_pool) const { return in_pool ? pool : hot; }
};

// Something else that does the same work, and how many times as fast as it we want to be.
template <class Job>
struct Peer {
    const char* name;
    Targets targets;
    Job job;
    bool there = true;  // false: not on this machine, no figure
};
template <class Job>
Peer(const char*, Targets, Job) -> Peer<Job>;
template <class Job>
Peer(const char*, Targets, Job, bool) -> Peer<Job>;

// What the memory allows a stage that reads and writes so many bytes for each frame, and does nothing with them.
struct Traffic {
    const char* name = nullptr;
    std::size_t read = 0;
    std::size_t written = 0;
    double share = 0;       // of this limit that the stage is to reach; 0: none
    bool in_place = false;  // written is what was read
};

class FrameBench {
  public:
    using Targets = bench::Targets;

    // --variant NAME: the kernels of that name instead of the fastest. Limits are measured with the fastest all the
    // same.
    explicit FrameBench(Report& report)
        : m_Report(report), m_Fastest(kernels::Kernels()), m_Source(MakeRing(12)), m_Copy(kRing), m_Written(kRing) {
        const std::string name = report.Option("--variant");
        if (name.empty()) return;
        const kernels::KernelTable* table = nullptr;
        for (const auto& [word, variant] : kVariants) {
            if (name == word) table = kernels::FindKernels(variant);
        }
        if (!table) {
            std::fprintf(stderr, "there are no kernels '%s' on this machine\n", name.c_str());
            std::exit(2);
        }
        kernels::ForceKernels(table);
    }
    ~FrameBench() { kernels::ForceKernels(nullptr); }

    // Adds `name`.hot and `name`.pool; `share` tells how much of the frame's bytes the job really moves, if it is to be
    // measured against that. The peers' figures say how many times faster the job is than each of them.
    template <class Job, class... Peers>
    void Stage(const std::string& name, Targets targets, double share, Job&& job, Peers&&... peers) {
        StageWithin(Traffic{}, name, targets, share, job, peers...);
    }
    // The same beside what the memory allows.
    template <class Job, class... Peers>
    void StageWithin(const Traffic& traffic, const std::string& name, Targets targets, double share, Job&& job,
                     Peers&&... peers) {
        for (const bool pool : {false, true}) {
            const auto timed = [&](auto& one) { return [&, pool] { return Time(one, pool); }; };
            auto copy = [&](std::size_t i) {
                std::memcpy(m_Copy[i].data(), m_Source[i].data(), kSamples * 2);
                Keep(m_Copy[i]);
            };
            auto through_cache = [&](std::size_t i) { Move(i, traffic, false); };
            auto past_cache = [&](std::size_t i) { Move(i, traffic, true); };
            const auto times = Medians(m_Report.Repetitions(11), timed(copy), timed(job), timed(through_cache),
                                       timed(past_cache), timed(peers.job)...);
            const std::string mode = name + (pool ? ".pool" : ".hot");
            Figure figure{mode, times[0] * share / times[1], "x memcpy", Wanted(targets.For(pool))};
            const bool within_copy = traffic.read <= kSamples * 2 && traffic.written <= kSamples * 2;
            const Quantity* least = &times[2];
            if (times[3].Median() < least->Median()) least = &times[3];
            // memcpy does as much, and may know better.
            if (within_copy && times[0].Median() < least->Median()) least = &times[0];
            if (traffic.name) figure.limit = {traffic.name, (times[0] * share / *least).Median()};
            m_Report.Add(figure);
            if (traffic.share > 0) {
                m_Report.Add({mode + ".of_limit", *least / times[1], "x limit", Wanted(traffic.share)});
            }
            std::size_t at = 4;
            (..., AddPeer(mode, pool, peers, times[at++] / times[1]));
            m_Report.Add({mode + ".time", times[1] / Times() * 1e3, "ms"});
        }
    }

  private:
    static constexpr struct {
        const char* name;
        kernels::Variant variant;
    } kVariants[] = {{"scalar", kernels::Variant::kScalar},
                     {"avx2-without-gathers", kernels::Variant::kAvx2WithoutGathers},
                     {"avx2", kernels::Variant::kAvx2},
                     {"avx512", kernels::Variant::kAvx512}};

    static constexpr std::size_t kSweep = std::size_t{128} << 20;

    static Target Wanted(double value) { return value > 0 ? AtLeast(value) : Target{}; }
    double Times() const { return m_Report.DryRun() ? 1 : kRing; }

    // The time of eight runs.
    template <class Job>
    double Time(Job& job, bool pool) {
        const auto times = static_cast<std::size_t>(Times());
        const auto refresh = [&](std::size_t i) {
            if constexpr (requires { job.Refresh(i); }) job.Refresh(i);
        };
        double seconds = 0;
        if (pool) {
            for (std::size_t i = 0; i < times; ++i) refresh(i);
            if (!m_Report.DryRun()) Sweep();
            return Seconds([&] {
                for (std::size_t i = 0; i < times; ++i) job(i);
            });
        }
        refresh(0);
        job(0);
        for (std::size_t i = 0; i < times; ++i) {
            refresh(0);
            seconds += Seconds([&] { job(0); });
        }
        return seconds;
    }

    // Fills the caches with what no job uses.
    void Sweep() {
        if (m_Sweep.capacity == 0) m_Sweep.Reserve(kSweep);
        Keep(m_Fastest.all_bits({m_Sweep.pixels, m_Sweep.capacity / 2}));
    }

    // Reads and writes in turns, a few KiB at a time, with stores that go through the cache or past it.
    void Move(std::size_t i, const Traffic& traffic, bool past_cache) {
        constexpr std::size_t kSteps = 1024;
        const std::size_t samples = traffic.read / kSteps / 2, bytes = traffic.written / kSteps;
        if (bytes > 0 && m_Written[i].capacity < traffic.written) m_Written[i].Reserve(traffic.written);
        auto* to = reinterpret_cast<char*>(m_Written[i].pixels);
        const std::span<const std::uint16_t> from(traffic.in_place ? m_Written[i].pixels : m_Source[i].data(),
                                                  kSamples);
        std::uint16_t all = 0;
        for (std::size_t step = 0; step < kSteps; ++step, to += bytes) {
            if (samples > 0) all |= m_Fastest.all_bits(from.subspan(step * samples, samples));
            if (!past_cache) {
                std::memset(to, 1, bytes);
            } else {
                for (std::size_t at = 0; at + 16 <= bytes; at += 16) {
                    _mm_stream_si128(reinterpret_cast<__m128i*>(to + at), _mm_setzero_si128());
                }
            }
        }
        if (past_cache) _mm_sfence();
        Keep(all);
    }

    template <class P>
    void AddPeer(const std::string& name, bool pool, const P& peer, const Quantity& ratio) {
        if (peer.there) m_Report.Add({name + "." + peer.name, ratio, "x", Wanted(peer.targets.For(pool))});
    }

    Report& m_Report;
    const kernels::KernelTable& m_Fastest;
    Ring m_Source, m_Copy;
    std::vector<PageBuffer> m_Written;
    PageBuffer m_Sweep;
};

}  // namespace zel::bench

#endif
