// How cameras that come in through one network port of this computer divide its rate among themselves.
#ifndef GIGE_LINKSHARES_H
#define GIGE_LINKSHARES_H

#include <cstdint>
#include <map>
#include <string>

#include "platform/Mutex.h"

namespace zel::gige {

// The open cameras of each port, by the port's address. Any thread.
class LinkShares {
  public:
    static LinkShares& Get();

    void Join(const std::string& port);
    void Leave(const std::string& port);
    int Cameras(const std::string& port);

  private:
    platform::Mutex m_Lock;
    std::map<std::string, int> m_Cameras ZEL_GUARDED_BY(m_Lock);
};

// What a packet costs on an Ethernet cable beyond its own bytes, which begin with the IP header: preamble 8, header 14,
// checksum 4, gap 12.
inline constexpr int kBytesAroundPacket = 38;

// How long a camera waits between two packets so that one packet of each other camera fits between them. They then come
// in turns instead of in bursts that the port or a switch would have to store.
std::int64_t PacketDelayNs(int packet_bytes, double link_bits_per_second, int cameras);

// Bytes per second that a camera can send then, packet headers included.
double ShareBytesPerSecond(int packet_bytes, double link_bits_per_second, int cameras);

}  // namespace zel::gige

#endif
