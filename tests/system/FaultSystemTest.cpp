// Cameras that fail: what the application gets, and that everything ends in time.
#include <chrono>

#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

class Stopwatch {
  public:
    double Seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_Start).count(); }

  private:
    std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now();
};

class FaultSystemTest : public SystemTest {
  protected:
    // The monochrome camera is number 1 of its library.
    ~FaultSystemTest() override {
        m_Usb("fault 1 clear");
        m_Usb.Plug(1);
    }
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
    m_Camera->SetImageNotificationCallback(Count, &m_Frames);
    ASSERT_TRUE(m_Camera->Start());
    ASSERT_TRUE(m_Frames.WaitFor(7));
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_DROPPED_FRAMES), 3);
}

struct Moment {
    const char* name;
    const char* fault;
};
class UnplugTest : public FaultSystemTest, public testing::WithParamInterface<Moment> {};

TEST_P(UnplugTest, EndsEveryOperationInTimeAndTheCameraComesBack) {
    m_Camera->SetCameraControlCallback(Count, &m_Events);
    m_Camera->SetImageNotificationCallback(Count, &m_Frames);
    m_Usb(GetParam().fault);
    const Stopwatch watch;
    if (m_Camera->Start()) {
        m_Camera->SoftwareTrigger();
        m_Camera->Stop();
    }
    m_Camera->Close();
    EXPECT_LT(watch.Seconds(), 10.0);
    m_Usb("fault 1 clear");
    m_Usb.Plug(1);
    // A closed camera that is plugged in again has a new camera object.
    m_Camera = Opened(kMono);
    m_Camera->SetImageNotificationCallback(Count, &m_Frames);
    const int before = m_Frames.Calls();
    ASSERT_TRUE(m_Camera->Start());
    EXPECT_TRUE(m_Frames.WaitFor(before + 1));
    EXPECT_TRUE(m_Camera->Stop());
}

INSTANTIATE_TEST_SUITE_P(, UnplugTest,
                         testing::Values(Moment{"Idle", "unplug 1"}, Moment{"Starting", "fault 1 unplug-start"},
                                         Moment{"BetweenExchanges", "fault 1 unplug after=5"},
                                         Moment{"Streaming", "fault 1 unplug-frame after=1"},
                                         Moment{"Stopping", "fault 1 unplug-stop"},
                                         Moment{"Closing", "fault 1 unplug-close"}),
                         [](const auto& moment) { return std::string(moment.param.name); });

TEST_F(FaultSystemTest, DisconnectAndReconnectReachTheApplication) {
    struct Codes {
        std::mutex lock;
        std::vector<int> codes;
    } heard;
    m_Camera->SetCameraControlCallback(
        [](int code, void* context) {
            auto* self = static_cast<Codes*>(context);
            const std::lock_guard lock(self->lock);
            self->codes.push_back(code);
        },
        &heard);
    m_Usb("unplug 1");
    m_Usb("plug 1");
    const std::lock_guard lock(heard.lock);
    EXPECT_THAT(heard.codes, testing::ElementsAre(ZEL_CAMERA_CONTROL_DISCONNECT, ZEL_CAMERA_CONTROL_RECONNECT));
}

TEST_F(FaultSystemTest, ACalculationThatNeverEndsFailsTheStart) {
    m_Usb("fault 1 calc-never");
    const Stopwatch watch;
    EXPECT_FALSE(m_Camera->Start());
    EXPECT_GT(watch.Seconds(), 4.9);
    EXPECT_LT(watch.Seconds(), 15.0);
}

}  // namespace
}  // namespace zel::test
