// The sensor's temperature: it drifts towards the set point of the cooling mode.
#ifndef SIM_COOLER_H
#define SIM_COOLER_H

#include <chrono>

namespace zel::sim {

class Cooler {
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr double kAmbient = 25.0;  // degrees Celsius
    static constexpr double SetPoint(int mode) { return mode == 1 ? 0.0 : mode == 2 ? -20.0 : kAmbient; }

    // seconds: after this time about two thirds of a step are done.
    explicit Cooler(double seconds) : m_Seconds(seconds) {}

    void SetMode(int mode, Clock::time_point now);
    double Temperature(Clock::time_point now) const;
    void Reset() { m_Start = m_Target = kAmbient; }

  private:
    double m_Seconds;
    double m_Start = kAmbient;
    double m_Target = kAmbient;
    Clock::time_point m_Since{};
};

}  // namespace zel::sim

#endif
