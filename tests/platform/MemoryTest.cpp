#include "platform/Memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

namespace zel::platform {
namespace {

class Memory : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(0, LivePageReservations()); }
    void TearDown() override {
        SetPageReservationLimit(-1);
        EXPECT_EQ(0, LivePageReservations());
    }
};

TEST_F(Memory, RefusesWhatTheSystemDoesNotHave) {
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
    for (const std::size_t bytes : {std::size_t{0}, kMost, kMost - 4096, kMost / 2}) {
        EXPECT_EQ(nullptr, ReservePages(bytes)) << bytes;
    }
}

// 5 GB in all: a 32-bit program has no room to keep them.
TEST_F(Memory, IsGivenBackWhole) {
    constexpr std::size_t kBlock = std::size_t{256} << 20;
    for (int i = 0; i < 20; ++i) {
        void* pages = ReservePages(kBlock);
        ASSERT_NE(nullptr, pages) << "round " << i;
        ReleasePages(pages);
    }
}

TEST_F(Memory, KnowsHowMuchIsAvailable) {
    const std::uint64_t available = AvailablePhysicalMemory();
    EXPECT_GT(available, std::uint64_t{1} << 20);
    EXPECT_LT(available, std::uint64_t{1} << 50);
}

}  // namespace
}  // namespace zel::platform
