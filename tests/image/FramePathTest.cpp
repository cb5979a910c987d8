// The steps of a frame in their order, on the records of a pool: mono and color, and frames at a scratchpad callback.
#include <gmock/gmock.h>

#include "image/ZelCameraControlImpl.h"
#include "include/ZelCamera.h"
#include "tests/image/Record.h"
#include "tests/support/PageReservations.h"

namespace zel::test {
namespace {

using Path = ZelCameraControlImpl::Path;

// 6 x 4 pixels of 14 bits, phase 1: the top-left pixel belongs to channel 2.
struct FramePathTest : testing::Test {
    FramePathTest() { Begin(); }
    void Begin() {
        m_Path.SetGeometry(m_Geometry);
        ASSERT_EQ(m_Path.UpdateImagePool(8), 0);
        m_Path.Pool().FreeAllInUseImages();
    }
    // A frame that has arrived; its samples count up from 100.
    FrameLease Arrive(unsigned step = 10) {
        const FrameLease frame = m_Path.GetFreeImageImpl();
        std::ranges::copy(Counting(frame->num_pixels, 100, step), frame->pixels);
        return frame;
    }
    ZelImageInternal* Processed(const FrameLease& frame) {
        EXPECT_TRUE(m_Path.PostProcessOnce(frame, Path::kColor));
        return frame.image;
    }
    FrameGeometry m_Geometry{.packed = false,
                             .cuts_region = true,
                             .keeps_full_size = true,
                             .width = 6,
                             .height = 4,
                             .bit_depth = 14,
                             .bytes_per_pixel = 2,
                             .cfa_phase = 1,
                             .roi = {0, 0, 6, 4, 1, 1}};
    ZelCameraControlImpl m_Path{""};
};

TEST_F(FramePathTest, ARegionBeginsAtItsOwnPlaceInTheMosaic) {
    for (const auto& [by_size, x, y, phase] : {std::array{0u, 1u, 0u, 3u}, {1, 0, 1, 4}, {0, 0, 1, 4}, {1, 1, 1, 2}}) {
        m_Geometry.region_is_size = by_size;
        m_Geometry.roi = {x, y, 4, 2, 1, 1};
        Begin();
        const ZelImageInternal* image = Processed(Arrive());
        EXPECT_EQ(Picture(*image), Demosaiced(*image, static_cast<int>(phase))) << image->w << " x " << image->h;
    }
}

// On purpose: one factor of 1 keeps the color stages going, whatever the message says.
TEST_F(FramePathTest, OnlyBothBinningFactorsTogetherSwitchColorOff) {
    for (const auto& [bx, by, color] : {std::tuple(2u, 1u, true), {1u, 2u, true}, {2u, 2u, false}}) {
        m_Geometry.roi.XBin = bx;
        m_Geometry.roi.YBin = by;
        Begin();
        const ZelImageInternal* image = Processed(Arrive());
        EXPECT_EQ(image->w, 6u) << "color frames are not binned";
        EXPECT_EQ(Picture(*image) == Demosaiced(*image, 1), color);
    }
}

// What a frame needs is there when the start has ended; who takes raw frames of a color camera pays for no pictures.
TEST_F(FramePathTest, AStartMakesAllThatFramesNeed) {
    const long long before = platform::LivePageReservations();
    for (const auto& [taps, packed, color] :
         {std::tuple(1, false, true), {2, true, false}, {4, false, false}, {4, true, false}, {1, false, false}}) {
        SCOPED_TRACE(testing::Message() << taps << " taps, packed " << packed << ", color " << color);
        m_Geometry.taps = taps;
        m_Geometry.packed = packed;
        ZelCameraControlImpl path("");
        path.SetGeometry(m_Geometry);
        ASSERT_EQ(path.UpdateImagePool(8, color), 0);
        const long long made = platform::LivePageReservations();
        EXPECT_EQ(made - before, 1 + 8 + (color ? 8 : 0) + (taps == 4 ? 1 : 0) + (packed ? 1 : 0));
        for (int i = 0; i < 8; ++i) {
            const FrameLease frame = path.GetFreeImageImpl();
            EXPECT_TRUE(path.PostProcessOnce(frame, color ? Path::kColor : Path::kMonochrome));
        }
        EXPECT_EQ(platform::LivePageReservations(), made);
        EXPECT_EQ(path.ColorExpected(), color);
    }
}

TEST_F(FramePathTest, APictureOfAnEarlierFrameIsNotThisFrames) {
    for (int i = 0; i < 8; ++i) Processed(Arrive());
    m_Path.Pool().FreeAllInUseImages();
    const FrameLease frame = Arrive();
    EXPECT_TRUE(m_Path.PostProcessOnce(frame, Path::kMonochrome));
    EXPECT_EQ(frame->color_size_in_bytes, 0u) << "taken as a raw frame before it arrived in color";
}

// What a callback does to the frame: the planes are the picture that comes next, unless it asks for `pixels` again.
TEST_F(FramePathTest, AScratchpadsChangesAreUsed) {
    for (const int again : {0, 1}) {
        m_Path.SetScratchpad(
            [](ZelColorImage* image, void* context) {
                static_cast<ZelImageInternal*>(image)->color_planes.planes[2][0] = 7;
                image->pixels[0] = 3000;
                return *static_cast<const int*>(context);
            },
            const_cast<int*>(&again));
        const FrameLease frame = Arrive();
        Words expected = Demosaiced(*frame.image, 1);
        Processed(frame);
        expected[2] = 7;
        if (again) expected = Demosaiced(*frame.image, 1);
        EXPECT_EQ(Picture(*frame.image), expected) << again;
        EXPECT_EQ(expected[2], again ? 3000 : 7);
    }
}

// What a transport or a callback writes into a record's geometry reaches nothing outside the buffers.
TEST_F(FramePathTest, GeometryThatDoesNotFitTheBuffers) {
    m_Geometry.packed = true;
    m_Geometry.taps = 2;
    m_Geometry.width = m_Geometry.roi.XPixels = 300;
    m_Geometry.height = m_Geometry.roi.YPixels = 200;
    Begin();
    for (int i = 0; i < 8; ++i) Processed(Arrive());
    m_Path.Pool().FreeAllInUseImages();
    // A larger frame, packed, fits the buffer; unpacked it asks for another one.
    for (unsigned i = 0; i < 8; ++i) {
        const FrameLease frame = Arrive(i);
        frame->h = 266;
        frame->num_pixels = frame->w * frame->h;
        Processed(frame);
        EXPECT_TRUE(Picture(*frame.image) == Demosaiced(*frame.image, 1)) << i;
    }
    m_Geometry.taps = 1;
    Begin();
    m_Path.SetScratchpad(
        [](ZelColorImage* record, void*) {
            record->w = record->h = record->num_pixels = record->size_in_bytes = 50000;
            record->color_pixels = nullptr;
            return 1;
        },
        nullptr);
    EXPECT_EQ(Processed(Arrive())->color_size_in_bytes, 300u * 200 * 6);
}

}  // namespace
}  // namespace zel::test
