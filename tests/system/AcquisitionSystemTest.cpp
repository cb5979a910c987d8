// Whole acquisitions through the public interface, cameras that go and come back on every kind of link, and cameras
// that fail. What else may happen meanwhile is the life-time tests' matter.
#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

struct Link {
    const char* name;
    const char* library;
    int number;     // of its camera in a full house
    int cam_index;  // within the library
};

class AcquisitionSystemTest : public SystemTest, public testing::WithParamInterface<Link> {};

INSTANTIATE_TEST_SUITE_P(Links, AcquisitionSystemTest,
                         testing::Values(Link{"CameraLink", "edt_camera_link.dll", 0, 0},
                                         Link{"EBus", "pleora_ebus.dll", 1, 0}, Link{"UsbColor", "zel_usb.dll", 2, 0},
                                         Link{"Usb", "zel_usb.dll", 3, 1}),
                         [](const auto& link) { return link.param.name; });

TEST_P(AcquisitionSystemTest, ASequenceDeliversItsFramesInOrder) {
    ZelCamera* camera = Opened(GetParam().number);
    camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 16);
    camera->SetParameterValue(ZEL_PARAM_FRAME_COUNT, 12);
    ASSERT_TRUE(camera->Start());
    ASSERT_TRUE(m_Frames.WaitFor(12));
    ASSERT_TRUE(camera->Stop());
    for (unsigned n = 0; n < 12; ++n) {
        ZelImage* image = camera->GetPendingImage();
        ASSERT_NE(image, nullptr) << n;
        EXPECT_EQ(image->image_number, n);
        EXPECT_TRUE(camera->FreeImage(image));
    }
    EXPECT_EQ(camera->GetPendingImage(), nullptr);
    // The SDK is destroyed by the fixture while frames flow.
    camera->SetParameterValue(ZEL_PARAM_FRAME_COUNT, 0);
    ASSERT_TRUE(camera->Start());
}

TEST_P(AcquisitionSystemTest, AnUnpluggedCameraOutlivesASearch) {
    const SimulatedLibrary library(GetParam().library);
    for (const bool destroys : {false, true}) {
        ZelCamera* camera = Opened(GetParam().number);
        ASSERT_TRUE(camera->Start());
        ASSERT_TRUE(m_Frames.WaitFor(m_Frames.calls + 1));
        library("unplug " + std::to_string(GetParam().cam_index));
        ASSERT_EQ(m_Sdk->GetNumberOfCameras(), kCameras - 1);
        EXPECT_EQ(camera->GetParameterValue(ZEL_PARAM_HSIZE), ZEL_PARAM_HSIZE) << "no answer";
        EXPECT_FALSE(camera->Start());
        destroys ? zel_destroy_sdk(m_Sdk) : static_cast<void>(camera->Close());
        library.Mend(GetParam().cam_index);
        if (destroys) Open();
        ASSERT_EQ(m_Sdk->GetNumberOfCameras(), kCameras);
        camera = Opened(GetParam().number);
        EXPECT_TRUE(GivesFrames(camera) && camera->Close());
    }
}

// ---- Cameras that fail. The life-time tests unplug them at any moment. ----

class FaultSystemTest : public SystemTest {
  protected:
    // The monochrome camera is number 1 of its library.
    ~FaultSystemTest() override { m_Usb.Mend(1); }
    ZelCamera* m_Camera = Opened(kMono);
};

TEST_F(FaultSystemTest, GarbageAndHalfRepliesAreReadAgain) {
    for (const char* fault :
         {"fault 1 truncate 4", "fault 1 one-byte times=3", "fault 1 exception 0x11 times=2", "fault 1 short-send"}) {
        SCOPED_TRACE(fault);
        m_Usb(fault);
        int size = 0;
        m_Camera->GetParameter(ZEL_PARAM_HSIZE, 4, &size);
        m_Usb("fault 1 clear");
        // Whatever was left unread is gone at the latest after the next connection.
        m_Camera->Close();
        ASSERT_TRUE(m_Camera->Open());
        EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_HSIZE), 64);
    }
}

TEST_F(FaultSystemTest, LostFramesAreCountedByTheirCause) {
    m_Usb("fault 1 lose after=2 times=3");
    m_Camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 16);
    m_Camera->SetParameterValue(ZEL_PARAM_FRAME_COUNT, 10);
    ASSERT_TRUE(m_Camera->Start());
    ASSERT_TRUE(m_Frames.WaitFor(7));
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_DROPPED_FRAMES), 3);
}

TEST_F(FaultSystemTest, DisconnectAndReconnectReachTheApplication) {
    // The events come on this thread, out of the two commands.
    std::vector<int> heard;
    m_Camera->SetCameraControlCallback(
        [](int code, void* context) { static_cast<std::vector<int>*>(context)->push_back(code); }, &heard);
    m_Usb("unplug 1");
    m_Usb("plug 1");
    m_Camera->SetCameraControlCallback(nullptr, nullptr);
    EXPECT_THAT(heard, testing::ElementsAre(ZEL_CAMERA_CONTROL_DISCONNECT, ZEL_CAMERA_CONTROL_RECONNECT));
}

}  // namespace
}  // namespace zel::test
