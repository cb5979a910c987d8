#include "platform/NetworkLinks.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <algorithm>
#include <fstream>
#include <memory>

namespace zel::platform {

namespace {

std::string WordIn(const std::string& path) {
    std::ifstream file(path);
    std::string word;
    file >> word;
    return word;
}

// 0 also for an interface that says -1: it does not know.
std::uint64_t NumberIn(const std::string& path) {
    std::ifstream file(path);
    std::int64_t number = 0;
    return file >> number && number > 0 ? static_cast<std::uint64_t>(number) : 0;
}

std::uint32_t HostAddress(const sockaddr* address) {
    return address ? ntohl(reinterpret_cast<const sockaddr_in*>(address)->sin_addr.s_addr) : 0;
}

}  // namespace

std::optional<std::vector<NetworkLink>> NetworkLinks(const std::string& facts) {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) return std::nullopt;
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> guard(list, freeifaddrs);
    std::vector<NetworkLink> links;
    // An entry for each interface and another one for each address of it.
    for (const ifaddrs* entry = list; entry; entry = entry->ifa_next) {
        if (!(entry->ifa_flags & IFF_UP) || !(entry->ifa_flags & IFF_RUNNING)) continue;
        const std::string name = entry->ifa_name;
        auto link = std::ranges::find(links, name, &NetworkLink::name);
        if (link == links.end()) {
            const std::string folder = facts + "/" + name;
            links.push_back({.name = name,
                             .loopback = (entry->ifa_flags & IFF_LOOPBACK) != 0,
                             .saves_power = WordIn(folder + "/device/power/control") == "auto",
                             .mtu = NumberIn(folder + "/mtu"),
                             .megabits = NumberIn(folder + "/speed"),
                             .nets = {}});
            link = std::prev(links.end());
        }
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET) continue;
        link->nets.push_back({HostAddress(entry->ifa_addr), HostAddress(entry->ifa_netmask)});
    }
    return links;
}

}  // namespace zel::platform
