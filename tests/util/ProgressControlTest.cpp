// The progress display without the system's window: what it shows, when it is drawn anew, its callback and its thread.
#include "util/ProgressControl.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <thread>

#include "tests/support/FakeClock.h"
#include "util/ProgressReporter.h"

namespace zel {
namespace {

TEST(ProgressPercentTest, IsTruncatedAndNeverFaults) {
    const std::tuple<int, int, std::optional<int>> cases[] = {
        {0, 200, 0},  {199, 200, 99},      {200, 200, 100},
        {-2, 3, -66}, {300, 200, 150},     {21474837, 100, -21474835},  // the product wraps
        {5, 0, {}},   {0x20000000, -1, {}}};                            // no such 32-bit quotient
    for (const auto& [done, total, percent] : cases) EXPECT_EQ(ProgressPercent(done, total), percent) << done;
}

// The application's callback.
struct ProgressReporterTest : testing::Test {
    ProgressReporterTest() { ProgressReporter::SetCallback(&Note, this); }
    ~ProgressReporterTest() override { ProgressReporter::SetCallback(nullptr, nullptr); }

    static void ZEL_CALL Note(const char* line1, const char* line2, int percent, void* test) {
        auto* const self = static_cast<ProgressReporterTest*>(test);
        self->m_Reports.push_back(std::string(line1) + "|" + line2 + "|" + std::to_string(percent));
        if (self->m_Reports.back().starts_with("last")) ProgressReporter::SetCallback(nullptr, nullptr);
    }

    ProgressControl m_Control;
    std::vector<std::string> m_Reports;
};

TEST_F(ProgressReporterTest, IsToldEveryChangeAndTheEndUntilItRemovesItself) {
    EXPECT_EQ(0, SetProgressText(&m_Control, 0, "nothing is shown yet"));
    ASSERT_TRUE(StartProgress(&m_Control));
    EXPECT_FALSE(m_Control.thread.Started()) << "no window, on any system";
    EXPECT_EQ(0, SetProgressText(&m_Control, 2, "no such line") + SetProgressText(&m_Control, 0, nullptr) +
                     SetProgressText(nullptr, 0, "no display"));
    const std::string slot(64, 'x');
    for (const std::string& text : {slot, slot + "beyond", std::string("short"), std::string()}) {
        EXPECT_EQ(1, SetProgressText(&m_Control, 1, text.c_str()));
    }
    SetProgressText(&m_Control, 0, "Stopping camera...");
    for (const int done : {0, 0, 84, 85, 500, -500}) UpdateProgress(&m_Control, done, 200);
    UpdateProgress(&m_Control, 7, 0);
    EndProgress(&m_Control);
    ASSERT_TRUE(StartProgress(&m_Control));
    for (const char* line : {"last", "nobody is told"}) SetProgressText(&m_Control, 0, line);
    EndProgress(&m_Control);
    const std::string text = "Stopping camera...||";
    EXPECT_THAT(m_Reports,
                testing::ElementsAre("|" + slot + "|-1", "|" + slot + "|-1", "|short|-1", "||-1", text + "-1",
                                     text + "0", text + "42", text + "100", text + "0", "||-1", "last||-1"));
}

// Windows on a thread of their own; time passes when somebody sleeps.
struct ProgressThreadTest : testing::Test, test::FakeClock {
    struct Window : ProgressWindow {
        ~Window() override { s_Test->m_Live = false; }
        void DispatchMessages(const std::atomic<bool>&) override {
            Copy();  // while the owner writes, as a paint does
            if (s_Test->m_OnDispatch) s_Test->m_OnDispatch();
        }
        void Invalidate() override {}
    };
    ProgressThreadTest() {
        s_Test = this;
        m_Control.make_window = [](const char*) -> std::unique_ptr<ProgressWindow> {
            while (s_Test->CountSleeps(100) < s_Test->m_LateBy) std::this_thread::yield();
            if (!s_Test->m_HasWindow) return nullptr;
            s_Test->m_Live = true;
            return std::make_unique<Window>();
        };
    }
    // Nobody who waits for the window overtakes the thread by more than a poll.
    void Sleep(std::uint32_t milliseconds) override {
        FakeClock::Sleep(milliseconds);
        const bool waits = milliseconds == 100 && CountSleeps(100) >= m_LateBy;
        while (waits && !m_Control.failed && !m_Control.window) std::this_thread::yield();
    }

    static inline ProgressThreadTest* s_Test = nullptr;
    int m_LateBy = 0;  // polls
    bool m_HasWindow = true;
    std::atomic<bool> m_Live{false};
    std::function<void()> m_OnDispatch;
    ProgressControl m_Control;
};

TEST(ProgressControlTest, NeedsNoThreadWhereThereIsNoWindow) {
    ProgressControl control;
    control.make_window = nullptr;
    EXPECT_TRUE(StartProgress(&control));
    EXPECT_FALSE(control.thread.Started());
    EXPECT_EQ(1, SetProgressText(&control, 0, "nobody is told"));
}

TEST_F(ProgressThreadTest, EndsAfterItsFirstSleepWhenRunningIsClearedBeforeAMessageComes) {
    m_Control.running = true;
    m_OnDispatch = [&] { m_Control.running = false; };
    ProgressThread(&m_Control);
    EXPECT_EQ(std::vector<std::uint32_t>{50}, Sleeps());
}

TEST_F(ProgressThreadTest, IsWaitedForUntilItHasItsWindowOrNone) {
    for (const int late : {3, 6}) {
        m_LateBy = late;
        ASSERT_TRUE(StartProgress(&m_Control));
        EXPECT_FALSE(StartProgress(&m_Control)) << "it runs already";
        EXPECT_EQ(1, SetProgressText(&m_Control, 0, "working"));
        EndProgress(&m_Control);
        EXPECT_FALSE(m_Live) << "the window is given back";
        EXPECT_EQ(0, SetProgressText(&m_Control, 0, "ended"));
    }
    m_HasWindow = false;
    const int polls = CountSleeps(100);
    EXPECT_FALSE(StartProgress(&m_Control));
    EXPECT_LE(CountSleeps(100), polls + 1);
    EndProgress(&m_Control);
}

}  // namespace
}  // namespace zel
