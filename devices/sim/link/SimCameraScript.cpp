// Script and inspection of a simulated camera.
#include "devices/sim/link/SimCamera.h"

namespace zel::sim {

void SimCamera::AddFault(const Fault& fault) {
    const platform::ScopedLock lock(m_Lock);
    m_Faults.Add(fault);
}

void SimCamera::ClearFaults() {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Faults.Clear();
        m_Firmware.SetCalcNeverEnds(false);
        ++m_FaultClears;
    }
    m_Changed.notify_all();
}

void SimCamera::SetCalcDelay(int milliseconds) {
    const platform::ScopedLock lock(m_Lock);
    m_Firmware.SetCalcDelay(milliseconds);
}

void SimCamera::SetFlashTimes(const FlashTimes& times) {
    const platform::ScopedLock lock(m_Lock);
    m_Firmware.SetFlashTimes(times);
}

void SimCamera::SetCalcNeverEnds(bool never) {
    const platform::ScopedLock lock(m_Lock);
    m_Firmware.SetCalcNeverEnds(never);
}

bool SimCamera::HardwareTrigger(TriggerEdge edge) {
    bool taken = false;
    {
        const platform::ScopedLock lock(m_Lock);
        taken = m_Plugged && m_Firmware.HardwareTrigger(edge);
    }
    m_Changed.notify_all();
    return taken;
}

std::string SimCamera::Log(std::size_t last) const {
    const platform::ScopedLock lock(m_Lock);
    std::string text;
    for (std::size_t i = m_Log.size() - std::min(last, m_Log.size()); i < m_Log.size(); ++i) text += m_Log[i] + '\n';
    return text;
}

void SimCamera::ClearLog() {
    const platform::ScopedLock lock(m_Lock);
    m_Log.clear();
}

std::uint64_t SimCamera::Exchanges() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Exchanges;
}

FrameCounts SimCamera::Frames() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Frames;
}

std::string SimCamera::Name() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Firmware.Name();
}

}  // namespace zel::sim
