// Whether doing something again and again takes threads or handles along.
#ifndef ZELCAM_STEADYUSE_H
#define ZELCAM_STEADYUSE_H

#include <fmt/format.h>

#include "platform/ProcessUse.h"
#include "tools/zelcam/check/Clause.h"

namespace zelcam::check {

class SteadyUse {
  public:
    static constexpr int kRounds = 20;

    // At the beginning of each round. The first ones may take what stays.
    void Round(int round) {
        if (round != kWarmRounds) return;
        m_Threads = zel::platform::RunningThreads();
        m_Handles = zel::platform::OpenHandles();
    }
    // Throws Broken when they have become more: by half of one a round, since some are about to be gone at any moment.
    void Require() const {
        Look(zel::platform::RunningThreads() - m_Threads, "threads");
        Look(zel::platform::OpenHandles() - m_Handles, "handles");
    }

  private:
    static constexpr int kWarmRounds = 4;

    static void Look(int more, const char* what) {
        check::Require(more < (kRounds - kWarmRounds) / 2, fmt::format("{} {} more than before", more, what));
    }

    int m_Threads = 0;
    int m_Handles = 0;
};

}  // namespace zelcam::check

#endif
