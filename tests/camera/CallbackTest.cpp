// Events of the transport and the callbacks they become.
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

struct Heard {
    std::vector<std::string> lines;
    static std::string Where(void* context) { return static_cast<Heard*>(context)->m_Name; }
    static void ZEL_CALL Control(int code, void* context) {
        static_cast<Heard*>(context)->lines.push_back("control " + std::to_string(code));
    }
    static void ZEL_CALL ControlEx(int code, const ZelCameraControlRecord* record, void* context) {
        std::string line = "extended " + std::to_string(code) + " " + std::to_string(record->value);
        for (int value : record->values) line += " " + std::to_string(value);
        static_cast<Heard*>(context)->lines.push_back(line);
    }
    static void ZEL_CALL Notification(int kind, void* context) {
        static_cast<Heard*>(context)->lines.push_back("notification " + std::to_string(kind));
    }
    std::string m_Name;
};

class CallbackTest : public CameraTest {
  protected:
    Heard m_First, m_Second;
};

TEST_F(CallbackTest, EachEventReachesItsCallback) {
    m_Camera->SetCameraControlCallback(Heard::Control, &m_First);
    m_Camera->SetImageNotificationCallback(Heard::Notification, &m_First);
    const unsigned before = ZelCameraControl::NotificationCount();
    const std::pair<unsigned, std::vector<std::string>> events[] = {{0, {"control 0"}},
                                                                    {5, {"control 5"}},
                                                                    {6, {"notification 0"}},
                                                                    {7, {"notification 1"}},
                                                                    {8, {"control 6"}},
                                                                    {9, {"control 7"}},
                                                                    {10, {}},
                                                                    {11, {}},
                                                                    {0xFFFFFFFFu, {}}};
    for (const auto& [id, heard] : events) {
        m_First.lines.clear();
        EXPECT_TRUE(m_Transport.EmitEvent(id));
        EXPECT_EQ(m_First.lines, heard) << id;
    }
    EXPECT_EQ(ZelCameraControl::NotificationCount(), before + 1);
}

TEST_F(CallbackTest, TheExtendedCallbackGetsNineWidenedValues) {
    m_Camera->SetCameraControlCallback(Heard::Control, &m_First);
    m_Camera->SetCameraControlCallbackEx(Heard::ControlEx, &m_First);
    const ZelCameraEvent event{3, -70000, {1, -2, 3, -4, 32767, -32768, 0, 8}};
    m_Camera->EventCallback(&event);
    EXPECT_THAT(m_First.lines, testing::ElementsAre("control 3", "extended 3 -70000 1 -2 3 -4 32767 -32768 0 8"));
}

TEST_F(CallbackTest, BothControlCallbacksShareTheContextSetLast) {
    m_Camera->SetCameraControlCallback(Heard::Control, &m_First);
    m_Camera->SetCameraControlCallbackEx(Heard::ControlEx, &m_Second);
    m_Transport.EmitEvent(1);
    EXPECT_TRUE(m_First.lines.empty());
    EXPECT_EQ(m_Second.lines.size(), 2u);
}

TEST_F(CallbackTest, SettersRegisterWithTheTransport) {
    m_Transport.ForgetCalls();
    EXPECT_TRUE(m_Camera->SetCameraControlCallback(Heard::Control, nullptr));
    EXPECT_THAT(m_Transport.Calls(), testing::ElementsAre("SetEventHandler", "EnableEvents 11"));
    m_Transport.m_Answers.enable_events = false;
    EXPECT_FALSE(m_Camera->SetCameraControlCallbackEx(Heard::ControlEx, nullptr));
    m_Transport.m_Answers.set_event_handler = false;
    m_Transport.ForgetCalls();
    EXPECT_FALSE(m_Camera->SetImageNotificationCallback(Heard::Notification, nullptr));
    EXPECT_THAT(m_Transport.Calls(), testing::ElementsAre("SetEventHandler"));
    m_Transport.m_Answers.set_image_handler = false;
    EXPECT_FALSE(m_Camera->SetImageCallback(nullptr, nullptr));
}

TEST_F(CallbackTest, EventsWithoutCallbacksAreHarmless) {
    m_Camera->EventCallback(nullptr);
    zel_event_handler(nullptr, m_Camera.get());
    for (unsigned id = 0; id < 12; ++id) {
        const ZelCameraEvent event{id, 0, {}};
        m_Camera->EventCallback(&event);
        zel_event_handler(&event, nullptr);
    }
    m_Camera->SetCameraControlCallback(Heard::Control, &m_First);
    m_Camera->SetCameraControlCallback(nullptr, &m_First);
    m_Transport.EmitEvent(8);
    EXPECT_TRUE(m_First.lines.empty());
}

// A callback may call the camera object: no lock is held while it runs.
TEST_F(CallbackTest, ACallbackMaySetAnotherCallbackAndStop) {
    struct Both {
        ZelCameraControl* camera;
        bool stopped = false;
    } both{m_Camera.get()};
    m_Camera->SetImageNotificationCallback(
        [](int, void* context) {
            auto* self = static_cast<Both*>(context);
            self->camera->SetImageNotificationCallback(nullptr, nullptr);
            self->stopped = self->camera->Stop();
        },
        &both);
    m_Transport.EmitEvent(CAMERA_EVENT_IMAGE_READY);
    EXPECT_TRUE(both.stopped);
}

}  // namespace
}  // namespace zel::test
