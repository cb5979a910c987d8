// The SDK object, the entry points, and the lock of the manager behind them.
#include "tests/sdk/SdkFixture.h"

#include <chrono>
#include <thread>

#include "include/ZelUtil.h"

const char* BuildVersion();

namespace zel::test {
namespace {

void ZEL_CALL Ignore(int, int, const char*, const char*, const char*, void*) {}

TEST(SdkObject, ThereIsOneAndAnyHolderDestroysIt) {
    RecordedLog log;
    ZelSDK* sdk = zel_create_sdk();
    EXPECT_STREQ("zel_sdk.dll version 0.000003", BuildVersion());
    EXPECT_EQ(sdk, zel_create_sdk());
    EXPECT_EQ(1, log.LiveLogs());
    zel_destroy_sdk(sdk);
    EXPECT_EQ(0, log.LiveLogs());
    EXPECT_THAT(log.Messages("ZEL_SDK"), testing::ElementsAre("Creating Kestrane SDK", "Creating Kestrane SDK",
                                                              "Destroying Kestrane SDK", "Calling ZelSDKImpl::Close"));
    // On purpose: destroying nothing ends the log alone.
    sdk = zel_create_sdk();
    zel_destroy_sdk(nullptr);
    EXPECT_EQ(0, log.LiveLogs());
    EXPECT_EQ(sdk, zel_create_sdk());
    zel_destroy_sdk(sdk);
}

TEST(SdkObject, FindsNothingWhileItIsNotOpen) {
    RecordedLog log;
    ZelSDK* sdk = zel_create_sdk();
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(0, sdk->GetNumberOfCameras());
        EXPECT_FALSE(sdk->GetCamera(0) || sdk->GetCameraInterfaceTypeStr(0) || sdk->GetCameraAddressStr(0, 0) ||
                     sdk->GetCameraName(0) || sdk->GetCameraSerialNumStr(0));
        EXPECT_EQ(0, zel_set_camera_connect_callback(&Ignore, nullptr));
        EXPECT_TRUE(sdk->Close() && sdk->Open() && sdk->Open());
        EXPECT_EQ(1, zel_set_camera_connect_callback(&Ignore, nullptr));
        EXPECT_TRUE(sdk->Close());
    }
    EXPECT_NE(nullptr, sdk->GetUtil());
    EXPECT_EQ(ZelSDK().GetUtil(), sdk->GetUtil());
    EXPECT_FALSE(sdk->Reserved1(1, 2) || sdk->Reserved2() || sdk->Reserved3());
    EXPECT_TRUE(sdk->Reserved4() && sdk->Reserved5(1, 2, 3));
    // One manager each time.
    EXPECT_EQ(3, log.Count("Enter", 2));
    EXPECT_EQ(3, log.Count("Exit", 2));
    zel_destroy_sdk(sdk);
}

class ManagerLock : public SdkFixture {};

TEST_F(ManagerLock, OnPurposeAFailureLastsUntilTheSdkIsReopened) {
    m_Usb->num_cameras = 1;
    m_Usb->block = true;
    int blocked_found = -1;
    std::thread blocked([&] { blocked_found = m_Sdk->GetNumberOfCameras(); });
    while (!m_Usb->blocked) std::this_thread::yield();

    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(0, m_Sdk->GetNumberOfCameras());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4900));
    EXPECT_EQ(1, m_Log.Count("***ERROR***: Lock() failed", 0));

    // The holder finishes and its release succeeds, which mends nothing. What it found can still be asked for.
    m_Usb->block = false;
    blocked.join();
    EXPECT_EQ(1, blocked_found);
    EXPECT_EQ(0, m_Sdk->GetNumberOfCameras());
    EXPECT_STREQ("zel_usb name 0", m_Sdk->GetCameraName(0));
    EXPECT_TRUE(m_Sdk->Close() && m_Sdk->Open());
    EXPECT_EQ(1, m_Sdk->GetNumberOfCameras());
}

}  // namespace
}  // namespace zel::test
