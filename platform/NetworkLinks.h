// The network interfaces of this computer, as far as it matters to cameras on them.
#ifndef PLATFORM_NETWORKLINKS_H
#define PLATFORM_NETWORKLINKS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zel::platform {

struct NetworkLink {
    // An IPv4 address of the interface, and which of its bits are those of the whole net.
    struct Net {
        std::uint32_t address;
        std::uint32_t mask;
    };

    std::string name;
    bool loopback = false;
    bool saves_power = false;    // the system may send its hardware to sleep
    std::uint64_t mtu = 0;       // bytes of the largest packet; 0: not known
    std::uint64_t megabits = 0;  // per second; 0: not known, as of virtual and wireless ones
    std::vector<Net> nets;
};

// Those that are up and have a cable, where the system tells. facts: the folder where it tells more about each.
std::optional<std::vector<NetworkLink>> NetworkLinks(const std::string& facts = "/sys/class/net");

// Whether the interface is in the net of an IPv4 address, "192.168.1.20"; false for what is none.
bool Reaches(const NetworkLink& link, const std::string& address);

}  // namespace zel::platform

#endif
