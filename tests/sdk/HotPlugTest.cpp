// Hot-plug events and the application's callback.
#include "tests/sdk/SdkFixture.h"

#include <climits>
#include <functional>
#include <thread>
#include <vector>

namespace zel::test {
namespace {

class HotPlug : public SdkFixture {
  protected:
    // One camera, of the Camera Link library: the first one of the USB library has number 1.
    HotPlug() {
        EXPECT_EQ(1, zel_set_camera_connect_callback(&HotPlug::Callback, this));
        EXPECT_EQ(1, Search(1, 0, 0));
        m_Log.Clear();
    }
    void UsbEvent(int event_id, int cam_index, int context = 2) {
        m_Usb->callback.load()(event_id, cam_index, context);
    }

    // "EVENT INDEX name|serial|type", and what the application does inside its callback.
    std::vector<std::string> m_Calls;
    std::function<void()> m_Inside;

  private:
    static void ZEL_CALL Callback(int event_id, int camera_index, const char* name, const char* serial_number,
                                  const char* interface_type, void* context) {
        auto* self = static_cast<HotPlug*>(context);
        self->m_Calls.push_back(std::to_string(event_id) + " " + std::to_string(camera_index) + " " + name + "|" +
                                serial_number + "|" + interface_type);
        if (self->m_Inside) self->m_Inside();
    }
};

struct Event {
    const char* name;
    int event_id, cam_index, context;
    const char* call;  // of the application; "" for none
    int number = -1;   // of the camera object that is made
    const char* port = "USB 3.0";
    int failing_camera = -1;
};

class EventTest : public HotPlug, public testing::WithParamInterface<Event> {};

TEST_P(EventTest, ReachesTheTablesAndTheApplication) {
    const Event& event = GetParam();
    m_Usb->port_type = event.port;
    m_Usb->failing_camera = event.failing_camera;
    UsbEvent(event.event_id, event.cam_index, event.context);
    EXPECT_EQ(event.call, m_Calls.empty() ? "" : m_Calls.back());
    EXPECT_EQ(event.number > 0, m_Usb->transports);
    for (int number = 1; number < 8; ++number) {
        const bool is_this = number == event.number;
        EXPECT_EQ(is_this ? "zel_usb serial " + std::to_string(event.cam_index) : "", CameraText(number));
    }
    const bool failed = event.failing_camera >= 0 || event.context == 1;
    EXPECT_EQ(failed, m_Log.Count("***ERROR***: failed to create camera interface\n", 0));
}

// The eBUS library, context 1, is not recorded: its first camera would have number -1.
INSTANTIATE_TEST_SUITE_P(
    , EventTest,
    testing::Values(Event{"Connect", 1, 0, 2, "1 1 zel_usb name 0|zel_usb serial 0|USB 3.0", 1},
                    Event{"TheLastNumber", 1, 6, 2, "1 7 zel_usb name 6|zel_usb serial 6|USB 3.0", 7},
                    Event{"BehindTheLast", 1, 7, 2, "1 8 ||"}, Event{"BeforeTheFirst", 1, -2, 2, "1 -1 ||"},
                    Event{"FarBehind", 1, INT_MAX, 2, "1 -2147483648 ||"},
                    Event{"FarBefore", 1, INT_MIN, 2, "1 -2147483647 ||"}, Event{"Disconnect", 2, 0, 2, "2 1 ||"},
                    Event{"Unknown", 77, 0, 2, "77 1 ||"}, Event{"NoContext", 1, 0, -1, ""},
                    Event{"ContextBehindTheLast", 1, 0, 3, ""}, Event{"ContextFarBefore", 1, 0, INT_MIN, ""},
                    Event{"ReleasedLibrary", 1, 1, 1,
                          "1 0 edt_camera_link name 0|edt_camera_link serial 0|edt_camera_link USB type 0"},
                    Event{"SlowPort", 1, 0, 2, "1 1 zel_usb name 0|zel_usb serial 0|a USB 2.0 hub", -1,
                          "a USB 2.0 hub"},
                    Event{"FailedTransport", 1, 0, 2, "1 1 zel_usb name 0|zel_usb serial 0|USB 3.0", -1, "USB 3.0", 0}),
    [](const auto& event) { return event.param.name; });

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

// A camera that is plugged in a second time. Closing destroys each object and each transport once, says the fixture.
struct Replug {
    const char* name;
    bool handed_out, in_use, new_transport;
    bool new_object;
    int objects;
};

class ReplugTest : public HotPlug, public testing::WithParamInterface<Replug> {};

TEST_P(ReplugTest, LeavesOneObjectPerTransport) {
    const Replug& replug = GetParam();
    m_Usb->fresh_transports = replug.new_transport;
    UsbEvent(1, 0);
    ZelCamera* const first = replug.handed_out ? m_Sdk->GetCamera(1) : nullptr;
    if (first) static_cast<FakeCamera*>(first)->m_InUse = replug.in_use;
    UsbEvent(1, 0);
    UsbEvent(2, 0);
    ZelCamera* const second = m_Sdk->GetCamera(1);
    EXPECT_EQ(replug.new_object, first != second);
    EXPECT_EQ(replug.objects, FakeCamera::s_Alive);
    if (replug.new_transport) return;
    EXPECT_EQ(1, m_Usb->transports);
    ASSERT_EQ(2, Search(1, 0, 1));
    EXPECT_EQ(second, m_Sdk->GetCamera(1)) << "the object that the transport talks to";
}

// The objects are these and that of the other camera.
INSTANTIATE_TEST_SUITE_P(, ReplugTest,
                         testing::Values(Replug{"Unseen", false, false, false, true, 2},
                                         Replug{"HandedOut", true, false, false, true, 3},
                                         Replug{"InUse", true, true, false, false, 2},
                                         Replug{"NewTransport", true, false, true, true, 3}),
                         [](const auto& replug) { return replug.param.name; });

TEST_F(HotPlug, TheCallbackCanBeSwitchedOffAndIsLostWithClose) {
    EXPECT_EQ(1, zel_set_camera_connect_callback(nullptr, nullptr));
    UsbEvent(2, 0);
    EXPECT_EQ(1, zel_set_camera_connect_callback([](auto...) { ADD_FAILURE() << "of an earlier session"; }, nullptr));
    const ConnectionEventCallback late = m_Usb->callback;
    m_Sdk->Close();
    late(1, 0, 2);
    EXPECT_EQ(0, FakeCamera::s_Alive);
    m_Sdk->Open();
    late(2, 0, 2);
    EXPECT_TRUE(m_Calls.empty());
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
    EXPECT_EQ(0, FakeCamera::s_Alive);
    EXPECT_TRUE(m_Calls.empty());
}

TEST_F(HotPlug, TheApplicationMaySearchInsideItsCallback) {
    int found = -1;
    m_Inside = [&] { found = m_Sdk->GetNumberOfCameras(); };
    m_Usb->num_cameras = 1;
    UsbEvent(1, 0);
    EXPECT_EQ(2, found);
    EXPECT_EQ("zel_usb serial 0", CameraText(1)) << "the object that the event made";
    // A library without a camera is not shut down from inside its own event; the next search does it.
    m_Edt->num_cameras = 0;
    m_Edt->callback.load()(2, 0, 0);
    EXPECT_EQ(1, found);
    EXPECT_EQ(0, m_Edt->unloads);
    m_Edt->unload_reports = true;
    m_Inside = [] { ADD_FAILURE() << "an event of a library that is being shut down"; };
    EXPECT_EQ(1, m_Sdk->GetNumberOfCameras());
    EXPECT_EQ(1, m_Edt->unloads);
}

TEST_F(HotPlug, EventsDuringSearchesLoseNothing) {
    m_Usb->fresh_transports = true;
    zel_set_camera_connect_callback(nullptr, nullptr);
    std::thread plugging([this] {
        for (int i = 0; i < 400; ++i) UsbEvent(1 + i % 2, i % 3);
    });
    for (int i = 0; i < 100; ++i) EXPECT_EQ(3, Search(1, 0, 2));
    plugging.join();
    EXPECT_EQ(Transports(), FakeCamera::s_Alive);
}

}  // namespace
}  // namespace zel::test
