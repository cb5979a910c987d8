#include "platform/Locks.h"

#include <gtest/gtest.h>

#include <future>

namespace zel::platform {
namespace {

TEST(TimedMutex, BelongsToItsHolderUntilItIsReleasedAsOftenAsItWasTaken) {
    TimedMutex mutex;
    ASSERT_TRUE(mutex.Valid());
    const auto others_get_in = [&] {
        return std::async(std::launch::async, [&] { return mutex.Lock(0) && mutex.Unlock(); }).get();
    };
    EXPECT_FALSE(mutex.Unlock()) << "nobody holds it";
    EXPECT_TRUE(others_get_in());
    EXPECT_TRUE(mutex.Lock(0));
    EXPECT_TRUE(mutex.Lock(0));
    EXPECT_FALSE(std::async(std::launch::async, [&] { return mutex.Unlock(); }).get()) << "held by another thread";
    EXPECT_FALSE(others_get_in()) << "the refused release changed nothing";
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_FALSE(others_get_in()) << "one of two holds is left";
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_FALSE(mutex.Unlock());
    EXPECT_TRUE(others_get_in());
}

}  // namespace
}  // namespace zel::platform
