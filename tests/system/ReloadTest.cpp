// Opening and closing the SDK, which loads and unloads every plug-in and the logging library, more often than a Windows
// process has thread-local slots to lose.
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

}  // namespace
}  // namespace zel::test
