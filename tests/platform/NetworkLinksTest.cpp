// The interfaces of this computer, with facts about one that every computer has.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/NetworkLinks.h"

namespace zel::platform {

TEST(NetworkLinks, WhatTheSystemDoesNotKnowIsZero) {
    const std::filesystem::path facts = std::filesystem::temp_directory_path() / "zel-network-links";
    std::filesystem::create_directories(facts / "lo/device/power");
    std::ofstream(facts / "lo/mtu") << "65536\n";
    std::ofstream(facts / "lo/speed") << "-1";
    std::ofstream(facts / "lo/device/power/control") << "auto\n";
    const auto links = NetworkLinks(facts.string());
    std::filesystem::remove_all(facts);
    if (!links) GTEST_SKIP() << "the network of this system is not examined";
    for (const NetworkLink& link : *links) {
        const bool own = link.name == "lo";
        EXPECT_EQ(link.mtu, own ? 65536u : 0u) << link.name;
        EXPECT_EQ(link.megabits, 0u) << link.name;
        EXPECT_EQ(link.saves_power, own) << link.name;
        if (own) {
            EXPECT_TRUE(link.loopback && Reaches(link, "127.0.0.5")) << link.nets.size();
            for (const char* other : {"128.0.0.1", "127.0.0", "127.0.0.256", "127.0.0.1.", ""})
                EXPECT_FALSE(Reaches(link, other)) << other;
        }
    }
}

}  // namespace zel::platform
