#include "platform/Memory.h"

#include <gtest/gtest.h>

#include <limits>

namespace zel::platform {
namespace {

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
