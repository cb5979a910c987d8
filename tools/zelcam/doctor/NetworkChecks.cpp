// The way of a network camera's frames to this computer, and the command that mends each fault of it.
#include <fmt/format.h>

#include <algorithm>

#include "tools/zelcam/camera/PluginSet.h"
#include "tools/zelcam/doctor/Checks.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

using zel::platform::NetworkLink;

constexpr std::uint64_t kJumbo = 9000;        // what the command asks for
constexpr std::uint64_t kLargePacket = 8000;  // as good as that: one interrupt for six packets of the common size
constexpr double kCommonPacket = 1500.0;      // where the system does not tell
constexpr std::uint64_t kGigabit = 1000;

// Of each packet of the MTU's size 36 bytes are the headers of IP, UDP and the stream; around it go 38 of Ethernet.
constexpr double kHeaders = 36.0;
constexpr double kAround = 38.0;

// A link is not filled to the brim: replies, resent packets.
constexpr double kUsable = 0.95;

std::vector<NetworkCamera> CamerasOn(const NetworkLink& link, const std::vector<NetworkCamera>& cameras) {
    std::vector<NetworkCamera> on_it;
    std::ranges::copy_if(cameras, std::back_inserter(on_it), [&](const NetworkCamera& camera) {
        return std::ranges::any_of(camera.addresses, [&](const auto& address) { return Reaches(link, address); });
    });
    return on_it;
}

void CheckPackets(const NetworkLink& link, Examination& examination) {
    if (link.mtu == 0) return;
    const bool large = link.mtu >= kLargePacket;
    examination.Add(
        large ? State::kOk : State::kNote, "mtu", fmt::format("{}: packets of up to {} bytes", link.name, link.mtu),
        large ? ""
              : fmt::format("larger ones cost less time, where camera and switch take them, too: sudo ip link set "
                            "{} mtu {}",
                            link.name, kJumbo),
        {{"interface", link.name}, {"mtu", link.mtu}});
}

// What the cameras' pixels take of the link, in Mbit/s.
double Needed(const NetworkLink& link, const std::vector<NetworkCamera>& cameras) {
    double bytes = 0.0;
    for (const NetworkCamera& camera : cameras) bytes += camera.bytes_per_second;
    const double mtu = link.mtu > 576 ? static_cast<double>(link.mtu) : kCommonPacket;
    return bytes * 8e-6 * (mtu + kAround) / (mtu - kHeaders);
}

void CheckSpeed(const NetworkLink& link, const std::vector<NetworkCamera>& cameras, Examination& examination) {
    if (link.loopback) return;
    const double needed = Needed(link, cameras);
    const bool opened = std::ranges::all_of(cameras, [](const auto& camera) { return camera.bytes_per_second > 0; });
    const Json facts{{"interface", link.name},
                     {"megabits", link.megabits},
                     {"needed_megabits", needed},
                     {"cameras", cameras.size()}};
    std::string text = link.megabits == 0 ? link.name + " does not tell its speed"
                                          : fmt::format("{}: {} Mbit/s", link.name, link.megabits);
    std::string hint;
    if (!cameras.empty()) {
        text += "; " + Counted(cameras.size(), "camera");
        if (needed > 0) text += fmt::format(", {:.0f} Mbit/s with the settings they have", needed);
        if (!opened) hint = "'zelcam doctor --open' compares it with what the cameras need";
    }
    State state = State::kOk;
    if (link.megabits != 0 && link.megabits < kGigabit) {
        state = cameras.empty() ? State::kNote : State::kWarning;
        hint = fmt::format(
            "network cameras want {0} Mbit/s; look at cable and switch, then: sudo ethtool -s {1} speed {0} "
            "duplex full autoneg on",
            kGigabit, link.name);
    }
    if (link.megabits != 0 && needed > kUsable * static_cast<double>(link.megabits)) {
        state = State::kWarning;
        hint = fmt::format("frames come at {:.0f} % of their rate at most, or get lost: lower the frame rate, or {}",
                           100.0 * kUsable * static_cast<double>(link.megabits) / needed,
                           cameras.size() > 1 ? "give each camera a link of its own" : "use a faster link");
    }
    examination.Add(state, "link_speed", text, hint, facts);
}

}  // namespace

bool NetworkIsWanted(const CameraCounts& cameras) {
    return !cameras.network.empty() || ChosenPlugins().folder.ends_with("gige");
}

void TellOfLinks(const std::vector<NetworkLink>& links, const CameraCounts& cameras, Examination& examination) {
    bool any = false;
    for (const NetworkLink& link : links) {
        const std::vector<NetworkCamera> on_it = CamerasOn(link, cameras.network);
        if (link.loopback && on_it.empty()) continue;
        any = true;
        CheckPackets(link, examination);
        CheckSpeed(link, on_it, examination);
        if (!link.saves_power) continue;
        examination.Add(State::kNote, "link_power", link.name + " may be sent to sleep while it seems idle",
                        fmt::format("echo on | sudo tee /sys/class/net/{}/device/power/control", link.name),
                        {{"interface", link.name}});
    }
    if (!any) {
        return examination.Add(
            State::kWarning, "links", "no network: nothing but loopback is up",
            "look at the cable; 'ip link' lists the interfaces, 'sudo ip link set NAME up' switches one on");
    }
    for (const NetworkCamera& camera : cameras.network) {
        if (std::ranges::any_of(links, [&](const auto& link) { return !CamerasOn(link, {camera}).empty(); })) continue;
        const std::string address = camera.addresses.empty() ? "an unknown address" : camera.addresses.front();
        examination.Add(
            State::kWarning, "camera_net",
            fmt::format("camera {} at {} is in no net of this computer", camera.number, address),
            "give the interface it is plugged into an address of its net: sudo ip address add ADDRESS/BITS dev "
            "NAME",
            {{"camera", camera.number}, {"addresses", camera.addresses}});
    }
}

void CheckNetwork(const CameraCounts& cameras, Examination& examination) {
    examination.Begin("network");
    const auto links = zel::platform::NetworkLinks();
    if (links) return TellOfLinks(*links, cameras, examination);
    examination.Add(State::kNote, "links", "the network of this system is not examined");
}

}  // namespace zelcam
