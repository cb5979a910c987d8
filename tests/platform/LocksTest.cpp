#include "platform/Locks.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>
#include <vector>

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

// The plain counter is what a lock that lets two in would spoil, and what a thread sanitizer watches.
template <class Lock, class Unlock>
void ExpectMutualExclusion(Lock lock, Unlock unlock) {
    constexpr int kThreads = 4, kRounds = 1000;
    int counter = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                lock();
                lock();
                const int seen = counter;
                if (round % 64 == 0) std::this_thread::yield();
                counter = seen + 1;
                unlock();
                unlock();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(kThreads * kRounds, counter);
}

TEST(TimedMutex, LetsOneThreadInAtATime) {
    TimedMutex mutex;
    ExpectMutualExclusion([&] { EXPECT_TRUE(mutex.Lock(60000)); }, [&] { EXPECT_TRUE(mutex.Unlock()); });
}

TEST(RecursiveLock, LetsOneThreadInAtATime) {
    RecursiveLock lock;
    ExpectMutualExclusion([&]() ZEL_NO_THREAD_SAFETY_ANALYSIS { lock.lock(); },
                          [&]() ZEL_NO_THREAD_SAFETY_ANALYSIS { lock.unlock(); });
}

}  // namespace
}  // namespace zel::platform
