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
    explicit FakeWindow(bool has_bar) {
        SetHasBar(has_bar);
        s_Last = this;
    }
    ~FakeWindow() override { s_Last = nullptr; }

    void DispatchMessages(const std::atomic<bool>&) override {
        m_Seen = Copy().lines[0].length;  // reads while the owner writes, as a paint does
        if (s_OnDispatch) s_OnDispatch();
    }
    Contents Shown() const { return Copy(); }
    int Invalidations() const { return m_Invalidations; }

    static std::unique_ptr<ProgressWindow> Make(const char*) { return std::make_unique<FakeWindow>(true); }
    static std::unique_ptr<ProgressWindow> MakeWithoutBar(const char*) { return std::make_unique<FakeWindow>(false); }
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

struct Percentage {
    int done, total;
    std::optional<int> expected;
};
class PercentageTest : public testing::TestWithParam<Percentage> {};

TEST_P(PercentageTest, IsTruncatedAndNeverFaults) {
    EXPECT_EQ(GetParam().expected, ProgressPercent(GetParam().done, GetParam().total));
}
INSTANTIATE_TEST_SUITE_P(All, PercentageTest,
                         testing::Values(Percentage{0, 200, 0}, Percentage{84, 200, 42}, Percentage{199, 200, 99},
                                         Percentage{200, 200, 100}, Percentage{2, 3, 66}, Percentage{-2, 3, -66},
                                         Percentage{2, -3, -66}, Percentage{300, 200, 150},
                                         Percentage{21474837, 100, -21474835},  // the product wraps
                                         Percentage{5, 0, std::nullopt}, Percentage{0, 0, std::nullopt},
                                         Percentage{0x20000000, -1, std::nullopt}));  // no such 32-bit quotient

struct Writing {
    const char* name;
    unsigned line;
    std::string text;
};
class ProgressTextTest : public testing::TestWithParam<Writing> {};

TEST_P(ProgressTextTest, KeepsWhatFitsAndTheFullLength) {
    const auto& [name, line, text] = GetParam();
    ProgressControl control;
    control.make_window = &FakeWindow::Make;
    EXPECT_EQ(0, SetProgressText(&control, line, text.c_str())) << "nothing is shown yet";
    ASSERT_TRUE(StartProgress(&control));
    FakeWindow& window = *FakeWindow::s_Last;
    ASSERT_EQ(1, SetProgressText(&control, line, std::string(64, '-').c_str()));
    ASSERT_EQ(1, SetProgressText(&control, line, text.c_str()));
    EXPECT_EQ(2, window.Invalidations());
    EXPECT_EQ(text.size(), window.Shown().lines[line].length);
    EXPECT_EQ(text.substr(0, 64), window.Shown().lines[line].Visible());
    EXPECT_EQ("", window.Shown().lines[1 - line].Visible());

    EXPECT_EQ(0, SetProgressText(&control, 2, "no such line"));
    EXPECT_EQ(0, SetProgressText(&control, line, nullptr));
    EXPECT_EQ(0, SetProgressText(nullptr, line, "no display"));
    EXPECT_EQ(2, window.Invalidations());
}
INSTANTIATE_TEST_SUITE_P(All, ProgressTextTest,
                         testing::Values(Writing{"First", 0, "Stopping camera..."}, Writing{"Second", 1, "row 1"},
                                         Writing{"Full", 1, std::string(64, 'f')},
                                         Writing{"TooLong", 0, std::string(64, 'f') + "beyond"},
                                         Writing{"Empty", 0, ""}),
                         [](const auto& test) { return test.param.name; });

TEST(Progress, IsDrawnAnewOnlyWhenThePercentageChanges) {
    ProgressControl control;
    control.make_window = &FakeWindow::Make;
    UpdateProgress(&control, 1, 2);  // nothing is shown yet
    UpdateProgress(nullptr, 1, 2);
    ASSERT_TRUE(StartProgress(&control));
    const struct {
        int done, total, invalidations;
        std::string label;
    } steps[] = {{5, 0, 0, ""},
                 {0, 200, 1, "0 % Complete"},
                 {1, 200, 1, "0 % Complete"},
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

TEST(Progress, WithoutABarPercentagesHaveNoEffect) {
    ProgressControl control;
    control.make_window = &FakeWindow::MakeWithoutBar;
    ASSERT_TRUE(StartProgress(&control));
    UpdateProgress(&control, 1, 2);
    EXPECT_EQ(0, FakeWindow::s_Last.load()->Invalidations());
    EXPECT_EQ(1, SetProgressText(&control, 0, "the lines are there"));
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
        EXPECT_NE(nullptr, FakeWindow::s_Last);
        EXPECT_EQ(1, SetProgressText(&control, 0, "working"));
        EndProgress(&control);
        EXPECT_FALSE(control.thread.Started());
        EXPECT_EQ(nullptr, FakeWindow::s_Last) << "the window is given back";
        EXPECT_EQ(0, SetProgressText(&control, 0, "ended"));
    }
}

TEST(ProgressThread, WithoutAWindowNobodyWaitsForOne) {
    const auto begin = std::chrono::steady_clock::now();
    ProgressControl control;
    control.make_window = &FakeWindow::MakeNone;
    EXPECT_FALSE(StartProgress(&control));
    EXPECT_EQ(0, SetProgressText(&control, 0, "nowhere"));
    UpdateProgress(&control, 1, 2);
    EndProgress(&control);
    EndProgress(nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4)) << "the bound of the wait is 5 s";
}

}  // namespace
}  // namespace zel
