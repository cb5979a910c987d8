// Hot-plug events and the application's callback.
#include "tests/sdk/SdkFixture.h"

#include <climits>
#include <functional>
#include <thread>

namespace zel::test {
namespace {

struct HotPlug : SdkFixture {
    HotPlug() { Restart(); }
    // One camera, of the Camera Link library: the first one of the USB library has number 1.
    void Restart() {
        EXPECT_TRUE(m_Sdk->Close() && m_Sdk->Open());
        const auto note = [](int event_id, int camera_index, const char* name, const char* serial, const char* type,
                             void* context) {
            auto& self = *static_cast<HotPlug*>(context);
            self.m_Calls +=
                std::to_string(event_id) + " " + std::to_string(camera_index) + " " + name + "|" + serial + "|" + type;
            if (self.m_Inside) self.m_Inside();
        };
        EXPECT_EQ(1, zel_set_camera_connect_callback(note, this));
        EXPECT_EQ(1, Search(1, 0, 0));
        m_Calls.clear();
        m_Log.Clear();
    }
    void UsbEvent(int event_id, int cam_index, int context = 2) {
        m_Usb->callback.load()(event_id, cam_index, context);
    }

    // "EVENT INDEX name|serial|type" of each call, and what the application does inside its callback.
    std::string m_Calls;
    std::function<void()> m_Inside;
};

TEST_F(HotPlug, EventsReachTheTablesAndTheApplication) {
    const struct {
        int event_id, cam_index, context;
        std::string call;  // of the application; "" for none
        int number = -1;   // of the camera object that is made
        const char* port = "USB 3.0";
        int failing_camera = -1;
    } events[] = {
        {1, 0, 2, "1 1 zel_usb name 0|zel_usb serial 0|USB 3.0", 1},
        {1, 6, 2, "1 7 zel_usb name 6|zel_usb serial 6|USB 3.0", 7},
        {1, 7, 2, "1 8 ||"},
        {1, -2, 2, "1 -1 ||"},
        {1, INT_MAX, 2, "1 -2147483648 ||"},
        {2, 0, 2, "2 1 ||"},
        {77, 0, 2, "77 1 ||"},
        {1, 0, -1, ""},
        {1, 0, 3, ""},
        {1, 0, INT_MIN, ""},
        // The eBUS library is not recorded: its first camera would have number -1.
        {1, 1, 1, "1 0 edt_camera_link name 0|edt_camera_link serial 0|edt_camera_link USB type 0"},
        {1, 0, 2, "1 1 zel_usb name 0|zel_usb serial 0|a USB 2.0 hub", -1, "a USB 2.0 hub"},
        {1, 0, 2, "1 1 zel_usb name 0|zel_usb serial 0|USB 3.0", -1, "USB 3.0", 0},
    };
    for (const auto& event : events) {
        SCOPED_TRACE(&event - events);
        Restart();
        m_Usb->port_type = event.port;
        m_Usb->failing_camera = event.failing_camera;
        UsbEvent(event.event_id, event.cam_index, event.context);
        EXPECT_EQ(event.call, m_Calls);
        EXPECT_EQ(event.number > 0, m_Usb->transports);
        for (int number = 1; number < 8; ++number) {
            const bool is_this = number == event.number;
            EXPECT_EQ(is_this ? "zel_usb serial " + std::to_string(event.cam_index) : "", CameraText(number));
        }
        const bool failed = event.failing_camera >= 0 || event.context == 1;
        EXPECT_EQ(failed, m_Log.Count("***ERROR***: failed to create camera interface\n", 0));
    }
}

TEST_F(HotPlug, OnPurposeTheTransportGetsTheNameSlotAtTheCount) {
    UsbEvent(1, 0);
    EXPECT_STREQ("zel_usb name 0", m_Usb->last_name);  // number 1 is the slot at the count of 1
    UsbEvent(1, 3);
    EXPECT_STREQ("zel_usb name 0", m_Usb->last_name);
    // With eight cameras the slot at the count is a ninth one, which is empty.
    ASSERT_EQ(8, Search(1, 0, 7));
    m_Usb->overwrite_name = true;
    UsbEvent(1, 0);
    EXPECT_STREQ("", m_Usb->last_name);
    EXPECT_STREQ("zel_usb name 6", m_Sdk->GetCameraName(7));
}

// Closing destroys each object and each transport once, says the fixture.
TEST_F(HotPlug, ASecondTimeLeavesOneObjectPerTransport) {
    UsbEvent(1, 0);
    UsbEvent(1, 0);
    EXPECT_EQ(2, FakeCamera::s_Alive) << "this and the other camera's; nobody has seen the first";
    const ZelCamera* const seen = m_Sdk->GetCamera(1);
    UsbEvent(1, 0);
    auto* const used = static_cast<FakeCamera*>(m_Sdk->GetCamera(1));
    EXPECT_NE(seen, used);
    EXPECT_EQ(3, FakeCamera::s_Alive);
    used->m_InUse = true;
    UsbEvent(1, 0);
    UsbEvent(2, 0);
    EXPECT_EQ(used, m_Sdk->GetCamera(1));
    EXPECT_EQ(1, m_Usb->transports);
    ASSERT_EQ(2, Search(1, 0, 1));
    EXPECT_EQ(used, m_Sdk->GetCamera(1)) << "the object that the transport talks to";
    m_Usb->fresh_transports = true;
    UsbEvent(1, 0);
    EXPECT_NE(used, m_Sdk->GetCamera(1));
    EXPECT_EQ(4, FakeCamera::s_Alive);
}

TEST_F(HotPlug, CloseWaitsForAnEventUnderWay) {
    // The transport of the event is that of a camera which the close is about to destroy.
    ASSERT_EQ(2, Search(1, 0, 1));
    m_Usb->block = true;
    std::thread plugging([this] { UsbEvent(1, 0); });
    while (!m_Usb->blocked) std::this_thread::yield();
    std::thread closing([this] { m_Sdk->Close(); });
    while (m_Sdk->GetCamera(0)) std::this_thread::yield();  // nobody is let in any more
    EXPECT_EQ(2, Transports());
    m_Usb->block = false;
    plugging.join();
    closing.join();
    EXPECT_EQ("", m_Calls);
}

// A library without a camera is not shut down from inside its own event; the next search does it.
TEST_F(HotPlug, TheApplicationMaySearchInsideItsCallback) {
    m_Inside = [&] { EXPECT_EQ(0, m_Sdk->GetNumberOfCameras()); };
    m_Edt->num_cameras = 0;
    m_Edt->callback.load()(2, 0, 0);
    EXPECT_NE("", m_Calls);
    EXPECT_EQ(0, m_Edt->unloads);
    m_Edt->unload_reports = true;
    m_Inside = [] { ADD_FAILURE() << "an event of a library that is being shut down"; };
    EXPECT_EQ(0, m_Sdk->GetNumberOfCameras());
    EXPECT_EQ(1, m_Edt->unloads);
}

}  // namespace
}  // namespace zel::test
