// So many a second, with a reserve for a burst.
#ifndef ZELCAM_RATELIMIT_H
#define ZELCAM_RATELIMIT_H

#include <algorithm>
#include <chrono>

namespace zelcam {

class RateLimit {
  public:
    using Clock = std::chrono::steady_clock;

    RateLimit(double per_second, double burst) : m_PerSecond(per_second), m_Burst(burst), m_Left(burst) {}

    // Whether one more is allowed at this moment; moments don't go back.
    bool Allows(Clock::time_point now) {
        const std::chrono::duration<double> passed = now - m_Last;
        m_Left = std::min(m_Burst, m_Left + m_PerSecond * passed.count());
        m_Last = now;
        if (m_Left < 1.0) return false;
        m_Left -= 1.0;
        return true;
    }

  private:
    double m_PerSecond;
    double m_Burst;
    double m_Left;
    Clock::time_point m_Last{};
};

}  // namespace zelcam

#endif
