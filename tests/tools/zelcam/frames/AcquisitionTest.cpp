#include "tools/zelcam/frames/Acquisition.h"

#include <optional>
#include <set>
#include <thread>

#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

class AcquisitionTest : public testing::Test {
  protected:
    AcquisitionTest() {
        UseFastCameras();
        m_Session.emplace();
        m_Camera.emplace(*m_Session, "0");
    }

    std::optional<Session> m_Session;
    std::optional<OpenCamera> m_Camera;
};

TEST_F(AcquisitionTest, NewestFramePassesOlderOnesOver) {
    Acquisition acquisition(*m_Camera, FrameMode::kNewest, StartMode::kFree, {});
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(acquisition.Next());
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_GT(acquisition.Waiter().Skipped(), 0u);
}

TEST_F(AcquisitionTest, FramesOfAnEarlierRunAreNotTaken) {
    std::set<unsigned> first;
    for (int run = 0; run < 2; ++run) {
        Acquisition acquisition(*m_Camera, FrameMode::kEvery, StartMode::kFree, {});
        first.insert(acquisition.Next()->image_number);
        EXPECT_EQ(first.size(), 1u);
        // Later ones stay behind.
        for (int i = 0; i < 3; ++i) acquisition.Next();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

}  // namespace zelcam
