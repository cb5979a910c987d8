// The post-processing steps on small frames that can be checked by eye.
#include <gmock/gmock.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <numeric>
#include <random>

#include "image/ZelCameraControlImpl.h"
#include "platform/Clock.h"
#include "tapbalance/TapBalance.h"
#include "tests/support/PageReservations.h"

namespace zel::test {
namespace {

using Samples = std::vector<std::uint16_t>;
constexpr int kCameraLink = 3, kEBus = 4, kUsb = 5;

class Processor : public ZelCameraControlImpl {
  public:
    Processor() : ZelCameraControlImpl("") {}
    TapBalance* m_Balance = nullptr;

  protected:
    TapBalance* Taps() override { return m_Balance; }
};

class PostProcessingTest : public testing::Test {
  protected:
    // A pool of one record of w * h samples; `taps` as the sensor has them.
    ZelImageInternal* Frame(unsigned w, unsigned h, const Samples& content, int taps = 1, int mhz = 20) {
        FrameGeometry geometry;
        geometry.interface_type = m_Type;
        geometry.width = w;
        geometry.height = h;
        geometry.bit_depth = 12;
        geometry.readout_mhz = mhz;
        geometry.bytes_per_pixel = 2;
        geometry.taps = taps;
        geometry.roi = {0, 0, w, h, 1, 1};
        m_Processor.SetGeometry(geometry);
        EXPECT_EQ(m_Processor.UpdateImagePool(1), 0);
        m_Processor.Pool().FreeAllInUseImages();
        ZelImageInternal* image = m_Processor.GetFreeImageImpl().image;
        std::copy(content.begin(), content.end(), image->pixels);
        return image;
    }
    static Samples Content(const ZelImageInternal* image) {
        return Samples(image->pixels, image->pixels + image->w * image->h);
    }
    static Samples Counting(unsigned count) {
        Samples samples(count);
        std::iota(samples.begin(), samples.end(), std::uint16_t{0});
        return samples;
    }
    bool TapBalanced(ZelImageInternal* image) {
        const platform::ScopedLock processing(m_Processor.ProcessingLock());
        return m_Processor.PostProcessTapBalance(image, m_Processor.Geometry());
    }
    bool Processed(ZelImageInternal* image) {
        const platform::ScopedLock processing(m_Processor.ProcessingLock());
        return m_Processor.PostProcessImage(image, m_Processor.Geometry());
    }
    bool Averaged(ZelImageInternal* image) {
        const platform::ScopedLock processing(m_Processor.ProcessingLock());
        return m_Processor.PostProcessAverageImage(image);
    }
    Processor m_Processor;
    int m_Type = kUsb;  // of the frames to come
};

// Another thread closes the camera while this one takes a frame: at the first reading of the clock.
TEST_F(PostProcessingTest, AFrameWhosePoolIsReleasedMeanwhileIsNotTouchedAgain) {
    struct ReleasingClock : platform::ClockSource {
        explicit ReleasingClock(Processor& processor) : m_Processor(processor) { platform::SetClockSource(this); }
        ~ReleasingClock() override { platform::SetClockSource(nullptr); }
        std::uint32_t Milliseconds() override {
            m_Processor.ReleaseImagePool();
            return 5;
        }
        void Sleep(std::uint32_t) override {}
        Processor& m_Processor;
    };
    EXPECT_TRUE(m_Processor.Pool().SetPendingImage(Frame(2, 1, {7, 9})));
    const long long with_pool = platform::LivePageReservations();
    {
        ReleasingClock clock(m_Processor);
        const auto frame = m_Processor.GetPendingImageImpl();
        EXPECT_EQ(m_Processor.PostProcessOnce(frame, Processor::Path::kMonochrome), Processor::Outcome::kGone);
        EXPECT_EQ(platform::LivePageReservations(), with_pool) << "as long as somebody has one of its frames";
    }
    EXPECT_LT(platform::LivePageReservations(), with_pool);
}

TEST_F(PostProcessingTest, TwoTapsMeetInTheMiddle) {
    ZelImageInternal* image = Frame(5, 2, {0, 1, 2, 3, 4, 10, 11, 12, 13, 14}, 2);
    EXPECT_TRUE(TapBalanced(image));
    EXPECT_EQ(Content(image), (Samples{0, 2, 4, 3, 1, 10, 12, 14, 13, 11}));
}

TEST_F(PostProcessingTest, FourTapsAreTheQuadrantsAndWithoutScratchNothingChanges) {
    // Groups of top left, top right, bottom left, bottom right.
    ZelImageInternal* image = Frame(4, 4, Counting(16), 4);
    EXPECT_TRUE(TapBalanced(image));
    EXPECT_EQ(Content(image), (Samples{0, 4, 5, 1, 8, 12, 13, 9, 10, 14, 15, 11, 2, 6, 7, 3}));
    image = Frame(4, 2, Counting(8), 4);
    m_Processor.ReleaseScratchBuffers();
    EXPECT_EQ(m_Processor.ScratchBufferCount(), 0);
    EXPECT_FALSE(TapBalanced(image));
    EXPECT_EQ(Content(image), Counting(8));
    EXPECT_TRUE(Processed(image)) << "the frame is delivered";
}

TEST_F(PostProcessingTest, AFourTapFrameOfOddSizeKeepsWhatTheScratchHeldWhereNoTapReads) {
    ZelImageInternal* image = Frame(3, 3, Counting(9), 4);
    EXPECT_TRUE(TapBalanced(image));
    EXPECT_EQ(Content(image), (Samples{0, 0, 1, 0, 0, 0, 2, 0, 3}));
}

// Camera Link and USB records keep the full frame's size: what binning leaves behind its result can be seen.
TEST_F(PostProcessingTest, BinningLeavesZerosBehindItsResult) {
    for (const auto& [w, h, bx, by] : std::vector<std::array<unsigned, 4>>{
             {64, 6, 2, 2}, {64, 6, 1, 3}, {66, 4, 3, 1}, {67, 7, 2, 3}, {5, 3, 4, 1}, {64, 2, 1, 128}}) {
        for (const int type : {kUsb, kEBus}) {
            m_Type = type;
            ZelImageInternal* image = Frame(w, h, Counting(w * h));
            Samples expected = Counting(w * h);
            kernels::scalar::Bin(expected, w, h, bx, by, 4095);
            EXPECT_TRUE(m_Processor.PostProcessBinning(image, type, static_cast<int>(by), static_cast<int>(bx)));
            const std::size_t seen = type == kUsb ? w * h : image->num_pixels;
            EXPECT_EQ(Samples(image->pixels, image->pixels + seen),
                      Samples(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(seen)))
                << w << " x " << h << " by " << bx << " x " << by;
        }
    }
}

// 0x101, 0x102, … packed.
TEST_F(PostProcessingTest, PackedFourTapFramesAreTheQuadrantsToo) {
    m_Type = kEBus;
    ZelImageInternal* image = Frame(2, 2, {}, 4);
    const unsigned char packed[6] = {0x10, 0x21, 0x10, 0x10, 0x43, 0x10};
    std::memcpy(image->pixels, packed, sizeof packed);
    EXPECT_TRUE(TapBalanced(image));
    EXPECT_EQ(Content(image), (Samples{0x101, 0x102, 0x103, 0x104}));
    m_Processor.ReleaseScratchBuffers();
    m_Processor.Pool().RestoreGeometry(image);
    std::memcpy(image->pixels, packed, sizeof packed);
    EXPECT_FALSE(TapBalanced(image)) << "unpacked, but there is no scratch to reorder in";
    EXPECT_EQ(Content(image), (Samples{0x101, 0x102, 0x103, 0x104}));
}

TEST_F(PostProcessingTest, AFourTapFrameOfOneRowIsOverwrittenByTheScratch) {
    ZelImageInternal* image = Frame(4, 1, {5, 6, 7, 8}, 4);
    EXPECT_TRUE(TapBalanced(image));
    EXPECT_EQ(Content(image), (Samples{0, 0, 0, 0}));
}

TEST_F(PostProcessingTest, EBusFramesAreUnpackedIntoASpareBuffer) {
    m_Type = kEBus;
    ZelImageInternal* image = Frame(2, 1, {}, 2);
    const unsigned char packed[3] = {0x12, 0xB3, 0xA9};
    std::memcpy(image->pixels, packed, sizeof packed);
    const auto* before = image->pixels;
    EXPECT_TRUE(TapBalanced(image));
    EXPECT_EQ(Content(image), (Samples{0x123, 0xA9B}));
    EXPECT_NE(image->pixels, before);
    EXPECT_EQ(image->buffer_size, 4u);
    for (int i = 0; i < 5; ++i) TapBalanced(image);
    const long long live = platform::LivePageReservations();
    TapBalanced(image);
    EXPECT_EQ(platform::LivePageReservations(), live) << "no memory from the system per frame";
}

// A transport may hand over less than the full frame: the next frame finds the record's buffer as large as ever.
TEST_F(PostProcessingTest, ASmallerPackedFrameLeavesTheRecordItsBuffer) {
    m_Type = kEBus;
    for (const auto& [w, h, taps] : {std::array{0u, 4u, 2u}, {2u, 2u, 2u}, {3u, 1u, 2u}, {2u, 2u, 4u}, {0u, 0u, 4u}}) {
        ZelImageInternal* image = Frame(4, 4, Counting(16), static_cast<int>(taps));
        image->w = w;
        image->h = h;
        TapBalanced(image);
        EXPECT_NE(image->pixels, nullptr);
        EXPECT_EQ(image->buffer_size, 32u) << w << " x " << h;
        EXPECT_EQ(image->size_in_bytes, 2 * w * h);
        m_Processor.Pool().ReleaseImage(image);
    }
}

TEST_F(PostProcessingTest, AFailedUnpackAllocationKeepsThePackedFrame) {
    m_Type = kEBus;
    ZelImageInternal* image = Frame(2, 1, {7, 9}, 2);
    platform::SetPageReservationLimit(0);
    EXPECT_TRUE(TapBalanced(image));
    platform::SetPageReservationLimit(-1);
    EXPECT_EQ(Content(image), (Samples{7, 9}));
}

struct Crop {
    const char* name;
    int type;
    unsigned c0, r0, c1, r1;
    bool answer;
    unsigned w, h;
    Samples content;  // empty: unchanged
    unsigned num_pixels;
};
class CropTest : public PostProcessingTest, public testing::WithParamInterface<Crop> {};

TEST_P(CropTest, OfAFourByThreeFrame) {
    const Crop& crop = GetParam();
    m_Type = crop.type;
    ZelImageInternal* image = Frame(4, 3, Counting(12));
    EXPECT_EQ(m_Processor.PostProcessSubImage(image, m_Type, crop.c0, crop.r0, crop.c1, crop.r1), crop.answer);
    EXPECT_EQ(image->w, crop.w);
    EXPECT_EQ(image->h, crop.h);
    EXPECT_EQ(Content(image), crop.content.empty() ? Counting(12) : crop.content);
    EXPECT_EQ(image->num_pixels, crop.num_pixels);
}

INSTANTIATE_TEST_SUITE_P(, CropTest,
                         testing::Values(Crop{"Both", kUsb, 2, 1, 4, 2, true, 2, 1, {6, 7}, 12},
                                         Crop{"BeyondTheRight", kUsb, 3, 0, 5, 3, false, 4, 3, {}, 12},
                                         Crop{"Backwards", kUsb, 3, 2, 2, 1, true, 4, 3, {}, 12},
                                         Crop{"EBus", kEBus, 1, 1, 2, 2, true, 2, 2, {5, 6, 9, 10}, 4},
                                         Crop{"EBusSameWidth", kEBus, 0, 1, 4, 1, false, 4, 3, {}, 12},
                                         Crop{"EBusHuge", kEBus, 0xFFFFFFFF, 0, 2, 1, false, 4, 3, {}, 12},
                                         Crop{"UnknownLink", 9, 1, 1, 2, 2, true, 4, 3, {}, 12}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(PostProcessingTest, BinningSumsAndDropsWhatIsLeftOver) {
    ZelImageInternal* image = Frame(4, 1, {10, 20, 30, 40});
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, m_Type, 1, 2));
    EXPECT_EQ(Content(image), (Samples{30, 70}));
    image = Frame(1, 4, {10, 20, 30, 40});
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, m_Type, 2, 0));
    EXPECT_EQ(Content(image), (Samples{20, 70})) << "the first sample of a column is lost";
    image = Frame(5, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, m_Type, 2, 2));
    EXPECT_EQ(Content(image), (Samples{13, 17}));
    EXPECT_EQ(image->num_pixels, 15u) << "kept on this kind of link";
}

TEST_F(PostProcessingTest, BinningClampsToTheBitDepth) {
    ZelImageInternal* image = Frame(4, 1, {3000, 3000, 4095, 4095});
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, m_Type, 1, 2));
    EXPECT_EQ(Content(image), (Samples{4095, 4095}));
    // The first sample above half the ceiling counts as half the ceiling.
    image = Frame(2, 1, {3000, 5});
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, m_Type, 1, 2));
    EXPECT_EQ(Content(image), (Samples{2052}));
}

TEST_F(PostProcessingTest, BinningBounds) {
    m_Type = kEBus;
    ZelImageInternal* image = Frame(4, 2, Counting(8));
    EXPECT_FALSE(m_Processor.PostProcessBinning(nullptr, m_Type, 2, 2));
    EXPECT_FALSE(m_Processor.PostProcessBinning(image, m_Type, 129, 1));
    EXPECT_FALSE(m_Processor.PostProcessBinning(image, m_Type, 1, 129));
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, m_Type, -1, 0));
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, m_Type, 1, 1));
    image->bytes_per_pixel = 1;
    EXPECT_FALSE(m_Processor.PostProcessBinning(image, m_Type, 2, 2));
    EXPECT_EQ(Content(image), Counting(8));
    image->bytes_per_pixel = 2;
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, m_Type, 128, 128)) << "nothing is left of it";
    EXPECT_EQ(image->num_pixels, 0u);
}

TEST_F(PostProcessingTest, AveragesTheLastThreeFrames) {
    m_Processor.SetAveraging(3, false);
    Frame(2, 1, {});
    ASSERT_EQ(m_Processor.UpdateImageAvgBuffer(), 0);
    const Samples inputs[] = {{10, 0}, {21, 1}, {30, 1}, {40, 1}};
    const Samples outputs[] = {{10, 0}, {15, 0}, {20, 0}, {30, 1}};
    for (int i = 0; i < 4; ++i) {
        ZelImageInternal* image = Frame(2, 1, inputs[i]);
        EXPECT_TRUE(Processed(image));
        EXPECT_EQ(Content(image), outputs[i]) << i;
    }
    EXPECT_FALSE(Averaged(nullptr));
    ZelImageInternal* larger = Frame(3, 1, {7, 8, 9});
    EXPECT_FALSE(Averaged(larger));
    EXPECT_EQ(Content(larger), (Samples{7, 8, 9}));
}

TEST_F(PostProcessingTest, GeometryThatDoesNotFitTheBufferTouchesNothing) {
    for (const int type : {kCameraLink, kEBus}) {
        for (const int taps : {1, 2, 4}) {
            m_Type = type;
            ZelImageInternal* image = Frame(4, 4, Counting(16), taps);
            image->w = 4000;
            image->h = 4000;
            image->num_pixels = image->w * image->h;
            image->size_in_bytes = image->num_pixels * 2;
            EXPECT_EQ(TapBalanced(image), taps == 1);
            EXPECT_FALSE(m_Processor.PostProcessSubImage(image, m_Type, 1, 1, 3, 3));
            EXPECT_FALSE(m_Processor.PostProcessBinning(image, m_Type, 2, 2));
            image->w = image->h = 4;
            if (taps == 1) {
                EXPECT_EQ(Content(image), Counting(16));
            }
        }
    }
}

struct Readout {
    const char* name;
    int type, taps;
    unsigned w, h;
    int mhz;
    bool corrected;
};
class TapCorrectionTest : public PostProcessingTest, public testing::WithParamInterface<Readout> {};

TEST_P(TapCorrectionTest, EachQuadrantGoesThroughItsTapsTable) {
    const Readout& readout = GetParam();
    ExchangeLock lock;
    TextProtocol text(nullptr, "", lock);
    TapBalance balance(text, "");
    balance.SetBitsPerPixel(12);
    balance.SetGain(0);
    for (const char* name : {"taps_20MHz.txt", "taps_40MHz.txt"}) {
        // The taps' gains differ, and differ with the level.
        std::ofstream file(name);
        file << "6 " << readout.taps << '\n';
        for (int row = 0; row < 6; ++row) {
            file << row * 300;
            for (int tap = 0; tap < 4; ++tap) file << ' ' << (tap < readout.taps ? 0.9 + 0.04 * tap + 0.005 * row : 0);
            file << '\n';
        }
        file.close();
        EXPECT_TRUE(balance.LoadDataFromMasterFile(name));
        std::remove(name);
    }
    ASSERT_TRUE(balance.Enable(true));
    m_Type = readout.type;
    std::mt19937 random(7);
    Samples content(readout.w * readout.h);
    for (auto& sample : content) sample = static_cast<std::uint16_t>(random() % 4096);
    const auto process = [&](TapBalance* taps) {
        m_Processor.m_Balance = taps;
        ZelImageInternal* image = Frame(readout.w, readout.h, content, readout.taps, readout.mhz);
        EXPECT_TRUE(TapBalanced(image));
        return Content(image);
    };
    const Samples raw = process(nullptr);
    Samples expected = raw;
    const TapTables tables = balance.TablesFor(readout.mhz == 40);
    ASSERT_TRUE(tables);
    for (unsigned i = 0; readout.corrected && i < expected.size(); ++i) {
        const bool left = i % readout.w < readout.w / 2, top = readout.taps == 2 || i / readout.w < readout.h / 2;
        expected[i] = tables.lut[top ? (left ? 0u : 1u) : (left ? 3u : 2u)][raw[i] & 4095];
    }
    EXPECT_EQ(expected != raw, readout.corrected);
    EXPECT_EQ(process(&balance), expected);
}

INSTANTIATE_TEST_SUITE_P(, TapCorrectionTest,
                         testing::Values(Readout{"TwoTaps", kCameraLink, 2, 70, 5, 20, true},
                                         Readout{"TwoTapsPackedOdd", kEBus, 2, 37, 3, 40, true},
                                         Readout{"FourTapsOdd", kCameraLink, 4, 37, 5, 20, true},
                                         Readout{"FourTapsPackedOdd", kEBus, 4, 70, 5, 40, true},
                                         Readout{"OtherReadoutSpeed", kCameraLink, 4, 70, 6, 30, false}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace zel::test
