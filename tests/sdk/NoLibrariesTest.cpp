// No interface library beside the program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "include/ZelSDK.h"
#include "tests/support/RecordedLog.h"

namespace zel::test {
namespace {

TEST(NoLibraries, NoCameraAndOneErrorLineEach) {
    RecordedLog log;
    ZelSDK* sdk = zel_create_sdk();
    ASSERT_TRUE(sdk->Open());
    for (int round = 0; round < 2; ++round) {
        log.Clear();
        EXPECT_EQ(0, sdk->GetNumberOfCameras());
        EXPECT_THAT(log.Messages("", 0),
                    testing::ElementsAre("***ERROR***: zel_load_lib(edt_camera_link.dll) failed i:0",
                                         "***ERROR***: zel_load_lib(pleora_ebus.dll) failed i:1",
                                         "***ERROR***: zel_load_lib(zel_usb.dll) failed i:2"));
    }
    EXPECT_EQ(nullptr, sdk->GetCamera(0));
    zel_destroy_sdk(sdk);
}

TEST(NoLibraries, VersionIsOneLine) { EXPECT_STREQ("zel_sdk.dll         - 3.6.0.0.", get_version_str()); }

}  // namespace
}  // namespace zel::test
