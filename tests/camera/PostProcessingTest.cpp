// The post-processing steps on small frames that can be checked by eye.
#include <gmock/gmock.h>

#include <cstring>
#include <numeric>
#include <random>

#include "image/ZelCameraControlImpl.h"
#include "kernels/Kernels.h"
#include "platform/Memory.h"

namespace zel::test {
namespace {

using Samples = std::vector<std::uint16_t>;
constexpr int kCameraLink = 3, kEBus = 4, kUsb = 5;

class Processor : public ZelCameraControlImpl {
  public:
    Processor() : ZelCameraControlImpl("") {}
    int m_Type = kUsb;

  protected:
    int TransportInterfaceType() override { return m_Type; }
};

class PostProcessingTest : public testing::Test {
  protected:
    // A pool of one record of w * h samples; `taps` as the sensor has them.
    ZelImageInternal* Frame(unsigned w, unsigned h, const Samples& content, int taps = 1, unsigned bits = 12) {
        FrameGeometry geometry;
        geometry.width = w;
        geometry.height = h;
        geometry.bit_depth = bits;
        geometry.bytes_per_pixel = 2;
        geometry.taps = taps;
        geometry.roi = {0, 0, w, h, 1, 1};
        m_Processor.SetGeometry(geometry);
        EXPECT_EQ(m_Processor.UpdateImagePool(1), 0);
        m_Processor.Pool().FreeAllInUseImages();
        ZelImageInternal* image = m_Processor.Pool().GetFreeImage();
        m_Processor.Pool().RestoreGeometry(image);
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
    Processor m_Processor;
};

TEST_F(PostProcessingTest, TwoTapsMeetInTheMiddle) {
    ZelImageInternal* image = Frame(5, 2, {0, 1, 2, 3, 4, 10, 11, 12, 13, 14}, 2);
    EXPECT_TRUE(m_Processor.PostProcessTapBalance(image));
    EXPECT_EQ(Content(image), (Samples{0, 2, 4, 3, 1, 10, 12, 14, 13, 11}));
}

TEST_F(PostProcessingTest, FourTapsAreTheQuadrants) {
    // Groups of top left, top right, bottom left, bottom right.
    ZelImageInternal* image = Frame(4, 4, Counting(16), 4);
    EXPECT_TRUE(m_Processor.PostProcessTapBalance(image));
    EXPECT_EQ(Content(image), (Samples{0, 4, 5, 1, 8, 12, 13, 9, 10, 14, 15, 11, 2, 6, 7, 3}));
}

TEST_F(PostProcessingTest, FourTapsWithoutScratchChangeNothing) {
    ZelImageInternal* image = Frame(4, 2, Counting(8), 4);
    m_Processor.ReleaseScratchBuffers();
    EXPECT_EQ(m_Processor.ScratchBufferCount(), 0);
    EXPECT_FALSE(m_Processor.PostProcessTapBalance(image));
    EXPECT_EQ(Content(image), Counting(8));
    EXPECT_TRUE(m_Processor.PostProcessImage(image)) << "the frame is delivered";
}

TEST_F(PostProcessingTest, AFourTapFrameOfOneRowIsOverwrittenByTheScratch) {
    ZelImageInternal* image = Frame(4, 1, {5, 6, 7, 8}, 4);
    EXPECT_TRUE(m_Processor.PostProcessTapBalance(image));
    EXPECT_EQ(Content(image), (Samples{0, 0, 0, 0}));
}

TEST_F(PostProcessingTest, AFourTapFrameOfOddSizeKeepsWhatTheScratchHeldWhereNoTapReads) {
    ZelImageInternal* image = Frame(3, 3, Counting(9), 4);
    EXPECT_TRUE(m_Processor.PostProcessTapBalance(image));
    EXPECT_EQ(Content(image), (Samples{0, 0, 1, 0, 0, 0, 2, 0, 3}));
}

// 0x101, 0x102, … packed.
TEST_F(PostProcessingTest, PackedFourTapFramesAreTheQuadrantsToo) {
    m_Processor.m_Type = kEBus;
    ZelImageInternal* image = Frame(2, 2, {}, 4);
    const unsigned char packed[6] = {0x10, 0x21, 0x10, 0x10, 0x43, 0x10};
    std::memcpy(image->pixels, packed, sizeof packed);
    EXPECT_TRUE(m_Processor.PostProcessTapBalance(image));
    EXPECT_EQ(Content(image), (Samples{0x101, 0x102, 0x103, 0x104}));
    m_Processor.ReleaseScratchBuffers();
    m_Processor.Pool().RestoreGeometry(image);
    std::memcpy(image->pixels, packed, sizeof packed);
    EXPECT_FALSE(m_Processor.PostProcessTapBalance(image)) << "unpacked, but there is no scratch to reorder in";
    EXPECT_EQ(Content(image), (Samples{0x101, 0x102, 0x103, 0x104}));
}

TEST_F(PostProcessingTest, EBusFramesAreUnpackedIntoASpareBuffer) {
    m_Processor.m_Type = kEBus;
    ZelImageInternal* image = Frame(2, 1, {}, 2);
    const unsigned char packed[3] = {0x12, 0xB3, 0xA9};
    std::memcpy(image->pixels, packed, sizeof packed);
    const auto* before = image->pixels;
    EXPECT_TRUE(m_Processor.PostProcessTapBalance(image));
    EXPECT_EQ(Content(image), (Samples{0x123, 0xA9B}));
    EXPECT_NE(image->pixels, before);
    EXPECT_EQ(image->buffer_size, 4u);
    for (int i = 0; i < 5; ++i) m_Processor.PostProcessTapBalance(image);
    const long long live = platform::LivePageReservations();
    m_Processor.PostProcessTapBalance(image);
    EXPECT_EQ(platform::LivePageReservations(), live) << "no memory from the system per frame";
}

// A transport may hand over less than the full frame: the next frame finds the record's buffer as large as ever.
TEST_F(PostProcessingTest, ASmallerPackedFrameLeavesTheRecordItsBuffer) {
    m_Processor.m_Type = kEBus;
    for (const auto& [w, h, taps] : {std::array{0u, 4u, 2u}, {2u, 2u, 2u}, {3u, 1u, 2u}, {2u, 2u, 4u}, {0u, 0u, 4u}}) {
        ZelImageInternal* image = Frame(4, 4, Counting(16), static_cast<int>(taps));
        image->w = w;
        image->h = h;
        m_Processor.PostProcessTapBalance(image);
        EXPECT_NE(image->pixels, nullptr);
        EXPECT_EQ(image->buffer_size, 32u) << w << " x " << h;
        EXPECT_EQ(image->size_in_bytes, 2 * w * h);
        m_Processor.Pool().ReleaseImage(image);
    }
}

TEST_F(PostProcessingTest, AFailedUnpackAllocationKeepsThePackedFrame) {
    m_Processor.m_Type = kEBus;
    ZelImageInternal* image = Frame(2, 1, {7, 9}, 2);
    platform::SetPageReservationLimit(0);
    EXPECT_TRUE(m_Processor.PostProcessTapBalance(image));
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
    m_Processor.m_Type = crop.type;
    ZelImageInternal* image = Frame(4, 3, Counting(12));
    EXPECT_EQ(m_Processor.PostProcessSubImage(image, crop.c0, crop.r0, crop.c1, crop.r1), crop.answer);
    EXPECT_EQ(image->w, crop.w);
    EXPECT_EQ(image->h, crop.h);
    EXPECT_EQ(Content(image), crop.content.empty() ? Counting(12) : crop.content);
    EXPECT_EQ(image->num_pixels, crop.num_pixels);
}

INSTANTIATE_TEST_SUITE_P(, CropTest,
                         testing::Values(Crop{"Whole", kUsb, 0, 0, 4, 3, true, 4, 3, {}, 12},
                                         Crop{"Rows", kUsb, 0, 1, 4, 3, true, 4, 2, {4, 5, 6, 7, 8, 9, 10, 11}, 12},
                                         Crop{"Columns", kCameraLink, 1, 0, 3, 3, true, 2, 3, {1, 2, 5, 6, 9, 10}, 12},
                                         Crop{"Both", kUsb, 2, 1, 4, 2, true, 2, 1, {6, 7}, 12},
                                         Crop{"BeyondTheRight", kUsb, 3, 0, 5, 3, false, 4, 3, {}, 12},
                                         Crop{"BeyondTheBottom", kUsb, 0, 2, 4, 4, false, 4, 3, {}, 12},
                                         Crop{"Backwards", kUsb, 3, 2, 2, 1, true, 4, 3, {}, 12},
                                         Crop{"BackwardsColumnsOnly", kUsb, 3, 0, 2, 1, false, 4, 3, {}, 12},
                                         Crop{"EBus", kEBus, 1, 1, 2, 2, true, 2, 2, {5, 6, 9, 10}, 4},
                                         Crop{"EBusSameWidth", kEBus, 0, 1, 4, 1, false, 4, 3, {}, 12},
                                         Crop{"EBusOutside", kEBus, 3, 0, 2, 3, false, 4, 3, {}, 12},
                                         Crop{"EBusHuge", kEBus, 0xFFFFFFFF, 0, 2, 1, false, 4, 3, {}, 12},
                                         Crop{"UnknownLink", 9, 1, 1, 2, 2, true, 4, 3, {}, 12}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(PostProcessingTest, BinningSumsAndDropsWhatIsLeftOver) {
    ZelImageInternal* image = Frame(4, 1, {10, 20, 30, 40});
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, 1, 2));
    EXPECT_EQ(Content(image), (Samples{30, 70}));
    image = Frame(1, 4, {10, 20, 30, 40});
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, 2, 0));
    EXPECT_EQ(Content(image), (Samples{20, 70})) << "the first sample of a column is lost";
    image = Frame(5, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, 2, 2));
    EXPECT_EQ(Content(image), (Samples{13, 17}));
    EXPECT_EQ(image->num_pixels, 15u) << "kept on this kind of link";
}

TEST_F(PostProcessingTest, BinningClampsToTheBitDepth) {
    ZelImageInternal* image = Frame(4, 1, {3000, 3000, 4095, 4095});
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, 1, 2));
    EXPECT_EQ(Content(image), (Samples{4095, 4095}));
    // The first sample above half the ceiling counts as half the ceiling.
    image = Frame(2, 1, {3000, 5});
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, 1, 2));
    EXPECT_EQ(Content(image), (Samples{2052}));
    image = Frame(4, 1, {1, 2, 60000, 60000}, 1, 16);
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, 1, 2));
    EXPECT_EQ(Content(image), (Samples{3, 65535}));
}

TEST_F(PostProcessingTest, BinningBounds) {
    m_Processor.m_Type = kEBus;
    ZelImageInternal* image = Frame(4, 2, Counting(8));
    EXPECT_FALSE(m_Processor.PostProcessBinning(nullptr, 2, 2));
    EXPECT_FALSE(m_Processor.PostProcessBinning(image, 129, 1));
    EXPECT_FALSE(m_Processor.PostProcessBinning(image, 1, 129));
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, -1, 0));
    image->bytes_per_pixel = 1;
    EXPECT_FALSE(m_Processor.PostProcessBinning(image, 2, 2));
    EXPECT_EQ(Content(image), Counting(8));
    image->bytes_per_pixel = 2;
    EXPECT_TRUE(m_Processor.PostProcessBinning(image, 128, 128)) << "nothing is left of it";
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
        EXPECT_TRUE(m_Processor.PostProcessImage(image));
        EXPECT_EQ(Content(image), outputs[i]) << i;
    }
    EXPECT_FALSE(m_Processor.PostProcessAverageImage(nullptr));
    ZelImageInternal* larger = Frame(3, 1, {7, 8, 9});
    EXPECT_FALSE(m_Processor.PostProcessAverageImage(larger));
    EXPECT_EQ(Content(larger), (Samples{7, 8, 9}));
}

TEST_F(PostProcessingTest, GeometryThatDoesNotFitTheBufferTouchesNothing) {
    for (const int type : {kCameraLink, kEBus}) {
        for (const int taps : {1, 2, 4}) {
            m_Processor.m_Type = type;
            ZelImageInternal* image = Frame(4, 4, Counting(16), taps);
            image->w = 4000;
            image->h = 4000;
            image->num_pixels = image->w * image->h;
            image->size_in_bytes = image->num_pixels * 2;
            EXPECT_EQ(m_Processor.PostProcessTapBalance(image), taps == 1);
            EXPECT_FALSE(m_Processor.PostProcessSubImage(image, 1, 1, 3, 3));
            EXPECT_FALSE(m_Processor.PostProcessBinning(image, 2, 2));
            image->w = image->h = 4;
            if (taps == 1) {
                EXPECT_EQ(Content(image), Counting(16));
            }
        }
    }
}

// Camera Link and USB records keep the full frame's size: what binning leaves behind its result can be seen.
TEST_F(PostProcessingTest, BinningLeavesZerosBehindItsResult) {
    for (const auto& [w, h, bx, by] : std::vector<std::array<unsigned, 4>>{
             {64, 6, 2, 2}, {64, 6, 1, 3}, {66, 4, 3, 1}, {67, 7, 2, 3}, {5, 3, 4, 1}, {64, 2, 1, 128}}) {
        for (const int type : {kUsb, kEBus}) {
            m_Processor.m_Type = type;
            ZelImageInternal* image = Frame(w, h, Counting(w * h));
            Samples expected = Counting(w * h);
            kernels::scalar::Bin(expected, w, h, bx, by, 4095);
            EXPECT_TRUE(m_Processor.PostProcessBinning(image, static_cast<int>(by), static_cast<int>(bx)));
            const std::size_t seen = type == kUsb ? w * h : image->num_pixels;
            EXPECT_EQ(Samples(image->pixels, image->pixels + seen),
                      Samples(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(seen)))
                << w << " x " << h << " by " << bx << " x " << by;
        }
    }
}

// What the application sees of a frame.
struct Outcome {
    unsigned w, h, num_pixels, size_in_bytes;
    Samples content;
    bool operator==(const Outcome&) const = default;
};

class VariantTest : public PostProcessingTest {
  protected:
    // Three random frames of one random set-up through the whole of post-processing.
    std::vector<Outcome> Process(unsigned seed, kernels::Variant variant) {
        kernels::ForceKernels(kernels::FindKernels(variant));
        std::mt19937 random(seed);
        const auto number = [&](unsigned low, unsigned high) {
            return std::uniform_int_distribution<unsigned>(low, high)(random);
        };
        constexpr int kTypes[] = {kCameraLink, kEBus, kUsb, 9};
        constexpr int kTaps[] = {1, 2, 3, 4};
        constexpr unsigned kFactors[] = {0, 1, 1, 2, 3, 4, 128, 129};
        Processor processor;
        processor.m_Type = kTypes[number(0, 3)];
        FrameGeometry geometry;
        geometry.width = number(1, 150);
        geometry.height = number(1, 12);
        geometry.bit_depth = number(8, 16);
        geometry.bytes_per_pixel = 2;
        geometry.taps = kTaps[number(0, 3)];
        geometry.roi = {
            number(0, 20),          number(0, 4),          number(0, geometry.width), number(0, geometry.height),
            kFactors[number(0, 7)], kFactors[number(0, 7)]};
        processor.SetGeometry(geometry);
        processor.SetAveraging(static_cast<int>(number(0, 3)), false);
        EXPECT_EQ(processor.UpdateImagePool(1), 0);
        EXPECT_EQ(processor.UpdateImageAvgBuffer(), 0);
        std::vector<Outcome> outcomes;
        ZelImageInternal* image = processor.Pool().GetFreeImage();
        for (int frame = 0; frame < 3; ++frame) {
            processor.Pool().RestoreGeometry(image);
            for (unsigned i = 0; i < image->buffer_size / 2; ++i)
                image->pixels[i] = static_cast<std::uint16_t>(random());
            EXPECT_TRUE(processor.PostProcessImage(image));
            outcomes.push_back({image->w, image->h, image->num_pixels, image->size_in_bytes,
                                Samples(image->pixels, image->pixels + image->size_in_bytes / 2)});
        }
        kernels::ForceKernels(nullptr);
        return outcomes;
    }
};

TEST_F(VariantTest, EveryVariantGivesTheSameFrames) {
    if (!kernels::FindKernels(kernels::Variant::kAvx2)) GTEST_SKIP() << "this machine has no second variant";
    for (unsigned seed = 1; seed <= 500; ++seed) {
        ASSERT_EQ(Process(seed, kernels::Variant::kAvx2), Process(seed, kernels::Variant::kScalar)) << "seed " << seed;
    }
}

}  // namespace
}  // namespace zel::test
