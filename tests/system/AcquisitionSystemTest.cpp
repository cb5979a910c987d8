// Whole acquisitions through the public interface.
#include "platform/Clock.h"
#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

class AcquisitionSystemTest : public SystemTest, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(EachCamera, AcquisitionSystemTest, testing::Range(0, 4));

TEST_P(AcquisitionSystemTest, ASequenceDeliversItsFramesInOrder) {
    ZelCamera* camera = Opened(GetParam());
    camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 16);
    ASSERT_TRUE(camera->SetImageNotificationCallback(Count, &m_Frames));
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
}

TEST_P(AcquisitionSystemTest, StopInsideACallbackMakesItTheLast) {
    struct Context {
        ZelCamera* camera;
        CallCounter calls;
    } context{Opened(GetParam()), {}};
    context.camera->SetImageCallback(
        [](ZelImage*, void* pointer) {
            auto* self = static_cast<Context*>(pointer);
            self->camera->Stop();
            self->calls.Count();
        },
        &context);
    ASSERT_TRUE(context.camera->Start());
    ASSERT_TRUE(context.calls.WaitFor(1));
    EXPECT_TRUE(context.camera->Stop());
    EXPECT_EQ(context.calls.Calls(), 1);
    ASSERT_TRUE(context.camera->Start()) << "it can be started again";
    EXPECT_TRUE(context.calls.WaitFor(2));
    EXPECT_TRUE(context.camera->Stop());
}

TEST_P(AcquisitionSystemTest, NoCallbackRunsAfterStop) {
    ZelCamera* camera = Opened(GetParam());
    camera->SetImageNotificationCallback(Count, &m_Frames);
    for (int round = 0; round < 20; ++round) {
        const int before = m_Frames.Calls();
        ASSERT_TRUE(camera->Start());
        ASSERT_TRUE(m_Frames.WaitFor(before + 1));
        ASSERT_TRUE(camera->Stop());
        const int after_stop = m_Frames.Calls();
        platform::SleepMilliseconds(1);
        EXPECT_EQ(m_Frames.Calls(), after_stop);
        camera->FreeAllPendingImages();
    }
}

TEST_P(AcquisitionSystemTest, CloseInTheMiddleOfARun) {
    ZelCamera* camera = Opened(GetParam());
    camera->SetImageNotificationCallback(Count, &m_Frames);
    ASSERT_TRUE(camera->Start());
    ASSERT_TRUE(m_Frames.WaitFor(1));
    EXPECT_TRUE(camera->Close());
    EXPECT_EQ(camera->GetPendingImage(), nullptr);
    ASSERT_TRUE(camera->Open());
    ASSERT_TRUE(camera->Start());
    // The SDK is destroyed by the fixture while frames flow.
}

}  // namespace
}  // namespace zel::test
