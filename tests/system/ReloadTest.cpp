// Loading and unloading libraries more often than a Windows process has thread-local slots to lose: the SDK's own, and
// by opening and closing the SDK every plug-in and the logging library. The program has the SDK linked in, so that the
// library can go.
#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

TEST(ReloadTest, TheSdkMayBeOpenedAndClosedAsOftenAsWanted) {
    for (int i = 0; i < 1200; ++i) {
        ZelSDK* sdk = zel_create_sdk();
        ASSERT_TRUE(sdk && sdk->Open());
        ASSERT_EQ(sdk->GetNumberOfCameras(), 4) << i;
        zel_destroy_sdk(sdk);
    }
}

TEST(ReloadTest, TheLibraryMayBeLoadedAndUnloadedAsOftenAsWanted) {
    for (int i = 0; i < 2000; ++i) {
        const platform::LibraryHandle library = platform::LoadSharedLibrary("zel_sdk.dll");
        ASSERT_NE(library, nullptr) << i;
        EXPECT_NE(platform::FindExport(library, "zel_create_sdk"), nullptr);
        platform::UnloadSharedLibrary(library);
    }
}

}  // namespace
}  // namespace zel::test
