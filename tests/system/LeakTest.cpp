// Many times over: starts and stops, and loads of libraries, more often than a Windows process has thread-local slots
// to lose. The SDK is linked in, so that its clock can be replaced (the waits of a start would take two minutes
// otherwise), and so that the library can go.
#include "tests/support/FakeClock.h"
#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

class LeakTest : public SystemTest {};

TEST_F(LeakTest, AThousandStartsAndStopsLeakNothing) {
    FakeClock clock;
    ZelCamera* camera = Opened(kMono);
    const auto cycle = [&](int times) {
        for (int i = 0; i < times; ++i) {
            ASSERT_TRUE(camera->Start() && camera->Stop());
            camera->FreeAllPendingImages();
        }
    };
    cycle(20);
    const int handles = platform::OpenHandles();
    ASSERT_GT(handles, 0) << "the system does not tell";
    const int threads = platform::RunningThreads();
    cycle(1000);
    // The system may still list the last threads that have ended; what each start kept would be a thousand.
    EXPECT_LE(platform::OpenHandles(), handles + 20);
    EXPECT_LE(platform::RunningThreads(), threads + 5);
    const int before = m_Frames.calls;
    ASSERT_TRUE(camera->Start());
    EXPECT_TRUE(m_Frames.WaitFor(before + 8)) << "all eight records are still there";
}

// By opening and closing the SDK every plug-in and the logging library as well.
TEST(ReloadTest, TheSdkMayBeOpenedAndClosedAsOftenAsWanted) {
    UseFastCameras();
    for (int i = 0; i < 1200; ++i) {
        ZelSDK* sdk = zel_create_sdk();
        ASSERT_TRUE(sdk && sdk->Open());
        ASSERT_EQ(sdk->GetNumberOfCameras(), 4) << i;
        zel_destroy_sdk(sdk);
    }
}

// The camera goes while it is opened, and its library's thread has just told so when the SDK is done with the library.
TEST(ReloadTest, AThreadOfALibraryMayEndAfterTheSdk) {
    UseFastCameras();
    platform::SetEnvironment("ZEL_SIM_FAULTS", "fault 300101 unplug-connect");
    for (int i = 0; i < 200; ++i) {
        ZelSDK* sdk = zel_create_sdk();
        ASSERT_TRUE(sdk && sdk->Open());
        // The camera may still be gone from the time before.
        const bool there = sdk->GetNumberOfCameras() == 4;
        EXPECT_NE(sdk->GetCamera(0)->Open(), there);
        zel_destroy_sdk(sdk);
    }
    platform::SetEnvironment("ZEL_SIM_FAULTS", "");
}

TEST(ReloadTest, TheLibraryMayBeLoadedAndUnloadedAsOftenAsWanted) {
    for (int i = 0; i < 2000; ++i) {
        const platform::LibraryHandle library = platform::LoadSharedLibrary("zel_sdk.dll");
        ASSERT_NE(platform::FindExport(library, "zel_create_sdk"), nullptr) << i;
        platform::UnloadSharedLibrary(library);
    }
}

}  // namespace
}  // namespace zel::test
