#include "devices/gige/LinkShares.h"

#include <algorithm>
#include <cmath>

namespace zel::gige {

LinkShares& LinkShares::Get() {
    static LinkShares& s_Shares = *new LinkShares;  // stays: the library does, too
    return s_Shares;
}

void LinkShares::Join(const std::string& port) {
    const platform::ScopedLock lock(m_Lock);
    ++m_Cameras[port];
}

void LinkShares::Leave(const std::string& port) {
    const platform::ScopedLock lock(m_Lock);
    if (--m_Cameras[port] <= 0) m_Cameras.erase(port);
}

int LinkShares::Cameras(const std::string& port) {
    const platform::ScopedLock lock(m_Lock);
    const auto at = m_Cameras.find(port);
    return at == m_Cameras.end() ? 0 : at->second;
}

std::int64_t PacketDelayNs(int packet_bytes, double link_bits_per_second, int cameras) {
    const double packet_ns = (packet_bytes + kBytesAroundPacket) * 8e9 / link_bits_per_second;
    return static_cast<std::int64_t>(std::ceil(packet_ns * std::max(cameras - 1, 0)));
}

double ShareBytesPerSecond(int packet_bytes, double link_bits_per_second, int cameras) {
    return link_bits_per_second / 8 * packet_bytes / (packet_bytes + kBytesAroundPacket) / std::max(cameras, 1);
}

}  // namespace zel::gige
