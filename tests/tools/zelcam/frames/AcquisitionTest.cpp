#include "tools/zelcam/frames/Acquisition.h"

#include <set>
#include <thread>

#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

// Frames that wait behind the one in hand are passed over or kept; those of an earlier run are never taken.
TEST(AcquisitionTest, NewestFramePassesOlderOnesOverAndAnEarlierRunIsOver) {
    UseFastCameras();
    const Session session;
    OpenCamera camera(session, "0");
    std::set<unsigned> first;
    for (const FrameMode mode : {FrameMode::kEvery, FrameMode::kNewest, FrameMode::kEvery}) {
        Acquisition acquisition(camera, mode, StartMode::kFree, {});
        const unsigned number = acquisition.Next()->image_number;
        if (mode == FrameMode::kEvery) first.insert(number);
        for (int i = 0; i < 20; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            ASSERT_TRUE(acquisition.Next());
        }
        EXPECT_EQ(acquisition.Waiter().Skipped() > 0, mode == FrameMode::kNewest);
    }
    EXPECT_EQ(first.size(), 1u);
}

}  // namespace zelcam
