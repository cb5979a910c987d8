// The progress display without the system's window: what it shows, when it is drawn anew, and its thread.
#include "util/ProgressControl.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "tests/support/FakeClock.h"

namespace zel {
namespace {

class FakeWindow : public ProgressWindow {
  public:
    FakeWindow() {
        SetHasBar(true);
        s_Last = this;
    }
    ~FakeWindow() override { s_Last = nullptr; }

    void DispatchMessages(const std::atomic<bool>&) override {
        m_Seen = Copy().lines[0].length;  // reads while the owner writes, as a paint does
        if (s_OnDispatch) s_OnDispatch();
    }
    Contents Shown() const { return Copy(); }
    int Invalidations() const { return m_Invalidations; }

    static std::unique_ptr<ProgressWindow> Make(const char*) { return std::make_unique<FakeWindow>(); }
    static std::unique_ptr<ProgressWindow> MakeLate(const char* title) {
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
        return Make(title);
    }
    static std::unique_ptr<ProgressWindow> MakeNone(const char*) { return nullptr; }

    static inline std::atomic<FakeWindow*> s_Last{nullptr};
    static inline std::function<void()> s_OnDispatch;

  private:
    void Invalidate() override { ++m_Invalidations; }

    int m_Invalidations = 0;
    std::uint32_t m_Seen = 0;
};

TEST(ProgressPercentTest, IsTruncatedAndNeverFaults) {
    const struct {
        int done, total;
        std::optional<int> expected;
    } cases[] = {{0, 200, 0},          {199, 200, 99},
                 {200, 200, 100},      {-2, 3, -66},
                 {300, 200, 150},      {21474837, 100, -21474835},       // the product wraps
                 {5, 0, std::nullopt}, {0x20000000, -1, std::nullopt}};  // no such 32-bit quotient
    for (const auto& c : cases) EXPECT_EQ(c.expected, ProgressPercent(c.done, c.total)) << c.done << " of " << c.total;
}

TEST(ProgressTextTest, KeepsWhatFitsAndTheFullLength) {
    ProgressControl control;
    control.make_window = &FakeWindow::Make;
    EXPECT_EQ(0, SetProgressText(&control, 0, "nothing is shown yet"));
    ASSERT_TRUE(StartProgress(&control));
    FakeWindow& window = *FakeWindow::s_Last;
    for (const std::string& text :
         {std::string(64, 'f'), std::string(64, 'f') + "beyond", std::string("row 1"), std::string()}) {
        ASSERT_EQ(1, SetProgressText(&control, 1, text.c_str()));
        EXPECT_EQ(text.size(), window.Shown().lines[1].length);
        EXPECT_EQ(text.substr(0, 64), window.Shown().lines[1].Visible());
        EXPECT_EQ("", window.Shown().lines[0].Visible());
    }
    EXPECT_EQ(0, SetProgressText(&control, 2, "no such line"));
    EXPECT_EQ(0, SetProgressText(&control, 0, nullptr));
    EXPECT_EQ(0, SetProgressText(nullptr, 0, "no display"));
    EXPECT_EQ(4, window.Invalidations());
}

TEST(Progress, IsDrawnAnewOnlyWhenThePercentageChanges) {
    ProgressControl control;
    control.make_window = &FakeWindow::Make;
    ASSERT_TRUE(StartProgress(&control));
    const struct {
        int done, total, invalidations;
        std::string label;
    } steps[] = {{5, 0, 0, ""},
                 {0, 200, 1, "0 % Complete"},
                 {84, 200, 2, "42 % Complete"},
                 {85, 200, 2, "42 % Complete"},
                 {7, 0, 2, "42 % Complete"},
                 {200, 200, 3, "100 % Complete"},
                 {0, 100, 4, "0 % Complete"}};
    for (const auto& step : steps) {
        UpdateProgress(&control, step.done, step.total);
        const ProgressBar bar = FakeWindow::s_Last.load()->Shown().bar;
        EXPECT_EQ(step.label, std::string(bar.text, bar.text_length)) << step.done << " of " << step.total;
        EXPECT_EQ(step.invalidations, FakeWindow::s_Last.load()->Invalidations()) << step.done << " of " << step.total;
    }
}

TEST(ProgressThread, EndsAfterItsFirstSleepWhenRunningIsClearedBeforeAMessageComes) {
    const test::FakeClock clock;
    ProgressControl control;
    control.make_window = &FakeWindow::Make;
    control.running = true;
    FakeWindow::s_OnDispatch = [&] { control.running = false; };
    ProgressThread(&control);
    FakeWindow::s_OnDispatch = nullptr;
    EXPECT_EQ(std::vector<std::uint32_t>{50}, clock.Sleeps());
}

TEST(ProgressThread, IsWaitedForUntilItHasItsWindow) {
    ProgressControl control;
    control.make_window = &FakeWindow::MakeLate;
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(StartProgress(&control));
        EXPECT_FALSE(StartProgress(&control)) << "it runs already";
        EXPECT_EQ(1, SetProgressText(&control, 0, "working"));
        EndProgress(&control);
        EXPECT_EQ(nullptr, FakeWindow::s_Last) << "the window is given back";
        EXPECT_EQ(0, SetProgressText(&control, 0, "ended"));
    }
}

TEST(ProgressThread, WithoutAWindowNobodyWaitsForOne) {
    // Sleeps until the thread has tried.
    struct Clock : test::FakeClock {
        explicit Clock(const ProgressControl& shared) : control(shared) {}
        void Sleep(std::uint32_t milliseconds) override {
            FakeClock::Sleep(milliseconds);
            while (!control.failed) std::this_thread::yield();
        }
        const ProgressControl& control;
    };
    ProgressControl control;
    const Clock clock(control);
    control.make_window = &FakeWindow::MakeNone;
    EXPECT_FALSE(StartProgress(&control));
    EXPECT_LE(clock.CountSleeps(100), 1);
    EndProgress(&control);
}

}  // namespace
}  // namespace zel
