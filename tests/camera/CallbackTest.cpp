// Events of the transport and the callbacks they become.
#include <functional>

#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

struct Heard {
    std::vector<std::string> lines;
    std::function<void()> in_control;
    static void ZEL_CALL Control(int code, void* context) {
        auto* self = static_cast<Heard*>(context);
        self->lines.push_back("control " + std::to_string(code));
        if (self->in_control) self->in_control();
    }
    static void ZEL_CALL ControlEx(int code, const ZelCameraControlRecord* record, void* context) {
        std::string line = "extended " + std::to_string(code) + " " + std::to_string(record->value);
        for (int value : record->values) line += " " + std::to_string(value);
        static_cast<Heard*>(context)->lines.push_back(line);
    }
    static void ZEL_CALL Notification(int kind, void* context) {
        static_cast<Heard*>(context)->lines.push_back("notification " + std::to_string(kind));
    }
};

class CallbackTest : public CameraTest {
  protected:
    Heard m_First, m_Second;
};

TEST_F(CallbackTest, EachEventReachesItsCallback) {
    m_Camera->SetCameraControlCallback(Heard::Control, &m_First);
    m_Camera->SetImageNotificationCallback(Heard::Notification, &m_First);
    const std::pair<unsigned, std::vector<std::string>> events[] = {
        {5, {"control 5"}}, {6, {"notification 0"}}, {7, {"notification 1"}},
        {8, {"control 6"}}, {9, {"control 7"}},      {10, {}},
        {11, {}},           {0xFFFFFFFFu, {}}};
    for (const auto& [id, heard] : events) {
        m_First.lines.clear();
        EXPECT_TRUE(m_Transport.EmitEvent(id));
        EXPECT_EQ(m_First.lines, heard) << id;
    }
}

TEST_F(CallbackTest, BothControlCallbacksShareTheContextSetLast) {
    m_Camera->SetCameraControlCallback(Heard::Control, &m_First);
    m_Camera->SetCameraControlCallbackEx(Heard::ControlEx, &m_Second);
    const ZelCameraEvent event{3, -70000, {1, -2, 3, -4, 32767, -32768, 0, 8}};
    m_Camera->EventCallback(&event);
    EXPECT_THAT(m_Second.lines, testing::ElementsAre("control 3", "extended 3 -70000 1 -2 3 -4 32767 -32768 0 8"));
    EXPECT_TRUE(m_First.lines.empty());
}

// What the first callback of an event does holds for the second one.
TEST_F(CallbackTest, TheControlCallbackComesBeforeTheExtendedOne) {
    const std::function<void()> ends[] = {
        [this] { m_Camera->SetCameraControlCallbackEx(nullptr, &m_First); },
        [this] { m_Camera->Stop(); },
        [this] { m_Camera->Close(); },
    };
    for (const auto& end : ends) {
        ASSERT_TRUE(m_Camera->Open());
        ASSERT_EQ(m_Camera->StartCommon(), 0);
        m_First = {{}, end};
        m_Camera->SetCameraControlCallback(Heard::Control, &m_First);
        m_Camera->SetCameraControlCallbackEx(Heard::ControlEx, &m_First);
        m_Transport.EmitEvent(3);
        EXPECT_THAT(m_First.lines, testing::ElementsAre("control 3")) << &end - ends;
    }
    m_Camera->SetCameraControlCallbackEx(Heard::ControlEx, &m_First);
    m_First.in_control = [this] { m_Camera->SetCameraControlCallback(Heard::Control, &m_Second); };
    m_Transport.EmitEvent(3);
    EXPECT_EQ(m_Second.lines.size(), 1u) << "the context set last";
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

}  // namespace
}  // namespace zel::test
