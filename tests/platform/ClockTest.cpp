#include "platform/Clock.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <thread>

#include "tests/support/FakeClock.h"

namespace zel::platform {
namespace {

TEST(Clock, SleepsForAtLeastTheTimeAskedByBothClocks) {
    const TimerResolution resolution;
    std::int64_t frequency = 0, first = 0, last = 0;
    ASSERT_TRUE(PerformanceFrequency(frequency));
    ASSERT_GT(frequency, 100000) << "too coarse to measure microseconds";
    ASSERT_TRUE(PerformanceCounter(first));
    const std::uint32_t start = MillisecondClock();
    SleepMilliseconds(50);
    const double by_clock = MillisecondClock() - start;
    ASSERT_TRUE(PerformanceCounter(last));
    const double by_counter = static_cast<double>(last - first) * 1000.0 / static_cast<double>(frequency);
    EXPECT_GE(by_clock, 49.0);  // both readings are cut to whole milliseconds
    EXPECT_LT(by_clock, 5000.0);
    // The counter's span encloses the clock's.
    EXPECT_GE(by_counter, by_clock - 2.0);
    EXPECT_LE(by_counter, by_clock + 1000.0);
}

TEST(Clock, IsReplacedForEveryThreadAndGivenBack) {
    const std::uint32_t real = MillisecondClock();
    {
        test::FakeClock fake(0xfffffff0u);
        std::uint32_t seen = 0;
        std::thread([&] {
            SleepMilliseconds(100000);
            seen = MillisecondClock();
        }).join();
        EXPECT_EQ(0xfffffff0u + 100000u, seen);
        EXPECT_EQ(1, fake.CountSleeps(100000));
    }
    EXPECT_LT(MillisecondClock() - real, 60000u);
}

// In milliseconds since midnight.
long ParseTimeOfDay(const std::string& text) {
    int hours = -1, minutes = -1, seconds = -1, milliseconds = -1;
    EXPECT_EQ(12u, text.size()) << text;
    EXPECT_EQ(4, std::sscanf(text.c_str(), "%2d:%2d:%2d.%3d", &hours, &minutes, &seconds, &milliseconds)) << text;
    return ((hours * 60L + minutes) * 60 + seconds) * 1000 + milliseconds;
}

TEST(Clock, TellsTheTimeOfDayInUtc) {
    using namespace std::chrono;
    constexpr long kDay = 24L * 60 * 60 * 1000;
    const auto now = system_clock::now();
    const long expected = static_cast<long>(duration_cast<milliseconds>(now - floor<days>(now)).count());
    const long told = ParseTimeOfDay(TimeOfDay());
    EXPECT_LT((told - expected + 1000 + kDay) % kDay, 11000) << "told " << told << ", expected " << expected;
}

}  // namespace
}  // namespace zel::platform
