#include "tools/zelcam/frames/Acquisition.h"

#include <optional>
#include <thread>

#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"
#include "tools/zelcam/frames/Statistics.h"

namespace zelcam {

class AcquisitionTest : public testing::Test {
  protected:
    AcquisitionTest() { UseFastCameras(); }

    void SetUp() override {
        m_Session.emplace();
        m_Camera.emplace(*m_Session, "0");
        ASSERT_TRUE(SimCommand("fault 0 clear"));
    }

    // The wait for a frame ends in this failure, sooner or later.
    static void ExpectTheEnd(Acquisition& acquisition, const FailureKind& kind, const char* line) {
        ExpectFailure(
            [&] {
                for (int i = 0; i < 100; ++i) acquisition.Next();
            },
            kind, line);
    }

    std::optional<Session> m_Session;
    std::optional<OpenCamera> m_Camera;
    AcquisitionSettings m_Settings;
};

TEST_F(AcquisitionTest, EveryFrameComesInOrderThroughASmallPool) {
    m_Settings.buffers = "2";
    m_Settings.Apply(m_Camera->Get());
    Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
    Frame held;
    for (std::uint32_t i = 0, last = 0; i < 50; ++i) {
        held = acquisition.Next();  // the frame before goes back
        ASSERT_TRUE(held);
        EXPECT_EQ(held->w, 64u);
        EXPECT_TRUE(i == 0 || held->image_number > last) << held->image_number << " after " << last;
        EXPECT_GE(held.HandOverUs(), 0.0);
        last = held->image_number;
    }
    EXPECT_EQ(acquisition.Waiter().Skipped(), 0u);
}

TEST_F(AcquisitionTest, NewestFramePassesOlderOnesOver) {
    Acquisition acquisition(*m_Camera, FrameMode::kNewest, StartMode::kFree, m_Settings);
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(acquisition.Next());
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_GT(acquisition.Waiter().Skipped(), 0u);
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
        ExpectTheEnd(acquisition, kLinkLost, "the link to the camera is lost");
        EXPECT_TRUE(acquisition.Waiter().LinkLost());
    }
    EXPECT_TRUE(SimCommand("plug 0"));
}

TEST_F(AcquisitionTest, SilentCameraIsNamedAfterTheTimeOut) {
    m_Settings.timeout_s = 0.1;
    ASSERT_TRUE(SimCommand("fault 0 stall 0"));
    Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
    ExpectTheEnd(acquisition, kTimeout,
                 "no frame from camera 0 within 100 ms: the camera is running (exposure of 10 ms)");
}

TEST_F(AcquisitionTest, SoftwareTriggerTakesOneFrameEach) {
    m_Settings.timeout_s = 0.3;
    Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kTriggered, m_Settings);
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(m_Camera->Get()->SoftwareTrigger());
        EXPECT_TRUE(acquisition.Next());
    }
    ExpectTheEnd(acquisition, kTimeout, "the software trigger brought no frame");
}

TEST_F(AcquisitionTest, FramesLostOnTheLinkAreCounted) {
    ASSERT_TRUE(SimCommand("fault 0 lose after=2 times=3"));
    m_Settings.buffers = "32";
    m_Settings.Apply(m_Camera->Get());
    Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kFree, m_Settings);
    FrameCounter counter;
    for (int i = 0; i < 8; ++i) counter.Frame(acquisition.Next()->image_number, 0);
    EXPECT_EQ(counter.Missing(), 3u);
    EXPECT_GE(acquisition.LinkDrops(), 3u);
}

}  // namespace zelcam
