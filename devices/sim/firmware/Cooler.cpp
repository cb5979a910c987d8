#include "devices/sim/firmware/Cooler.h"

#include <cmath>

namespace zel::sim {

void Cooler::SetMode(int mode, Clock::time_point now) {
    m_Start = Temperature(now);
    m_Target = SetPoint(mode);
    m_Since = now;
}

double Cooler::Temperature(Clock::time_point now) const {
    if (m_Start == m_Target) return m_Target;
    const double elapsed = std::chrono::duration<double>(now - m_Since).count();
    return m_Target + (m_Start - m_Target) * std::exp(-elapsed / m_Seconds);
}

}  // namespace zel::sim
