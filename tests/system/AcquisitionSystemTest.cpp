// Whole acquisitions through the public interface on every kind of link. What else may happen meanwhile is the
// life-time tests' matter, what goes wrong the campaign's.
#include "tests/system/SystemFixture.h"

namespace zel::test {

TEST(AcquisitionSystemTest, ASequenceDeliversItsFramesInOrder) {
    UseFastCameras();
    static std::atomic<int> s_Frames{0};
    ZelSDK* const sdk = zel_create_sdk();
    ASSERT_TRUE(sdk->Open() && sdk->GetNumberOfCameras() == 4);
    for (int number = 0; number < 4; ++number) {
        SCOPED_TRACE(number);
        ZelCamera* const camera = sdk->GetCamera(number);
        ASSERT_TRUE(camera && camera->Open());
        camera->SetImageNotificationCallback([](int, void*) { ++s_Frames; }, nullptr);
        camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 16);
        camera->SetParameterValue(ZEL_PARAM_FRAME_COUNT, 12);
        ASSERT_TRUE(camera->Start());
        while (s_Frames < 12 * (number + 1)) std::this_thread::yield();
        ASSERT_TRUE(camera->Stop());
        for (unsigned n = 0; n < 12; ++n) {
            ZelImage* image = camera->GetPendingImage();
            ASSERT_NE(image, nullptr) << n;
            EXPECT_EQ(image->image_number, n);
            EXPECT_TRUE(camera->FreeImage(image));
        }
        EXPECT_EQ(camera->GetPendingImage(), nullptr);
    }
    zel_destroy_sdk(sdk);
}

}  // namespace zel::test
