// Hot-plug events and the application's callback.
#include "tests/sdk/SdkFixture.h"

#include <chrono>
#include <climits>
#include <functional>
#include <thread>
#include <vector>

namespace zel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// "EVENT INDEX name|serial|type", and what the application does inside its callback.
struct Application {
    std::vector<std::string> calls;
    std::function<void()> inside;

    static void ZEL_CALL Callback(int event_id, int camera_index, const char* name, const char* serial_number,
                                  const char* interface_type, void* context) {
        auto* self = static_cast<Application*>(context);
        self->calls.push_back(std::to_string(event_id) + " " + std::to_string(camera_index) + " " + name + "|" +
                              serial_number + "|" + interface_type);
        if (self->inside) self->inside();
    }
};

class HotPlug : public SdkFixture {
  protected:
    void SetUp() override {
        SdkFixture::SetUp();
        ASSERT_EQ(1, zel_set_camera_connect_callback(&Application::Callback, &m_Application));
        ASSERT_EQ(1, Search(1, 0, 0));
        FakeCamera::TakeJournal();
        m_Log.Clear();
    }

    // An event of the USB library, whose first camera has number 1.
    void UsbEvent(int event_id, int cam_index, int context = 2) {
        ASSERT_NE(nullptr, m_Usb->callback.load());
        m_Usb->callback.load()(event_id, cam_index, context);
    }

    Application m_Application;
};

TEST_F(HotPlug, ConnectMakesACameraObject) {
    UsbEvent(1, 0);
    EXPECT_THAT(m_Application.calls, ElementsAre("1 1 zel_usb name 0|zel_usb serial 0|USB 3.0"));
    EXPECT_THAT(FakeCamera::TakeJournal(), ElementsAre("create zel_usb serial 0"));
    EXPECT_EQ("zel_usb serial 0", CameraText(1));
    EXPECT_STREQ("zel_usb name 0", m_Sdk->GetCameraName(1));
    EXPECT_EQ(1, m_Log.Count("zel_usb.dll - get_camera_name(0) returned zel_usb name 0 ", 2));
    EXPECT_EQ(1, m_Log.Count("port_type_str:USB 3.0   copying into _zel_camera_interface_type_str[index:1]", 2));
    EXPECT_EQ(1, m_Log.Count("calling zel_usb.dll - create_camera_interface(cam_dll_index:0)\n", 2));
    EXPECT_EQ(1, m_Log.CountContaining("CALLING _zelCameraManager->m_CameraConnectCallback()"));
    EXPECT_EQ(1, m_Log.CountContaining("RETURNED from _zelCameraManager->m_CameraConnectCallback()"));
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

TEST_F(HotPlug, Usb2PortGetsNoCameraObject) {
    m_Usb->port_type = "port USB 2.0 hub";
    UsbEvent(1, 0);
    EXPECT_THAT(m_Application.calls, ElementsAre("1 1 zel_usb name 0|zel_usb serial 0|port USB 2.0 hub"));
    EXPECT_EQ(nullptr, m_Sdk->GetCamera(1));
    EXPECT_THAT(FakeCamera::TakeJournal(), IsEmpty());
    EXPECT_EQ(0, m_Usb->transports);
}

TEST_F(HotPlug, DisconnectAndUnknownEventsChangeNothing) {
    UsbEvent(1, 0);
    ZelCamera* const camera = m_Sdk->GetCamera(1);
    UsbEvent(2, 0);
    UsbEvent(77, 0);
    EXPECT_EQ(camera, m_Sdk->GetCamera(1));
    EXPECT_THAT(m_Application.calls, ElementsAre("1 1 zel_usb name 0|zel_usb serial 0|USB 3.0",
                                                 "2 1 zel_usb name 0|zel_usb serial 0|USB 3.0",
                                                 "77 1 zel_usb name 0|zel_usb serial 0|USB 3.0"));
}

TEST_F(HotPlug, AnIndexOutsideTheTablesIsReportedWithEmptyTexts) {
    for (int cam_index : {-2, 7, 1000, INT_MAX, INT_MIN}) UsbEvent(1, cam_index);
    EXPECT_THAT(m_Application.calls,
                ElementsAre("1 -1 ||", "1 8 ||", "1 1001 ||", "1 -2147483648 ||", "1 -2147483647 ||"));
    EXPECT_THAT(FakeCamera::TakeJournal(), IsEmpty());
    EXPECT_EQ(0, m_Usb->transports);
}

TEST_F(HotPlug, AnUnknownContextIsIgnored) {
    for (int context : {-1, -2, 3, INT_MAX, INT_MIN}) UsbEvent(1, 0, context);
    EXPECT_THAT(m_Application.calls, IsEmpty());
    EXPECT_EQ(1, m_Log.CountContaining("offset is -1 so we bail"));
    EXPECT_EQ(nullptr, m_Sdk->GetCamera(1));
}

TEST_F(HotPlug, AContextWhoseLibraryWasReleasedHasNoCamera) {
    // The eBUS library is not recorded: its first camera would have number -1.
    UsbEvent(1, 1, 1);
    EXPECT_EQ(nullptr, m_Sdk->GetCamera(0));
    EXPECT_THAT(m_Application.calls, ElementsAre("1 0 edt_camera_link name 0|edt_camera_link serial 0|"
                                                 "edt_camera_link USB type 0"));
    EXPECT_EQ(1, m_Log.Count("***ERROR***: failed to create camera interface\n", 0));
}

TEST_F(HotPlug, AFailedTransportLeavesAnEmptyPlace) {
    m_Usb->failing_camera = 0;
    UsbEvent(1, 0);
    EXPECT_EQ(nullptr, m_Sdk->GetCamera(1));
    EXPECT_EQ(1u, m_Application.calls.size());
    EXPECT_EQ(1, m_Log.Count("***ERROR***: failed to create camera interface\n", 0));
}

TEST_F(HotPlug, AReplacedObjectLivesUntilClose) {
    m_Usb->fresh_transports = true;
    UsbEvent(1, 0);
    ZelCamera* const first = m_Sdk->GetCamera(1);
    UsbEvent(1, 0);
    EXPECT_NE(first, m_Sdk->GetCamera(1));
    EXPECT_EQ(3, FakeCamera::Alive());
    FakeCamera::TakeJournal();
    m_Sdk->Close();
    EXPECT_THAT(FakeCamera::TakeJournal(),
                ElementsAre("close edt_camera_link name 0", "destroy edt_camera_link name 0", "close zel_usb serial 0",
                            "destroy zel_usb serial 0", "close zel_usb serial 0", "destroy zel_usb serial 0"));
    EXPECT_EQ(0, m_Usb->transports);
}

// A replug of a camera whose transport stays the same: what becomes of the object that it had, and who is closed and
// destroyed in the end.
struct Replug {
    const char* name;
    bool handed_out, in_use;
    bool new_object;
    std::vector<std::string> end;
};

class ReplugTest : public HotPlug, public testing::WithParamInterface<Replug> {};

TEST_P(ReplugTest, LeavesOneObjectPerTransport) {
    UsbEvent(1, 0);
    ZelCamera* const first = GetParam().handed_out ? m_Sdk->GetCamera(1) : nullptr;
    if (first) static_cast<FakeCamera*>(first)->m_InUse = GetParam().in_use;
    UsbEvent(1, 0);
    EXPECT_EQ(1, m_Usb->transports);
    ZelCamera* const second = m_Sdk->GetCamera(1);
    EXPECT_EQ(GetParam().new_object, first != second);
    // The search hands out the object that the transport talks to.
    ASSERT_EQ(2, Search(1, 0, 1));
    EXPECT_EQ(second, m_Sdk->GetCamera(1));
    FakeCamera::TakeJournal();
    m_Sdk->Close();
    std::vector<std::string> expected{"close edt_camera_link name 0", "destroy edt_camera_link name 0"};
    for (const std::string& what : GetParam().end) expected.push_back(what + " zel_usb serial 0");
    EXPECT_EQ(expected, FakeCamera::TakeJournal());
}

INSTANTIATE_TEST_SUITE_P(, ReplugTest,
                         testing::Values(Replug{"Unseen", false, false, true, {"close", "destroy"}},
                                         Replug{
                                             "HandedOut", true, false, true, {"close", "close", "destroy", "destroy"}},
                                         Replug{"InUse", true, true, false, {"close", "destroy"}}),
                         [](const auto& replug) { return replug.param.name; });

TEST_F(HotPlug, TheCallbackCanBeSwitchedOffAndIsLostWithClose) {
    EXPECT_EQ(1, zel_set_camera_connect_callback(nullptr, nullptr));
    UsbEvent(2, 0);
    EXPECT_EQ(1, zel_set_camera_connect_callback(&Application::Callback, &m_Application));
    ConnectionEventCallback late = m_Usb->callback;
    m_Sdk->Close();
    late(1, 0, 2);
    EXPECT_EQ(0, FakeCamera::Alive());
    m_Sdk->Open();
    late(2, 0, 2);
    EXPECT_THAT(m_Application.calls, IsEmpty());
}

TEST_F(HotPlug, CloseWaitsForAnEventUnderWay) {
    // The transport of the event is that of a camera which the close is about to destroy.
    ASSERT_EQ(2, Search(1, 0, 1));
    m_Usb->block = true;
    std::thread plugging([this] { UsbEvent(1, 0); });
    while (!m_Usb->blocked) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::thread closing([this] { m_Sdk->Close(); });
    while (m_Sdk->GetCamera(0)) std::this_thread::yield();  // nobody is let in any more
    EXPECT_EQ(2, m_Edt->transports + m_Usb->transports);
    m_Usb->blocked = m_Usb->block = false;
    plugging.join();
    closing.join();
    EXPECT_EQ(0, FakeCamera::Alive());
    EXPECT_THAT(m_Application.calls, IsEmpty());
}

TEST_F(HotPlug, TheApplicationMaySearchInsideItsCallback) {
    int found = -1;
    m_Application.inside = [&] { found = m_Sdk->GetNumberOfCameras(); };
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
    m_Application.inside = [] { ADD_FAILURE() << "an event of a library that is being shut down"; };
    EXPECT_EQ(1, m_Sdk->GetNumberOfCameras());
    EXPECT_EQ(1, m_Edt->unloads);
}

TEST_F(HotPlug, ClosingInsideTheCallbackIsFinishedWhenItHasReturned) {
    for (const bool destroy : {false, true}) {
        m_Application.inside = [&] {
            destroy ? zel_destroy_sdk(m_Sdk) : static_cast<void>(m_Sdk->Close());
            EXPECT_EQ(2, m_Edt->transports + m_Usb->transports);
            m_Sdk = zel_create_sdk();
            EXPECT_EQ(0, m_Sdk->GetNumberOfCameras());
            EXPECT_FALSE(m_Sdk->Open());
        };
        UsbEvent(1, 0);
        ASSERT_TRUE(m_Sdk->Open());  // waits for the end of the close
        EXPECT_EQ(0, m_Edt->transports + m_Usb->transports);
        EXPECT_EQ(0, FakeCamera::Alive());
        m_Application.inside = nullptr;
        ASSERT_EQ(1, zel_set_camera_connect_callback(&Application::Callback, &m_Application));
        ASSERT_EQ(1, Search(1, 0, 0));
    }
}

TEST_F(HotPlug, EventsDuringSearchesLoseNothing) {
    m_Usb->fresh_transports = true;
    zel_set_camera_connect_callback(nullptr, nullptr);
    std::thread plugging([this] {
        for (int i = 0; i < 200; ++i) {
            UsbEvent(1, i % 3);
            UsbEvent(2, i % 3);
        }
    });
    for (int i = 0; i < 100; ++i) EXPECT_EQ(3, Search(1, 0, 2));
    plugging.join();
    EXPECT_EQ(m_Edt->transports + m_Usb->transports, FakeCamera::Alive());
}

}  // namespace
}  // namespace zel::test
