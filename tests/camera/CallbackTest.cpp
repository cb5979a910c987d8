// Events of the transport and the callbacks they become.
#include <functional>

#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;

struct Heard {
    std::vector<std::string> lines;
    std::function<void()> in_control;
    void Add(const std::string& what, std::initializer_list<int> numbers) {
        lines.push_back(what);
        for (const int number : numbers) lines.back() += " " + std::to_string(number);
    }
    static void ZEL_CALL Control(int code, void* context) {
        auto* self = static_cast<Heard*>(context);
        self->Add("control", {code});
        if (self->in_control) self->in_control();
    }
    static void ZEL_CALL ControlEx(int code, const ZelCameraControlRecord* record, void* context) {
        const int* values = record->values;
        static_cast<Heard*>(context)->Add("extended", {code, record->value, values[0], values[5], values[7]});
    }
    static void ZEL_CALL Notification(int kind, void* context) {
        static_cast<Heard*>(context)->Add("notification", {kind});
    }
};

struct CallbackTest : CameraTest {
    Heard m_First, m_Second;
};

TEST_F(CallbackTest, EachEventReachesItsCallback) {
    const std::pair<unsigned, std::vector<std::string>> events[] = {
        {5, {"control 5"}}, {6, {"notification 0"}}, {7, {"notification 1"}},
        {8, {"control 6"}}, {9, {"control 7"}},      {10, {}},
        {11, {}},           {0xFFFFFFFFu, {}}};
    for (const bool heard : {true, false}) {
        m_Camera->SetCameraControlCallback(heard ? Heard::Control : nullptr, &m_First);
        m_Camera->SetImageNotificationCallback(heard ? Heard::Notification : nullptr, &m_First);
        for (const auto& [id, lines] : events) {
            m_First.lines.clear();
            EXPECT_TRUE(m_Transport.EmitEvent(id));
            EXPECT_EQ(m_First.lines, heard ? lines : std::vector<std::string>()) << id;
        }
    }
    m_Camera->EventCallback(nullptr);
    zel_event_handler(nullptr, m_Camera.get());
    const ZelCameraEvent event{};
    zel_event_handler(&event, nullptr);
}

// What the first callback of an event does holds for the second one.
TEST_F(CallbackTest, TheControlCallbackComesBeforeTheExtendedOne) {
    const std::function<void()> ends[] = {
        [this] { m_Camera->SetCameraControlCallbackEx(nullptr, &m_First); },
        [this] { m_Camera->Stop(); },
        [this] { m_Camera->Close(); },
        [this] { m_Camera->SetCameraControlCallback(Heard::Control, &m_Second); },
    };
    for (const auto& end : ends) {
        ASSERT_TRUE(m_Camera->Open());
        ASSERT_EQ(m_Camera->StartCommon(), 0);
        m_First = {{}, end};
        m_Camera->SetCameraControlCallback(Heard::Control, &m_First);
        m_Camera->SetCameraControlCallbackEx(Heard::ControlEx, &m_First);
        m_Transport.EmitEvent(3);
        EXPECT_THAT(m_First.lines, ElementsAre("control 3")) << &end - ends;
    }
    // Both have the context that was set last.
    const ZelCameraEvent event{3, -70000, {1, 0, 0, 0, 0, -32768, 0, 8}};
    m_Camera->EventCallback(&event);
    EXPECT_THAT(m_Second.lines, ElementsAre("extended 3 0 0 0 0", "control 3", "extended 3 -70000 1 -32768 8"));
}

}  // namespace
}  // namespace zel::test
