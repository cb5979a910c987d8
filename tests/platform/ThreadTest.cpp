#include "platform/Thread.h"

#include <gtest/gtest.h>

#include <atomic>

namespace zel::platform {
namespace {

struct Work {
    Thread* thread = nullptr;
    std::atomic<bool> go{true};
    std::atomic<int> runs{0};
    std::atomic<bool> was_current{false};

    static void Run(void* argument) {
        auto* work = static_cast<Work*>(argument);
        work->was_current = work->thread && work->thread->IsCurrent();
        while (!work->go) {
        }
        ++work->runs;
    }
};

TEST(Thread, RunsItsRoutineOncePerStart) {
    Thread thread;
    Work work;
    work.thread = &thread;
    EXPECT_FALSE(thread.Started());
    for (int i = 1; i <= 3; ++i) {
        ASSERT_TRUE(thread.Start(&Work::Run, &work));
        EXPECT_TRUE(thread.Started());
        EXPECT_FALSE(thread.IsCurrent());
        thread.Join();
        EXPECT_FALSE(thread.Started());
        EXPECT_EQ(i, work.runs);
        EXPECT_TRUE(work.was_current) << "a thread knows itself from its first moment";
    }
}

TEST(Thread, StartsOnlyOnceUntilItIsJoined) {
    Thread thread;
    Work work;
    work.go = false;
    ASSERT_TRUE(thread.Start(&Work::Run, &work));
    EXPECT_FALSE(thread.Start(&Work::Run, &work));
    work.go = true;
    thread.Join();
    EXPECT_EQ(1, work.runs);
    EXPECT_FALSE(thread.Start(nullptr, &work));
    EXPECT_FALSE(thread.Started());
    thread.Join();  // nothing to wait for
}

TEST(Thread, IsJoinedWhenItIsDestroyed) {
    Work work;
    {
        Thread thread;
        ASSERT_TRUE(thread.Start(&Work::Run, &work));
    }
    EXPECT_EQ(1, work.runs);
}

TEST(Thread, ThatEndedIsNotTakenForALaterOne) {
    Thread ended, other;
    Work first, second;
    ASSERT_TRUE(ended.Start(&Work::Run, &first));
    ended.Join();
    second.thread = &ended;  // asked on the other thread, which may have got the number of the one that ended
    ASSERT_TRUE(other.Start(&Work::Run, &second));
    other.Join();
    EXPECT_FALSE(second.was_current);
}

}  // namespace
}  // namespace zel::platform
