#include "platform/Locks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace zel::platform {
namespace {

using Clock = std::chrono::steady_clock;

long MillisecondsSince(Clock::time_point start) {
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

template <class Work>
auto OnAnotherThread(Work work) {
    decltype(work()) result{};
    std::thread([&] { result = work(); }).join();
    return result;
}

TEST(TimedMutex, IsRecursiveForItsHolderAndClosedToOthers) {
    TimedMutex mutex;
    ASSERT_TRUE(mutex.Valid());
    const auto others_get_in = [&] { return OnAnotherThread([&] { return mutex.Lock(0) && mutex.Unlock(); }); };
    EXPECT_TRUE(others_get_in());
    EXPECT_TRUE(mutex.Lock(0));
    EXPECT_TRUE(mutex.Lock(0));
    EXPECT_FALSE(others_get_in());
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_FALSE(others_get_in()) << "one of two holds is left";
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_TRUE(others_get_in());
}

TEST(TimedMutex, IsReleasedByItsHolderOnly) {
    TimedMutex mutex;
    EXPECT_FALSE(mutex.Unlock()) << "nobody holds it";
    ASSERT_TRUE(mutex.Lock(0));
    EXPECT_FALSE(OnAnotherThread([&] { return mutex.Unlock(); }));
    EXPECT_FALSE(OnAnotherThread([&] { return mutex.Lock(0); })) << "the refused release changed nothing";
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_FALSE(mutex.Unlock());
}

TEST(TimedMutex, GivesUpAfterTheTimeAskedAndNotBefore) {
    TimedMutex mutex;
    ASSERT_TRUE(mutex.Lock(0));
    const auto start = Clock::now();
    EXPECT_FALSE(OnAnotherThread([&] { return mutex.Lock(60); }));
    EXPECT_GE(MillisecondsSince(start), 55);
    EXPECT_LT(MillisecondsSince(start), 5000);
    EXPECT_TRUE(mutex.Unlock());
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
    std::atomic<int> refused{0};
    ExpectMutualExclusion([&] { refused += !mutex.Lock(60000); }, [&] { refused += !mutex.Unlock(); });
    EXPECT_EQ(0, refused);
}

TEST(RecursiveLock, LetsOneThreadInAtATime) {
    RecursiveLock lock;
    ExpectMutualExclusion([&]() ZEL_NO_THREAD_SAFETY_ANALYSIS { lock.lock(); },
                          [&]() ZEL_NO_THREAD_SAFETY_ANALYSIS { lock.unlock(); });
}

}  // namespace
}  // namespace zel::platform
