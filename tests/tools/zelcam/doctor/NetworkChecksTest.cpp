// What the doctor says about the way of network cameras' frames, for interfaces that are made up.
#include <gmock/gmock.h>

#include "tools/zelcam/doctor/Checks.h"

namespace zelcam {

using zel::platform::NetworkLink;

constexpr NetworkLink::Net kNet{0xC0A80101, 0xFFFFFF00};  // 192.168.1.1/24

// 2048 x 2048 samples of two bytes.
NetworkCamera CameraAt(const char* address, double frames_per_second) {
    return {0, {"nonsense", address}, frames_per_second * 8388608.0};
}

TEST(NetworkChecks, EachFaultOfALinkIsToldWithTheCommandThatMendsIt) {
    const NetworkLink good{.name = "eth1", .mtu = 9000, .megabits = 1000, .nets = {kNet}};
    const auto with = [&](auto change) {
        NetworkLink link = good;
        change(link);
        return std::vector{link};
    };
    const NetworkCamera there = CameraAt("192.168.1.20", 12.0);
    const struct {
        std::vector<NetworkLink> links;
        std::vector<NetworkCamera> cameras;
        const char *check, *state, *said;
    } rows[] = {
        {{good}, {there}, "mtu", "ok", "eth1: packets of up to 9000 bytes"},
        {{good}, {there}, "link_speed", "ok", "1 camera, 812 Mbit/s with the settings they have"},
        {{good}, {CameraAt("192.168.1.20", 0.0)}, "link_speed", "ok", "doctor --open"},
        {{good}, {there, there}, "link_speed", "warning", "frames come at 59 % of their rate"},
        {with([](auto& link) { link.mtu = 1500; }), {}, "mtu", "note", "sudo ip link set eth1 mtu 9000"},
        {with([](auto& link) { link.mtu = 1500; }),
         {CameraAt("192.168.1.2", 14.0)},
         "link_speed",
         "warning",
         "987 Mbit/s"},
        {with([](auto& link) { link.megabits = 100; }), {}, "link_speed", "note", "sudo ethtool -s eth1 speed 1000"},
        {with([](auto& link) { link.megabits = 0; }), {there}, "link_speed", "ok", "does not tell its speed"},
        {with([](auto& link) { link.saves_power = true; }), {}, "link_power", "note", "/eth1/device/power/control"},
        {{good}, {CameraAt("192.168.2.20", 12.0)}, "camera_net", "warning", "sudo ip address add"},
        {{good}, {CameraAt("192.168.1.20.5", 12.0)}, "camera_net", "warning", "in no net of this computer"},
        {with([](auto& link) { link.loopback = true; }), {}, "links", "warning", "nothing but loopback is up"},
    };
    for (const auto& row : rows) {
        Examination examination(false);
        TellOfLinks(row.links, {row.cameras, false}, examination);
        const Json all = examination.ToJson();
        Json found;
        for (const Json& finding : all["findings"]) {
            if (finding["check"] == row.check) found = finding;
        }
        ASSERT_FALSE(found.is_null()) << row.check << row.said;
        EXPECT_EQ(found["state"], row.state) << found;
        EXPECT_THAT(found["text"].get<std::string>() + found["hint"].get<std::string>(), testing::HasSubstr(row.said));
    }
}

}  // namespace zelcam
