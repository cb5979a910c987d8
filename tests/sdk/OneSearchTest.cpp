// Loads of a library are counted by the system, and further searches add some that closing does not take back. This
// program therefore makes one search only.
#include "tests/sdk/SdkFixture.h"

namespace zel::test {
namespace {

TEST(ClosingAfterOneSearch, UnloadsTheLibrary) {
    ZelSDK* sdk = zel_create_sdk();
    ASSERT_TRUE(sdk->Open());
    {
        const PluginHold usb("zel_usb.dll");
        usb->mark = 42;
        usb->num_cameras = 1;
        EXPECT_EQ(1, sdk->GetNumberOfCameras());
    }
    EXPECT_TRUE(LoadedWithoutUs("zel_usb.dll"));
    zel_destroy_sdk(sdk);
    EXPECT_FALSE(LoadedWithoutUs("zel_usb.dll"));
}

}  // namespace
}  // namespace zel::test
