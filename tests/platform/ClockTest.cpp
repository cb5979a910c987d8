#include "platform/Clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>

namespace zel::platform {
namespace {

using namespace std::chrono;

// Three clocks that each enclose the next one and a sleep. Readings are cut to whole milliseconds.
TEST(Clock, TheMillisecondClockAndTheCounterAgreeOnASleep) {
    const TimerResolution resolution;
    std::int64_t frequency = 0, first = 0, last = 0;
    ASSERT_TRUE(PerformanceFrequency(frequency));
    ASSERT_GT(frequency, 100000) << "too coarse to measure microseconds";
    const auto outer = steady_clock::now();
    const std::uint32_t start = MillisecondClock();
    ASSERT_TRUE(PerformanceCounter(first));
    SleepMilliseconds(50);
    ASSERT_TRUE(PerformanceCounter(last));
    const double by_clock = MillisecondClock() - start;  // modulo 2^32, as the clock goes
    const double by_outer = duration<double, std::milli>(steady_clock::now() - outer).count();
    const double by_counter = static_cast<double>(last - first) * 1000.0 / static_cast<double>(frequency);
    EXPECT_GE(by_counter, 49.0);
    EXPECT_GE(by_clock, by_counter - 2.0);
    EXPECT_GE(by_outer, by_clock - 2.0);
}

TEST(Clock, TellsTheTimeOfDayInUtc) {
    const auto time_of_day = [] {
        const auto now = floor<milliseconds>(system_clock::now());
        return now - floor<days>(now);
    };
    const auto before = time_of_day();
    const std::string text = TimeOfDay();
    const auto after = time_of_day();
    int numbers[4] = {};
    EXPECT_EQ(text.size(), 12u);
    ASSERT_EQ(std::sscanf(text.c_str(), "%2d:%2d:%2d.%3d", &numbers[0], &numbers[1], &numbers[2], &numbers[3]), 4);
    const milliseconds told = hours(numbers[0]) + minutes(numbers[1]) + seconds(numbers[2]) + milliseconds(numbers[3]);
    // Midnight may come in between; the system may read its clock in coarse steps.
    EXPECT_LE((told - before + milliseconds(20) + days(1)) % days(1), after - before + milliseconds(40)) << text;
}

}  // namespace
}  // namespace zel::platform
