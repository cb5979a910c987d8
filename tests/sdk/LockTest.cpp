// The manager's lock.
#include "tests/sdk/SdkFixture.h"

#include <chrono>
#include <thread>

namespace zel::test {
namespace {

class ManagerLock : public SdkFixture {};

TEST_F(ManagerLock, OnPurposeAFailureLastsUntilTheSdkIsReopened) {
    m_Usb->num_cameras = 1;
    m_Usb->block = true;
    int blocked_found = -1;
    std::thread blocked([&] { blocked_found = m_Sdk->GetNumberOfCameras(); });
    while (!m_Usb->blocked) std::this_thread::sleep_for(std::chrono::milliseconds(5));

    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(0, m_Sdk->GetNumberOfCameras());
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(4900));
    EXPECT_EQ(1, m_Log.Count("***ERROR***: Lock() failed", 0));

    // The holder finishes and its release succeeds, which mends nothing.
    m_Usb->block = false;
    blocked.join();
    EXPECT_EQ(1, blocked_found);
    EXPECT_EQ(0, m_Sdk->GetNumberOfCameras());
    EXPECT_EQ(2, m_Log.Count("***ERROR***: Lock() failed", 0));

    // What the holder found can still be asked for.
    EXPECT_STREQ("zel_usb name 0", m_Sdk->GetCameraName(0));

    m_Sdk->Close();
    m_Sdk->Open();
    EXPECT_EQ(1, m_Sdk->GetNumberOfCameras());
}

}  // namespace
}  // namespace zel::test
