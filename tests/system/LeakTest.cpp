// Loads of libraries, many times over: more often than a Windows process has thread-local slots to lose. The SDK is
// linked in, so that the library can go.
#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

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
