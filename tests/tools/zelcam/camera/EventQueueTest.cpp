#include "tools/zelcam/camera/EventQueue.h"

#include <gtest/gtest.h>

#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "tests/tools/zelcam/commands/SimControl.h"
#include "tools/zelcam/camera/Session.h"

namespace zelcam {

TEST(EventQueueTest, EventsNameTheCameraAndComeOnceWithTheirValues) {
    UseFastCameras();
    EventQueue queue;
    const Session session;
    std::optional<OpenCamera> camera(std::in_place, session, "0");
    EventSource source{&queue, 0};
    (*camera)->SetCameraControlCallback(&EventQueue::CameraEvent, &source);
    (*camera)->SetCameraControlCallbackEx(&EventQueue::CameraEventEx, &source);
    const auto expect = [&](const char* command, const Json& members) {
        Json event;
        ASSERT_TRUE(SimCommand(command));
        ASSERT_TRUE(queue.Next(event, std::chrono::seconds(60))) << command;
        for (const auto& [name, value] : members.items()) EXPECT_EQ(event[name], value) << command;
    };
    expect("event 0 3 70000 1 -2 3",
           {{"event", "camera_event"}, {"code", 3}, {"value", 70000}, {"values", {1, -2, 3, 0, 0, 0, 0, 0}}});
    Json second;
    EXPECT_FALSE(queue.Next(second, std::chrono::milliseconds(50))) << second.dump();
    expect("event 0 8", {{"event", "link_lost"}});
    expect("event 0 9", {{"event", "link_back"}});
    camera.reset();
    ASSERT_EQ(zel_set_camera_connect_callback(&EventQueue::CameraConnected, &queue), 1);
    for (const std::string what : {"disconnect", "connect"}) {
        expect(what == "connect" ? "plug 0" : "unplug 0",
               {{"event", what}, {"camera", 0}, {"serial", session.Cameras().front().serial}});
    }
}

}  // namespace zelcam
