// What an application does with one camera for hours: it opens it, makes settings, lets it run, takes its frames in
// every way there is, and closes it, in any order and whatever goes wrong meanwhile. Every frame is accounted for.
#ifndef BENCH_SOAK_SOAKEDCAMERA_H
#define BENCH_SOAK_SOAKEDCAMERA_H

#include <cstdio>
#include <deque>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <thread>

#include "bench/soak/SimulatedCamera.h"
#include "bench/soak/SoakCounts.h"
#include "bench/soak/Watched.h"
#include "zel/FrameCounter.h"
#include "zel/Zel.h"

namespace zel::soak {

class SoakedCamera : public Watched {
  public:
    SoakedCamera(const CameraInfo& info, const SimulatedCamera& end, std::string picture, unsigned seed,
                 SoakCounts& counts)
        : Watched(info.name + " " + info.serial),
          simulated(end),
          m_Serial(info.serial),
          m_Picture(std::move(picture)),
          m_Random(seed),
          m_Counts(counts) {}

    const SimulatedCamera simulated;
    std::mutex spared;  // no faults while it is held

    // Sessions until `end`.
    void Run(Sdk& sdk, const std::atomic<bool>& end) {
        while (!end) {
            if (Roll(4) > 0) Mend();
            try {
                Session(sdk, end);
            } catch (const Error& error) {
                m_Counts.Add(error);
                Step("a pause after an error");
                std::this_thread::sleep_for(20ms);
            }
        }
        Mend();
        Step(nullptr);
    }

  private:
    // For one frame: with faults, and when none is at work.
    static constexpr std::chrono::milliseconds kPatience = 2s, kLongPatience = 60s;

    static constexpr unsigned kMostBuffers = 16;

    // What an acquisition gave the application.
    struct Acquisition {
        FrameCounter counter;
        std::uint64_t wanted = 0;  // 0: no number
        std::uint64_t skipped = 0, untold = 0, link_drops = 0;
        std::int64_t last = -1;
        bool newest = false, in_order = true, complete = false;
        std::atomic<bool> lost{false};

        // Whoever takes a frame may read all of it.
        void Take(const Frame& frame) {
            const FrameInfo info = frame.info();
            in_order &= last < static_cast<std::int64_t>(info.number);
            last = info.number;
            counter.frame(info.number, info.arrival_ms);
            static std::atomic<unsigned> sum{0};
            const auto color = frame.color_bytes();
            if (info.width * info.height > 0) sum += frame.pixels().front() + frame.pixels().back();
            if (!color.empty())
                sum += std::to_integer<unsigned>(color.front()) + std::to_integer<unsigned>(color.back());
        }
    };

    unsigned Roll(unsigned sides) { return static_cast<unsigned>(m_Random() % sides); }
    unsigned Between(unsigned least, unsigned most) { return least + Roll(most - least + 1); }
    void Mend() const {
        simulated.Do("fault", "clear");
        simulated.Do("plug");
    }

    void Session(Sdk& sdk, const std::atomic<bool>& end) {
        Step("opening");
        std::optional<Camera> camera(sdk.open(m_Serial, {Roll(4) == 0}));
        m_Counts.Add(kSessions);
        for (unsigned runs = Between(1, 4); camera && runs > 0 && !end; --runs) {
            Step("settings");
            Try([&] { MakeSettings(*camera); });
            Acquire(camera, end);
        }
        if (camera && Roll(3) == 0) Try([&] { CountRecords(*camera); });
        Step("closing");
    }
    template <class Work>
    void Try(Work work) {
        try {
            work();
        } catch (const Error& error) {
            m_Counts.Add(error);
        }
    }

    // A camera that refuses one goes on with what it has.
    void MakeSettings(Camera& camera) {
        camera.use_grey();
        camera.set(settings::buffers, Between(2, kMostBuffers));
        camera.set(settings::exposure, std::chrono::milliseconds(Between(1, 20)));
        camera.set_averaging(Roll(3) ? 0 : static_cast<int>(Between(2, 4)));
        camera.set_calibration(Roll(2) == 0);
        const unsigned width = camera.get(settings::sensor_width), height = camera.get(settings::sensor_height);
        const bool color = !camera.is_monochrome() && Roll(2) == 0;
        const Binning binning{color || Roll(2) ? 1 : Between(1, 4), color || Roll(2) ? 1 : Between(1, 4)};
        Region region{0, 0, width, height};
        if (Roll(2) == 0) {
            region = {Roll(width / 2), Roll(height / 2), 0, 0};
            region.width = Between(16, width - region.x);
            region.height = Between(16, height - region.y);
        }
        camera.set_region_and_binning(&region, &binning);
        if (color) camera.use_color({static_cast<ColorFormat>(Roll(3)), static_cast<ColorSpace>(Roll(4))});
        camera.set(settings::taps_index, Roll(3));
    }

    // One run, after which the camera may be gone.
    void Acquire(std::optional<Camera>& camera, const std::atomic<bool>& end) {
        Acquisition run;
        const SentFrames before = simulated.Sent();
        bool leave = false;
        camera->on_event(
            [&run](const CameraEvent& event) { run.lost = run.lost || event.kind != CameraEvent::Kind::camera; });
        run.lost = camera->link_lost();
        Try([&] { leave = !Frames(*camera, run, end); });
        Step("stopping");
        if (leave) {
            camera.reset();
        } else {
            camera->stop();
            camera->on_frame(nullptr);
            camera->on_event(nullptr);
        }
        m_Counts.Add(kRuns);
        Account(run, simulated.Sent().Since(before));
    }

    // False when the camera is to be closed as it is, running, with frames that wait.
    bool Frames(Camera& camera, Acquisition& run, const std::atomic<bool>& end) {
        const unsigned way = Roll(8);
        const bool handler = way == 0, triggered = way == 1;
        run.newest = way == 2 || way == 3;
        const Order order = run.newest ? Order::newest : Order::every;
        const int wanted = Roll(2) ? 0 : static_cast<int>(Between(1, 200));
        run.wanted = triggered ? 0 : static_cast<std::uint64_t>(wanted);
        if (handler) camera.on_frame([&run](const Frame& frame) { run.Take(frame); });
        Step("starting");
        camera.start({static_cast<int>(run.wanted), triggered ? Trigger::software : Trigger::as_set});
        const unsigned most_held = Roll(camera.get(settings::buffers));
        const auto until = Clock::now() + std::chrono::milliseconds(Between(20, 3000));
        std::deque<Frame> held;
        while (Clock::now() < until && !end) {
            Step("frames");
            if (handler) {
                std::this_thread::sleep_for(10ms);
                continue;
            }
            if (triggered) camera.trigger();
            FrameResult frame = camera.wait_frame(kPatience, order);
            if (!frame) break;
            run.Take(*frame);
            if (run.counter.frames() % 100 == 1) Save(*frame);
            held.push_back(frame.take());
            while (held.size() > most_held) held.pop_front();
        }
        held.clear();
        if (Roll(8) == 0) return false;
        Step("stopping");
        camera.stop();
        while (Frame frame = camera.try_frame(0ms, order)) run.Take(frame);
        run.skipped = camera.skipped();
        run.link_drops = camera.link_drops();
        // Those that came while it was being stopped are not told of.
        for (; ZelImage* const image = camera.native()->GetPendingImage(); ++run.untold)
            camera.native()->FreeImage(image);
        run.complete = true;
        return true;
    }

    // One picture at a time: the SDK keeps the memory of as many writers as were at work at once, up to its bound,
    // which would look like growth for hours.
    void Save(const Frame& frame) {
        static std::mutex one;
        const std::lock_guard lock(one);
        save(frame, m_Picture + (Roll(2) ? ".tif" : ".png"));
    }

    // Frames that came and were not taken were passed over in a run for the newest one or for a number of frames, at
    // least as many as the layer has counted. In a run that was given up, or whose link was lost, no more than the pool
    // holds may be left; in all others none.
    void Account(const Acquisition& run, SentFrames sent) {
        const std::uint64_t taken = run.counter.frames();
        const auto end = static_cast<std::uint64_t>(run.last + 1);
        if (!simulated.Tells()) {
            const Drops drops = run.counter.count(run.link_drops);
            sent = {taken + run.skipped, drops.link, drops.no_buffer};
        }
        // A camera that is gone can't be waited for: it may be about to count its last frame.
        if (run.lost && end == sent.All() + 1) ++sent.delivered;
        m_Counts.Add(kSent, sent.All());
        m_Counts.Add(kTaken, taken);
        m_Counts.Add(kLost, sent.lost);
        m_Counts.Add(kNoBuffer, sent.no_buffer);
        const bool passes = run.newest || run.wanted > 0;
        const std::uint64_t rest = sent.delivered - taken;
        const std::uint64_t most = passes ? rest : run.complete && !run.lost ? run.untold : kMostBuffers;
        const bool right = taken <= sent.delivered && (end <= sent.All() || !simulated.Tells()) && run.in_order;
        if (right && run.skipped <= rest && rest <= most) {
            m_Counts.Add(passes ? kPassedOver : kAborted, rest);
            return;
        }
        m_Counts.Add(kUnaccounted, right ? rest : taken);
        std::printf(
            "UNACCOUNTED: %s, %s: delivered %llu lost %llu no-buffer %llu; taken %llu, skipped %llu, wanted %llu, "
            "last number %lld%s%s%s\n",
            name.c_str(), run.newest ? "newest" : "every", sent.delivered, sent.lost, sent.no_buffer,
            static_cast<unsigned long long>(taken), static_cast<unsigned long long>(run.skipped),
            static_cast<unsigned long long>(run.wanted), static_cast<long long>(run.last),
            run.in_order ? "" : ", not in order", run.complete ? "" : ", given up", run.lost ? ", link lost" : "");
    }

    // Every record of the pool can be had.
    void CountRecords(Camera& camera) {
        const std::lock_guard nothing_fails(spared);
        Step("counting records");
        Mend();
        camera.native()->StopTriggerAcquisition(0);  // a fault may have eaten the last one
        const std::size_t records = camera.get(settings::buffers);
        camera.parameter(ZEL_PARAM_FRAME_COUNT).set(0);  // one that was set for a run stays when a fault came between
        const SentFrames before = simulated.Sent();
        camera.start();
        std::vector<Frame> held;
        std::set<const ZelColorImage*> different;
        FrameResult frame = camera.wait_frame(kLongPatience);
        for (; frame; frame = camera.wait_frame(held.size() < records ? kLongPatience : 20ms)) {
            different.insert(frame->native());
            held.push_back(frame.take());
        }
        // One of the network is switched off by somebody else, at any moment.
        const bool gone = !simulated.Tells() && !frame && frame.no_frame().reason() == Reason::link_lost;
        if (different.size() != held.size() || (!gone && held.size() != records)) {
            m_Counts.Add(kMissingRecords);
            const SentFrames sent = simulated.Sent().Since(before);
            std::printf("RECORDS: %s has %zu of %zu, %zu different ones, delivered %llu no-buffer %llu: %s\n",
                        name.c_str(), held.size(), records, different.size(), sent.delivered, sent.no_buffer,
                        frame.why().c_str());
        }
        camera.stop();
    }

    const std::string m_Serial, m_Picture;
    std::minstd_rand m_Random;
    SoakCounts& m_Counts;
};

}  // namespace zel::soak

#endif
