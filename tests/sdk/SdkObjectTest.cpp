// The SDK object and the entry points.
#include "tests/sdk/SdkFixture.h"

#include "include/ZelUtil.h"

const char* BuildVersion();

namespace zel::test {
namespace {

using testing::ElementsAre;

void ZEL_CALL Ignore(int, int, const char*, const char*, const char*, void*) {}

TEST(SdkObject, ThereIsOneAndAnyHolderDestroysIt) {
    RecordedLog log;
    ZelSDK* sdk = zel_create_sdk();
    ASSERT_NE(nullptr, sdk);
    EXPECT_EQ(sdk, zel_create_sdk());
    EXPECT_EQ(1, log.LiveLogs());
    zel_destroy_sdk(sdk);
    EXPECT_EQ(0, log.LiveLogs());
    EXPECT_THAT(log.Messages("ZEL_SDK"), ElementsAre("Creating Kestrane SDK", "Creating Kestrane SDK",
                                                     "Destroying Kestrane SDK", "Calling ZelSDKImpl::Close"));
}

TEST(SdkObject, DestroyingNothingKeepsTheObject) {
    RecordedLog log;
    ZelSDK* sdk = zel_create_sdk();
    zel_destroy_sdk(nullptr);
    EXPECT_EQ(0, log.LiveLogs());
    EXPECT_EQ(sdk, zel_create_sdk());
    zel_destroy_sdk(sdk);
}

TEST(SdkObject, AnswersNothingWhileItIsNotOpen) {
    ZelSDK* sdk = zel_create_sdk();
    EXPECT_EQ(0, sdk->GetNumberOfCameras());
    EXPECT_EQ(nullptr, sdk->GetCamera(0));
    EXPECT_EQ(nullptr, sdk->GetCameraInterfaceTypeStr(0));
    EXPECT_EQ(nullptr, sdk->GetCameraAddressStr(0, 0));
    EXPECT_EQ(nullptr, sdk->GetCameraName(0));
    EXPECT_EQ(nullptr, sdk->GetCameraSerialNumStr(0));
    EXPECT_EQ(0, zel_set_camera_connect_callback(&Ignore, nullptr));
    EXPECT_TRUE(sdk->Close());
    zel_destroy_sdk(sdk);
}

TEST(SdkObject, OpensAndClosesAnyNumberOfTimes) {
    RecordedLog log;
    ZelSDK* sdk = zel_create_sdk();
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(sdk->Open());
        EXPECT_TRUE(sdk->Open());
        EXPECT_EQ(1, zel_set_camera_connect_callback(&Ignore, nullptr));
        EXPECT_TRUE(sdk->Close());
        EXPECT_EQ(0, zel_set_camera_connect_callback(&Ignore, nullptr));
    }
    // One manager each time.
    EXPECT_EQ(3, log.Count("Enter", 2));
    EXPECT_EQ(3, log.Count("Exit", 2));
    zel_destroy_sdk(sdk);
}

TEST(SdkObject, BuildVersionIsFixed) {
    EXPECT_STREQ("zel_sdk.dll version 0.000003", BuildVersion());
    ZelSDK* sdk = zel_create_sdk();
    sdk->Open();
    EXPECT_STREQ("zel_sdk.dll version 0.000003", BuildVersion());
    zel_destroy_sdk(sdk);
}

TEST(SdkObject, UtilityAndReservedOperationsNeedNoOpen) {
    ZelSDK* sdk = zel_create_sdk();
    EXPECT_NE(nullptr, sdk->GetUtil());
    EXPECT_EQ(ZelSDK().GetUtil(), sdk->GetUtil());
    EXPECT_TRUE(sdk->Reserved1(1, 2) == 0 && sdk->Reserved2() == 0 && sdk->Reserved3() == 0);
    EXPECT_TRUE(sdk->Reserved4() && sdk->Reserved5(1, 2, 3));
    zel_destroy_sdk(sdk);
}

}  // namespace
}  // namespace zel::test
