// Frames from the pool to the transport to the application and back.
#include <numeric>
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
    // What a transport does with one frame; every sample is `value`.
    ZelImage* Deliver(unsigned number, unsigned short value = 10) {
        ZelImage* image = m_Camera->GetFreeImage();
        if (!image) return nullptr;
        std::fill_n(image->pixels, image->w * image->h, value);
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
    EXPECT_EQ(image->image_number, 4u);
    EXPECT_EQ(image->w, 8u) << "binned by two";
    EXPECT_EQ(image->pixels[1], 20);
    EXPECT_EQ(image->bit_depth, 12u);
    EXPECT_EQ(image->x_pixels, 16u);
    EXPECT_EQ(image->x_bin, 2u);
    EXPECT_EQ(image->exposure_time_us, 700u);
    const auto* stamps = static_cast<ZelColorImage*>(image);
    EXPECT_EQ(stamps->queue_delay_ms, 30u);
    EXPECT_EQ(stamps->hand_over_time_ms - stamps->arrival_time_ms, 30u);
    EXPECT_EQ(stamps->hand_over_delta_ms, 0u);
    EXPECT_TRUE(m_Camera->FreeImage(image));
    EXPECT_FALSE(m_Camera->FreeImage(image)) << "given back already";
    EXPECT_FALSE(m_Camera->FreeImage(nullptr));
    EXPECT_EQ(Next(), nullptr);
}

TEST_F(FrameTest, ARecordComesBackWithItsFullGeometry) {
    for (unsigned round = 0; round < 7; ++round) {
        Deliver(round);
        ZelImage* image = Next();
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->w, 8u);
        m_Camera->FreeImage(image);
    }
}

TEST_F(FrameTest, OldestFirstOrNewestOnly) {
    for (unsigned n = 0; n < 3; ++n) Deliver(n);
    EXPECT_EQ(m_Camera->GetFreeImage(), nullptr) << "all three records wait";
    ZelImage* oldest = Next();
    EXPECT_EQ(oldest->image_number, 0u);
    ZelImage* newest = m_Camera->GetLastPendingImage();
    EXPECT_EQ(newest->image_number, 2u);
    EXPECT_EQ(newest->w, 8u) << "processed as well";
    EXPECT_EQ(Next(), nullptr);
    EXPECT_EQ(m_Camera->GetLastPendingImage(), nullptr);
    ASSERT_NE(Deliver(3), nullptr);
    EXPECT_TRUE(m_Camera->FreeAllPendingImages());
    EXPECT_EQ(Next(), nullptr);
}

TEST_F(FrameTest, TheCallbackSeesEachFrameProcessedExactlyOnce) {
    ASSERT_TRUE(m_Camera->SetImageCallback(CountImage, this));
    Deliver(1, 3);
    EXPECT_EQ(m_Seen, 1);
    EXPECT_EQ(m_SeenWidth, 8u);
    EXPECT_FALSE(m_FreedInside) << "the record is pending, not the application's, during the callback";
    ZelImage* image = Next();
    EXPECT_EQ(image->w, 8u) << "not binned a second time";
    EXPECT_EQ(image->pixels[1], 6);
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

TEST_F(FrameTest, FreeAllInUseTakesEverythingBack) {
    Deliver(0);
    m_Camera->GetFreeImage();
    m_Camera->FreeAllInUseImages();
    for (int i = 0; i < 3; ++i) EXPECT_NE(m_Camera->GetFreeImage(), nullptr);
}

TEST_F(FrameTest, CloseReleasesThePool) {
    Deliver(0);
    EXPECT_TRUE(m_Camera->Close());
    EXPECT_EQ(m_Camera->GetFreeImage(), nullptr);
    EXPECT_EQ(Next(), nullptr);
}

// The notification comes before the image callback of the same frame.
TEST_F(FrameTest, StoppingOrClosingInTheNotificationIsTheLastCallback) {
    for (const bool close : {false, true}) {
        ASSERT_EQ(m_Camera->StartCommon(), 0);
        m_Seen = 0;
        m_Camera->SetImageCallback(CountImage, this);
        m_Camera->SetImageNotificationCallback(
            [](int, void* camera) { static_cast<ZelCameraControl*>(camera)->Stop(); }, m_Camera.get());
        if (close) {
            m_Camera->SetImageNotificationCallback(
                [](int, void* camera) { static_cast<ZelCameraControl*>(camera)->Close(); }, m_Camera.get());
        }
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
