#include "tools/zelcam/camera/EventQueue.h"

#include <gtest/gtest.h>

#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "tests/tools/zelcam/commands/SimControl.h"
#include "tools/zelcam/camera/Session.h"

namespace zelcam {

class EventQueueTest : public testing::Test {
  protected:
    EventQueueTest() { UseFastCameras(); }

    // The next event; null when none comes.
    Json Next() {
        Json event;
        m_Queue.Next(event, std::chrono::seconds(60));
        return event;
    }

    EventQueue m_Queue;
};

TEST_F(EventQueueTest, HotPlugEventsNameTheCamera) {
    const Session session;
    ASSERT_EQ(zel_set_camera_connect_callback(&EventQueue::CameraConnected, &m_Queue), 1);
    for (const char* what : {"disconnect", "connect"}) {
        ASSERT_TRUE(SimCommand(std::string(what) == "connect" ? "plug 0" : "unplug 0"));
        const Json event = Next();
        ASSERT_TRUE(event.is_object()) << what;
        EXPECT_EQ(event["event"], what);
        EXPECT_EQ(event["camera"], 0);
        EXPECT_EQ(event["serial"], session.Cameras().front().serial);
    }
}

TEST_F(EventQueueTest, CameraEventsComeOnceWithTheirValues) {
    const Session session;
    const OpenCamera camera(session, "0");
    EventSource source{&m_Queue, 0};
    camera->SetCameraControlCallback(&EventQueue::CameraEvent, &source);
    camera->SetCameraControlCallbackEx(&EventQueue::CameraEventEx, &source);
    ASSERT_TRUE(SimCommand("event 0 3 70000 1 -2 3"));
    const Json event = Next();
    ASSERT_TRUE(event.is_object());
    EXPECT_EQ(event["event"], "camera_event");
    EXPECT_EQ(event["code"], 3);
    EXPECT_EQ(event["value"], 70000);
    EXPECT_EQ(event["values"], Json({1, -2, 3, 0, 0, 0, 0, 0}));
    Json second;
    EXPECT_FALSE(m_Queue.Next(second, std::chrono::milliseconds(50))) << second.dump();

    ASSERT_TRUE(SimCommand("event 0 8"));
    EXPECT_EQ(Next()["event"], "link_lost");
    ASSERT_TRUE(SimCommand("event 0 9"));
    EXPECT_EQ(Next()["event"], "link_back");
    camera->SetCameraControlCallbackEx(nullptr, nullptr);
    camera->SetCameraControlCallback(nullptr, nullptr);
}

}  // namespace zelcam
