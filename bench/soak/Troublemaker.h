// Searches, and what goes wrong at cameras: unplugs them and plugs them in, loses, delays and garbles what they send.
#ifndef BENCH_SOAK_TROUBLEMAKER_H
#define BENCH_SOAK_TROUBLEMAKER_H

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "bench/soak/SoakedCamera.h"

namespace zel::soak {

class Troublemaker : public Watched {
  public:
    Troublemaker(const std::vector<std::unique_ptr<SoakedCamera>>& cameras, unsigned seed, SoakCounts& counts)
        : Watched("troublemaker"), m_Cameras(cameras), m_Random(seed), m_Counts(counts) {}

    void Run(Sdk& sdk, const std::atomic<bool>& end) {
        while (!end) {
            Step("pause");
            std::this_thread::sleep_for(std::chrono::milliseconds(20 + Roll(600)));
            if (Roll(4) == 0) {
                Step("search");
                static_cast<void>(sdk.cameras());
                m_Counts.Add(kSearches);
            } else {
                MakeTrouble(*m_Cameras[Roll(m_Cameras.size())]);
            }
        }
        Step(nullptr);
    }

  private:
    std::size_t Roll(std::size_t sides) { return m_Random() % sides; }
    void MakeTrouble(SoakedCamera& camera) {
        // A reply that does not come costs the application 5 s, so there are few of those.
        static constexpr const char* kTroubles[] = {
            "lose after=A times=A", "lose after=A times=A", "stall A after=A",    "stall A",
            "unplug-frame after=A", "delay A times=3",      "one-byte times=3",   "exception 0x16 after=A",
            "unplug-connect",       "unplug-start",         "unplug-stop",        "unplug-close",
            "unplug after=A",       "garbage after=A",      "truncate 5 after=A", "no-reply after=A"};
        const std::unique_lock lock(camera.spared, std::try_to_lock);
        if (!lock) return;
        const std::size_t sort = Roll(3);
        Step(sort == 0 ? "unplug" : sort == 1 ? "plug" : "fault");
        std::string fault = kTroubles[Roll(Roll(20) ? std::size(kTroubles) - 3 : std::size(kTroubles))];
        for (std::size_t at; (at = fault.find('A')) != std::string::npos;) {
            fault.replace(at, 1, std::to_string(1 + Roll(100)));
        }
        const bool done =
            sort == 2 ? camera.simulated.Do("fault", fault) : camera.simulated.Do(sort ? "plug" : "unplug");
        if (done) m_Counts.Add(kFaults);
    }

    const std::vector<std::unique_ptr<SoakedCamera>>& m_Cameras;
    std::minstd_rand m_Random;
    SoakCounts& m_Counts;
};

}  // namespace zel::soak

#endif
