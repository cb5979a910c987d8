#include "tools/zelcam/frames/Acquisition.h"

#include <gmock/gmock.h>

#include <optional>
#include <thread>

#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "tests/tools/zelcam/commands/SimControl.h"
#include "tools/zelcam/frames/Statistics.h"
#include "tools/zelcam/frames/StreamReport.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

using testing::HasSubstr;

class AcquisitionTest : public testing::Test {
  protected:
    AcquisitionTest() { UseFastCameras(); }

    void SetUp() override {
        m_Session.emplace();
        m_Camera.emplace(*m_Session, "0");
        ASSERT_TRUE(SimCommand("fault 0 clear"));
    }

    // The message of the failure that ends the wait for a frame.
    static std::string FailureOfNext(Acquisition& acquisition) {
        try {
            for (int i = 0; i < 100; ++i) acquisition.Next();
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "no failure";
    }

    std::optional<Session> m_Session;
    std::optional<OpenCamera> m_Camera;
    AcquisitionSettings m_Settings;
};

TEST_F(AcquisitionTest, EveryFrameComesInOrder) {
    m_Settings.buffers = "4";
    m_Settings.Apply(m_Camera->Get());
    Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
    std::uint32_t last = 0;
    for (int i = 0; i < 50; ++i) {
        const Frame frame = acquisition.Next();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->w, 64u);
        EXPECT_EQ(frame->h, 48u);
        EXPECT_TRUE(i == 0 || frame->image_number > last) << frame->image_number << " after " << last;
        EXPECT_GE(frame.HandOverUs(), 0.0);
        last = frame->image_number;
    }
    EXPECT_EQ(acquisition.Waiter().Skipped(), 0u);
}

TEST_F(AcquisitionTest, NewestFramePassesOlderOnesOver) {
    Acquisition acquisition(*m_Camera, FrameMode::kNewest, StartMode::kFree, m_Settings);
    StreamReport report;
    for (int i = 0; i < 20; ++i) {
        const Frame frame = acquisition.Next();
        ASSERT_TRUE(frame);
        report.Add(*frame.Get(), frame.HandOverUs());
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_GT(acquisition.Waiter().Skipped(), 0u);
    EXPECT_EQ(report.frames, 20u);
    EXPECT_EQ(report.bytes, 20u * 64 * 48 * 2);
}

TEST_F(AcquisitionTest, FramesGoBackToThePool) {
    m_Settings.buffers = "2";
    m_Settings.Apply(m_Camera->Get());
    Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
    Frame held;
    for (int i = 0; i < 20; ++i) {
        held = acquisition.Next();  // the frame before goes back
        ASSERT_TRUE(held);
    }
}

TEST_F(AcquisitionTest, FramesOfAnEarlierRunAreNotTaken) {
    unsigned first = 0;
    for (int run = 0; run < 2; ++run) {
        Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
        const unsigned number = acquisition.Next()->image_number;
        if (run == 0) first = number;
        EXPECT_EQ(number, first) << "run " << run;
        // Later ones stay behind.
        for (int i = 0; i < 3; ++i) acquisition.Next();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

TEST_F(AcquisitionTest, LinkLossIsNamedAndStopReturns) {
    ASSERT_TRUE(SimCommand("fault 0 unplug-frame after=3"));
    {
        Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
        EXPECT_THAT(FailureOfNext(acquisition), HasSubstr("the link to the camera is lost"));
        EXPECT_TRUE(acquisition.Waiter().LinkLost());
    }
    EXPECT_TRUE(SimCommand("plug 0"));
}

TEST_F(AcquisitionTest, SilentCameraIsNamedAfterTheTimeOut) {
    m_Settings.timeout_s = 0.1;
    ASSERT_TRUE(SimCommand("fault 0 stall 0"));
    Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
    EXPECT_THAT(FailureOfNext(acquisition), testing::AllOf(HasSubstr("no frame from camera 0 within 100 ms"),
                                                           HasSubstr("is running (exposure of 10 ms)")));
}

TEST_F(AcquisitionTest, WaitingForATriggerIsNamed) {
    m_Settings.timeout_s = 0.1;
    m_Settings.assignments = {"HW_TRIGGER_ACTIVE=1"};
    m_Settings.Apply(m_Camera->Get());
    Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kTriggered, m_Settings);
    EXPECT_THAT(FailureOfNext(acquisition), HasSubstr("waiting for a trigger at its input"));
}

TEST_F(AcquisitionTest, EmptyPoolIsNamed) {
    m_Settings.timeout_s = 0.1;
    m_Settings.buffers = "0";
    m_Settings.Apply(m_Camera->Get());
    Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
    EXPECT_THAT(FailureOfNext(acquisition), HasSubstr("there are no image buffers"));
}

TEST_F(AcquisitionTest, SoftwareTriggerTakesOneFrameEach) {
    {
        Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kTriggered, m_Settings);
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(m_Camera->Get()->SoftwareTrigger());
            EXPECT_TRUE(acquisition.Next());
        }
        acquisition.Stop();
        EXPECT_EQ(m_Camera->Get()->GetPendingImage(), nullptr);
    }
    m_Settings.timeout_s = 0.3;
    Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kTriggered, m_Settings);
    EXPECT_THAT(FailureOfNext(acquisition), HasSubstr("the software trigger brought no frame"));
}

TEST_F(AcquisitionTest, FramesLostOnTheLinkAreCounted) {
    ASSERT_TRUE(SimCommand("fault 0 lose after=2 times=3"));
    m_Settings.buffers = "32";
    m_Settings.Apply(m_Camera->Get());
    Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
    DropCounter counter;
    for (int i = 0; i < 8; ++i) counter.Frame(acquisition.Next()->image_number);
    EXPECT_EQ(counter.Missing(), 3u);
    EXPECT_GE(acquisition.LinkDrops(), 3u);
}

}  // namespace zelcam
