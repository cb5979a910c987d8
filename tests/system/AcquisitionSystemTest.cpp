// Whole acquisitions through the public interface on every kind of link. What else may happen meanwhile is the
// life-time tests' matter, what goes wrong the campaign's.
#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

using AcquisitionSystemTest = SystemTest;

TEST_F(AcquisitionSystemTest, ASequenceDeliversItsFramesInOrder) {
    for (int number = 0; number < kCameras; ++number) {
        SCOPED_TRACE(number);
        ZelCamera* camera = Opened(number);
        camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 16);
        camera->SetParameterValue(ZEL_PARAM_FRAME_COUNT, 12);
        ASSERT_TRUE(camera->Start());
        ASSERT_TRUE(m_Frames.WaitFor(12 * (number + 1)));
        ASSERT_TRUE(camera->Stop());
        for (unsigned n = 0; n < 12; ++n) {
            ZelImage* image = camera->GetPendingImage();
            ASSERT_NE(image, nullptr) << n;
            EXPECT_EQ(image->image_number, n);
            EXPECT_TRUE(camera->FreeImage(image));
        }
        EXPECT_EQ(camera->GetPendingImage(), nullptr);
    }
}

}  // namespace
}  // namespace zel::test
