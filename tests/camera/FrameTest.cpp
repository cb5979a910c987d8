// Frames from the pool to the transport to the application and back.
#include <thread>

#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

class FrameTest : public CameraTest {
  protected:
    void SetUp() override {
        m_Table.m_Values[H_BIN] = 2;
        m_Camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 3);
        ASSERT_EQ(m_Camera->StartCommon(), 0);
    }
    ZelImage* Next() { return static_cast<ZelCamera&>(*m_Camera).GetPendingImage(); }
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
    static void ZEL_CALL CountImage(ZelImage* image, void* context) {
        auto* test = static_cast<FrameTest*>(context);
        ++test->m_Seen;
        test->m_SeenWidth = image->w;
        test->m_FreedInside = test->m_Camera->FreeImage(image);
    }
    int m_Seen = 0;
    unsigned m_SeenWidth = 0;
    bool m_FreedInside = false;
};

TEST_F(FrameTest, AFrameArrivesProcessedWithItsSettings) {
    m_Clock.Advance(250);
    Deliver(4);
    m_Clock.Advance(30);
    ZelImage* image = Next();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->w, 8u) << "binned by two";
    EXPECT_EQ(image->pixels[1], 20);
    EXPECT_EQ(image->x_bin, 2u);
    EXPECT_EQ(image->exposure_time_us, 700u);
    const auto* stamps = static_cast<ZelColorImage*>(image);
    EXPECT_EQ(stamps->queue_delay_ms, 30u);
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
    for (const auto& [w, binning] : {std::pair(8u, 2u), {16u, 1u}}) {
        const ZelImage* image = Next();
        EXPECT_EQ(image->w, w);
        EXPECT_EQ(image->x_bin, binning);
    }
}

TEST_F(FrameTest, TheExposureTimeIsTheOneInForceWhenTheFrameCame) {
    const auto exposure = [this] {
        const int exchanges = m_Transport.Exchanges();
        ZelImage* image = Deliver(1);
        EXPECT_EQ(m_Transport.Exchanges(), exchanges);
        EXPECT_TRUE(m_Camera->FreeImage(Next()));
        return image->exposure_time_us;
    };
    m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME_US, 2000);
    EXPECT_EQ(exposure(), 2000u);
    m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME, 3000);
    EXPECT_EQ(exposure(), 3000u);
    m_Table.m_Values[EXPOSURE_TIME] = 2999;
    m_Camera->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME_US);
    EXPECT_EQ(exposure(), 2999u) << "what the camera made of it";
    Refuse(EXPOSURE_TIME);
    m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME_US, 5000);
    m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME, 6000);
    EXPECT_EQ(exposure(), 2999u) << "refused";
}

TEST_F(FrameTest, OldestFirstOrNewestOnly) {
    // A record that comes back has its full geometry again.
    for (unsigned n = 0; n < 5; ++n) {
        Deliver(n);
        if (n < 2) m_Camera->FreeImage(Next());
    }
    EXPECT_EQ(m_Camera->GetFreeImage(), nullptr) << "all three records wait";
    ZelImage* oldest = Next();
    EXPECT_EQ(oldest->image_number, 2u);
    m_Clock.Advance(40);
    ZelImage* newest = m_Camera->GetLastPendingImage();
    EXPECT_EQ(newest->image_number, 4u);
    EXPECT_EQ(static_cast<ZelColorImage*>(newest)->queue_delay_ms, 40u);
    EXPECT_EQ(newest->w, 8u) << "processed as well";
    EXPECT_EQ(Next(), nullptr);
    EXPECT_EQ(m_Camera->GetLastPendingImage(), nullptr);
    ASSERT_NE(Deliver(5), nullptr);
    EXPECT_TRUE(m_Camera->FreeAllPendingImages());
    EXPECT_EQ(Next(), nullptr);
}

TEST_F(FrameTest, TheCallbackSeesEachFrameProcessedExactlyOnce) {
    ASSERT_TRUE(m_Camera->SetImageCallback(CountImage, this));
    Deliver(1);
    EXPECT_EQ(m_Seen, 1);
    EXPECT_EQ(m_SeenWidth, 8u);
    EXPECT_FALSE(m_FreedInside) << "the record is pending, not the application's, during the callback";
    ZelImage* image = Next();
    EXPECT_EQ(image->w, 8u) << "not binned a second time";
    EXPECT_EQ(image->pixels[1], 20);
    zel_image_handler(nullptr, m_Camera.get());
    zel_image_handler(image, nullptr);
    EXPECT_EQ(m_Seen, 1);
}

TEST_F(FrameTest, TheTransportsPendingImageIsRaw) {
    ZelImage* image = Deliver(1);
    IZelCameraCommon* common = m_Camera.get();
    EXPECT_EQ(common->GetPendingImage(), image);
    EXPECT_EQ(image->w, 16u);
    EXPECT_TRUE(common->ReleaseImage(image));
    EXPECT_FALSE(common->ReleaseImage(nullptr));
    EXPECT_FALSE(common->SetPendingImage(nullptr));
    common->FillImageInfo(nullptr);
}

// The notification comes before the image callback of the same frame.
TEST_F(FrameTest, StoppingOrClosingInTheNotificationIsTheLastCallback) {
    for (const bool close : {false, true}) {
        ASSERT_EQ(m_Camera->StartCommon(), 0);
        m_Seen = 0;
        m_Camera->SetImageCallback(CountImage, this);
        const ZelImageNotificationCallback stop = [](int, void* camera) { static_cast<ZelCamera*>(camera)->Stop(); };
        const ZelImageNotificationCallback end = [](int, void* camera) { static_cast<ZelCamera*>(camera)->Close(); };
        m_Camera->SetImageNotificationCallback(close ? end : stop, static_cast<ZelCamera*>(m_Camera.get()));
        Deliver(1);
        EXPECT_EQ(m_Seen, 0);
        EXPECT_EQ(Next() != nullptr, !close);
    }
}

// The transport's thread delivers while two application threads take frames in both ways.
TEST_F(FrameTest, ThreadsShareFramesWithoutLosingARecord) {
    ASSERT_TRUE(m_Camera->SetImageCallback([](ZelImage*, void*) {}, nullptr));
    std::atomic<bool> running{true};
    std::atomic<int> bad{0};
    const auto consume = [&](bool newest) {
        while (running) {
            ZelImage* image = newest ? m_Camera->GetLastPendingImage() : Next();
            if (!image) continue;
            if (image->w != 8 || image->pixels[1] != 20) ++bad;
            if (!m_Camera->FreeImage(image)) ++bad;
        }
    };
    std::thread first(consume, false), second(consume, true);
    for (unsigned n = 0; n < 2000; ++n) Deliver(n);
    running = false;
    first.join();
    second.join();
    EXPECT_EQ(bad, 0);
    m_Camera->FreeAllInUseImages();
    for (int i = 0; i < 3; ++i) EXPECT_NE(m_Camera->GetFreeImage(), nullptr) << "no record was lost";
    EXPECT_EQ(m_Camera->GetFreeImage(), nullptr);
}

}  // namespace
}  // namespace zel::test
