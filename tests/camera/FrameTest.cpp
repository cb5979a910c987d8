// Frames from the pool to the transport to the application and back.
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;

struct FrameTest : CameraTest {
    void SetUp() override {
        m_Table.m_Values[H_BIN] = 2;
        Write(ZEL_PARAM_NUM_IMAGE_BUFFERS, 3);
        ASSERT_EQ(m_Camera->StartCommon(), 0);
    }
    // What a transport does with one frame; every sample is 10.
    ZelImage* Deliver(unsigned number) {
        ZelImage* image = m_Camera->GetFreeImage();
        if (!image) return nullptr;
        std::fill_n(image->pixels, image->w * image->h, std::uint16_t{10});
        image->image_number = number;
        m_Camera->FillImageInfo(image);
        EXPECT_TRUE(m_Camera->SetPendingImage(image));
        m_Transport.EmitEvent(CAMERA_EVENT_IMAGE_READY);
        m_Transport.EmitImage(image);
        return image;
    }
    // Number, width, binning, second sample, time in the queue. A raw frame is 16 wide and its samples 10.
    static std::vector<unsigned> Facts(ZelImage* image) {
        if (!image) return {};
        return {image->image_number, image->w, image->x_bin, image->pixels[1],
                static_cast<ZelColorImage*>(image)->queue_delay_ms};
    }
    static void ZEL_CALL CountImage(ZelImage* image, void* context) {
        auto* test = static_cast<FrameTest*>(context);
        test->m_Seen.push_back(Facts(image));
        EXPECT_FALSE(test->m_Camera->FreeImage(image)) << "pending, not the application's, during the callback";
    }
    std::vector<std::vector<unsigned>> m_Seen;
};

TEST_F(FrameTest, AFrameArrivesProcessedWithItsSettings) {
    m_Clock.Advance(250);
    Deliver(4);
    m_Clock.Advance(30);
    ZelImage* image = Next();
    EXPECT_THAT(Facts(image), ElementsAre(4, 8, 2, 20, 30));
    EXPECT_TRUE(m_Camera->FreeImage(image));
    EXPECT_FALSE(m_Camera->FreeImage(image)) << "given back already";
    EXPECT_FALSE(m_Camera->FreeImage(nullptr));
    EXPECT_EQ(Next(), nullptr);
}

// However late a frame is fetched, it is processed with what it was taken with.
TEST_F(FrameTest, AFrameThatWaitsOverARestartKeepsItsSettings) {
    Deliver(1);
    m_Table.m_Values[H_BIN] = 1;
    ASSERT_EQ(m_Camera->StartCommon(), 0);
    Deliver(2);
    EXPECT_EQ(Facts(Next())[1], 8u);
    EXPECT_THAT(Facts(Next()), ElementsAre(2, 16, 1, 10, 0));
}

TEST_F(FrameTest, TheExposureTimeIsTheOneInForceWhenTheFrameCame) {
    const auto exposure = [this] {
        const int exchanges = m_Transport.Exchanges();
        const ZelImage* image = Deliver(1);
        EXPECT_EQ(m_Transport.Exchanges(), exchanges);
        m_Camera->FreeImage(Next());
        return image->exposure_time_us;
    };
    EXPECT_EQ(exposure(), 700u);
    Write(ZEL_PARAM_EXPOSURE_TIME_US, 2000);
    EXPECT_EQ(exposure(), 2000u);
    Write(ZEL_PARAM_EXPOSURE_TIME, 3000);
    EXPECT_EQ(exposure(), 3000u);
    m_Table.m_Values[EXPOSURE_TIME] = 2999;
    Value(ZEL_PARAM_EXPOSURE_TIME_US);
    EXPECT_EQ(exposure(), 2999u) << "what the camera made of it";
    Refuse(EXPOSURE_TIME);
    Write(ZEL_PARAM_EXPOSURE_TIME_US, 5000);
    Write(ZEL_PARAM_EXPOSURE_TIME, 6000);
    EXPECT_EQ(exposure(), 2999u) << "refused";
}

TEST_F(FrameTest, OldestFirstOrNewestOnly) {
    // A record that comes back has its full geometry again.
    for (unsigned n = 0; n < 5; ++n) {
        Deliver(n);
        if (n < 2) m_Camera->FreeImage(Next());
    }
    EXPECT_EQ(Deliver(5), nullptr) << "all three records wait";
    EXPECT_EQ(Facts(Next())[0], 2u);
    m_Clock.Advance(40);
    EXPECT_THAT(Facts(m_Camera->GetLastPendingImage()), ElementsAre(4, 8, 2, 20, 40));
    EXPECT_TRUE(Next() == nullptr && m_Camera->GetLastPendingImage() == nullptr);
    ASSERT_NE(Deliver(6), nullptr);
    EXPECT_TRUE(m_Camera->FreeAllPendingImages());
    EXPECT_EQ(Next(), nullptr);
}

TEST_F(FrameTest, TheCallbackSeesEachFrameProcessedExactlyOnce) {
    ASSERT_TRUE(m_Camera->SetImageCallback(CountImage, this));
    ZelImage* image = Deliver(1);
    zel_image_handler(nullptr, m_Camera.get());
    zel_image_handler(image, nullptr);
    EXPECT_THAT(m_Seen, ElementsAre(ElementsAre(1, 8, 2, 20, 0)));
    EXPECT_EQ(Facts(Next()), m_Seen[0]) << "not binned a second time";
}

TEST_F(FrameTest, TheTransportsPendingImageIsRaw) {
    ZelImage* image = Deliver(1);
    IZelCameraCommon* common = m_Camera.get();
    EXPECT_EQ(common->GetPendingImage(), image);
    EXPECT_EQ(image->w, 16u);
    EXPECT_TRUE(common->ReleaseImage(image));
    EXPECT_FALSE(common->ReleaseImage(nullptr) || common->SetPendingImage(nullptr));
    common->FillImageInfo(nullptr);
}

}  // namespace
}  // namespace zel::test
