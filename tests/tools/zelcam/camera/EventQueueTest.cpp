#include "tools/zelcam/camera/EventQueue.h"

#include <gtest/gtest.h>

namespace zelcam {

TEST(EventQueue, EventsComeInOrderAndNameTheirCameraAndValues) {
    using Kind = zel::CameraEvent::Kind;
    EventQueue queue;
    queue.Add(2, {Kind::camera, 3, 70000, {1, -2, 3}});
    queue.Add(0, {Kind::link_lost, 0, 0, {}});
    queue.Add(0, {Kind::link_back, 0, 0, {}});
    for (const bool connected : {true, false}) queue.Add({connected, {1, "left", "7", "GigE", {}}});
    for (const char* expected :
         {R"({"event":"camera_event","camera":2,"code":3,"value":70000,"values":[1,-2,3,0,0,0,0,0]})",
          R"({"event":"link_lost","camera":0})", R"({"event":"link_back","camera":0})",
          R"({"event":"connect","camera":1,"name":"left","serial":"7","interface":"GigE"})",
          R"({"event":"disconnect","camera":1,"name":"left","serial":"7","interface":"GigE"})"}) {
        Json event;
        ASSERT_TRUE(queue.Next(event, std::chrono::seconds(0))) << expected;
        EXPECT_EQ(event.erase("time_utc"), 1u) << expected;
        EXPECT_EQ(JsonText(event, -1), expected);
    }
}

}  // namespace zelcam
