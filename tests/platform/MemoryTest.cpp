#include "platform/Memory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>
#include <vector>

namespace zel::platform {
namespace {

// As cameras do that start together. The first in the program.
TEST(Memory, WhatIsFreeIsToldToThreadsThatAskAtOnce) {
    std::atomic<bool> all_there{false};
    std::atomic<int> told{0};
    std::vector<std::thread> threads(4);
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            while (!all_there) std::this_thread::yield();
            told += AvailablePhysicalMemory() > 0 ? 1 : 0;
        });
    }
    all_there = true;
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(told, 4);
}

TEST(Memory, RefusesWhatTheSystemDoesNotHave) {
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
    for (const std::size_t bytes : {std::size_t{0}, kMost, kMost - 4096, kMost / 2})
        EXPECT_EQ(nullptr, ReservePages(bytes)) << bytes;
    ReleasePages(nullptr);
}

// 5 GB in all: a 32-bit program has no room to keep them.
TEST(Memory, IsZeroedAndGivenBackWhole) {
    constexpr std::size_t kBlock = std::size_t{256} << 20;
    for (int i = 0; i < 20; ++i) {
        auto* const pages = static_cast<char*>(ReservePages(kBlock));
        ASSERT_NE(nullptr, pages) << "round " << i;
        EXPECT_EQ(0, pages[0]++ + pages[kBlock - 1]++);
        TouchPages(pages, 0);
        TouchPages(pages + 1, 8192);
        TouchPages(pages + kBlock - 8193, 8193);
        EXPECT_EQ(2, pages[0] + pages[kBlock - 1]) << "what is in touched pages stays";
        ReleasePages(pages);
    }
}

}  // namespace
}  // namespace zel::platform
