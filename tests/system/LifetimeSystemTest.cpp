// Cameras that come and go on every kind of link, and what an application does inside the connect callback.
#include <functional>
#include <vector>

#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

struct Link {
    const char* name;
    const char* library;
    int number;      // of its camera in a full house
    int without_it;  // what a search finds while it is unplugged
    int cam_index;   // within the library
};

// Ends with every camera plugged, for the next test.
class LifetimeSystemTest : public SystemTest, public testing::WithParamInterface<Link> {
  protected:
    ~LifetimeSystemTest() override {
        zel_set_camera_connect_callback(nullptr, nullptr);
        Plug();
    }
    void Unplug() { m_Library("unplug " + std::to_string(GetParam().cam_index)); }
    void Plug() { m_Library.Plug(GetParam().cam_index); }
    ZelCamera* Camera() { return m_Sdk->GetCamera(GetParam().number); }

    // Whether frames come from a camera: opened, started, stopped and closed.
    void ExpectFrames(ZelCamera* camera) {
        ASSERT_NE(camera, nullptr);
        ASSERT_TRUE(camera->Open());
        camera->SetImageNotificationCallback(Count, &m_Frames);
        const int before = m_Frames.Calls();
        ASSERT_TRUE(camera->Start());
        EXPECT_TRUE(m_Frames.WaitFor(before + 1));
        EXPECT_TRUE(camera->Stop());
        EXPECT_TRUE(camera->Close());
    }

    SimulatedLibrary m_Library{GetParam().library};
};

INSTANTIATE_TEST_SUITE_P(Links, LifetimeSystemTest,
                         testing::Values(Link{"CameraLink", "edt_camera_link.dll", 0, 3, 0},
                                         Link{"EBus", "pleora_ebus.dll", 1, 3, 0}, Link{"Usb", "zel_usb.dll", 3, 3, 1}),
                         [](const auto& link) { return link.param.name; });

TEST_P(LifetimeSystemTest, AnUnpluggedCameraOutlivesASearch) {
    ZelCamera* const camera = Camera();
    ASSERT_TRUE(camera->Open());
    camera->SetImageNotificationCallback(Count, &m_Frames);
    ASSERT_TRUE(camera->Start());
    ASSERT_TRUE(m_Frames.WaitFor(1));
    Unplug();
    ASSERT_EQ(m_Sdk->GetNumberOfCameras(), GetParam().without_it);
    EXPECT_EQ(camera->GetParameterValue(ZEL_PARAM_HSIZE), ZEL_PARAM_HSIZE);
    EXPECT_FALSE(camera->Start());
    camera->Close();
    Plug();
    ASSERT_EQ(m_Sdk->GetNumberOfCameras(), 4);
    ExpectFrames(Camera());
}

TEST_P(LifetimeSystemTest, TheSdkIsDestroyedAfterASearchWithoutTheCamera) {
    ASSERT_TRUE(Camera()->Open());
    Unplug();
    ASSERT_EQ(m_Sdk->GetNumberOfCameras(), GetParam().without_it);
    zel_destroy_sdk(m_Sdk);
    Plug();
    m_Sdk = zel_create_sdk();
    ASSERT_TRUE(m_Sdk->Open());
    ASSERT_EQ(m_Sdk->GetNumberOfCameras(), 4);
    ExpectFrames(Camera());
}

TEST_P(LifetimeSystemTest, AClosedCameraThatWasReplugged) {
    ZelCamera* const before = Camera();
    Unplug();
    Plug();
    ZelCamera* const after_event = Camera();
    EXPECT_NE(after_event, before);
    EXPECT_FALSE(before->Open()) << "retired";
    ASSERT_EQ(m_Sdk->GetNumberOfCameras(), 4);
    EXPECT_EQ(Camera(), after_event) << "the one that the transport talks to";
    ExpectFrames(after_event);
    // A search takes no transport away from a camera that runs.
    ASSERT_TRUE(after_event->Open());
    ASSERT_TRUE(after_event->Start());
    ASSERT_EQ(m_Sdk->GetNumberOfCameras(), 4);
    // Nobody takes frames: the buffers may have been full before the search began.
    const int before_freeing = m_Frames.Calls();
    after_event->FreeAllPendingImages();
    EXPECT_TRUE(m_Frames.WaitFor(before_freeing + 3));
}

struct Action {
    const char* name;
    std::function<void(ZelSDK*&, ZelCamera*)> run;
    bool closes;
};

// What an application may do inside the connect callback, here when its only camera on that link goes and comes.
TEST_P(LifetimeSystemTest, EverythingAnApplicationDoesInsideTheConnectCallback) {
    static const std::vector<Action> kActions = {
        {"search", [](ZelSDK*& sdk, ZelCamera*) { sdk->GetNumberOfCameras(); }, false},
        {"open", [](ZelSDK*&, ZelCamera* camera) { camera->Open(); }, false},
        {"start", [](ZelSDK*&, ZelCamera* camera) { camera->Open() && camera->Start(); }, false},
        {"close", [](ZelSDK*&, ZelCamera* camera) { camera->Close(); }, false},
        {"switch off", [](ZelSDK*&, ZelCamera*) { zel_set_camera_connect_callback(nullptr, nullptr); }, false},
        {"close the SDK", [](ZelSDK*& sdk, ZelCamera*) { sdk->Close(); }, true},
        {"destroy the SDK", [](ZelSDK*& sdk, ZelCamera*) { zel_destroy_sdk(sdk), sdk = zel_create_sdk(); }, true},
    };
    struct Scene {
        ZelSDK*& sdk;
        const Action& action;
        ZelCamera* camera;
        int events = 0;
    };
    for (const bool open : {false, true}) {
        for (const Action& action : kActions) {
            SCOPED_TRACE(std::string(action.name) + (open ? ", camera open" : ""));
            Scene scene{m_Sdk, action, Camera()};
            if (open) {
                ASSERT_TRUE(scene.camera->Open());
            }
            zel_set_camera_connect_callback(
                [](int, int, const char*, const char*, const char*, void* context) {
                    auto& here = *static_cast<Scene*>(context);
                    if (here.events++ == 0) here.action.run(here.sdk, here.camera);
                },
                &scene);
            Unplug();
            EXPECT_EQ(scene.events, 1);
            Plug();
            if (action.closes) {
                ASSERT_TRUE(m_Sdk->Open());
            }
            zel_set_camera_connect_callback(nullptr, nullptr);
            ASSERT_EQ(m_Sdk->GetNumberOfCameras(), 4);
            ExpectFrames(Camera());
        }
    }
}

}  // namespace
}  // namespace zel::test
