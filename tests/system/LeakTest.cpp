// Start and stop many times over. The library is linked in, so that its clock can be replaced: the waits of a start
// would take two minutes otherwise.
#include "tests/support/FakeClock.h"
#include "tests/support/Process.h"
#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

class LeakTest : public SystemTest {};

TEST_F(LeakTest, AThousandStartsAndStopsLeakNothing) {
    FakeClock clock;
    ZelCamera* camera = Opened(kMono);
    const auto cycle = [&] {
        ASSERT_TRUE(camera->Start());
        ASSERT_TRUE(camera->Stop());
        camera->FreeAllPendingImages();
    };
    for (int i = 0; i < 20; ++i) cycle();
    const int handles = platform::OpenHandles();
    ASSERT_GT(handles, 0) << "the system does not tell";
    const int threads = platform::RunningThreads();
    for (int i = 0; i < 1000; ++i) cycle();
    // The system may still list the last threads that have ended; what each start kept would be a thousand.
    EXPECT_LE(platform::OpenHandles(), handles + 20);
    EXPECT_LE(platform::RunningThreads(), threads + 5);
    camera->SetImageNotificationCallback(Count, &m_Frames);
    ASSERT_TRUE(camera->Start());
    EXPECT_TRUE(m_Frames.WaitFor(8)) << "all eight records are still there";
}

}  // namespace
}  // namespace zel::test
