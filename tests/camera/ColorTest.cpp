// Color at the camera object: what a connection sets up, the settings' way to the pictures, and a scratchpad callback
// that stops its camera.
#include <atomic>
#include <functional>
#include <limits>
#include <thread>

#include "tests/camera/CameraFixture.h"
#include "tests/image/Record.h"

namespace zel::test {
namespace {

using Matrix = std::array<float, 9>;
using Scratchpad = std::function<int(ZelColorImage*)>;

// 6 x 4 pixels of 14 bits, phase 1: the top-left pixel belongs to channel 2.
struct ColorTest : CameraTest {
    ColorTest() {
        m_Table.m_Exceptions.erase(CFA_TYPE);
        m_Table.m_Blocks[CFA_TYPE] = TextBytes("Bayer");
        m_Table.m_Blocks[CCM_OUTPUT_COLOR_SPACE] = TextBytes("CCIR 709");
        m_Table.m_Values[CFA_PHASE] = 1;
        m_Table.m_Values[BITS_PER_PIXEL] = 14;
        for (int i = 0; i < 9; ++i) {
            m_Table.m_Blocks[CCM_1_1 + i] = BytesOf<double>(i == 0 ? 2 : i % 4 == 0);
            m_Table.m_Blocks[DWB_1_1 + i] = BytesOf<double>(i == 1 || i % 4 == 0);
        }
        m_Table.m_Values[H_SIZE] = m_Table.m_Values[H_ROI_PIXELS] = 6;
        m_Table.m_Values[V_SIZE] = m_Table.m_Values[V_ROI_PIXELS] = 4;
        m_Camera->SetImageCallback([](ZelImage*, void*) {}, nullptr);
    }
    void Begin() { ASSERT_TRUE(m_Camera->ConnectCommon() == 0 && m_Camera->StartCommon() == 0); }
    // A frame as the transport delivers it; its samples count up from 100 in tens.
    ZelImage* Deliver() {
        ZelImage* image = m_Camera->GetFreeImage();
        std::ranges::copy(Counting(image->num_pixels, 100, 10), image->pixels);
        m_Camera->FillImageInfo(image);
        EXPECT_TRUE(m_Camera->SetPendingImage(image));
        return image;
    }
    Matrix Transform() {
        Matrix matrix{};
        EXPECT_TRUE(m_Camera->GetColorTransform(matrix.data()));
        return matrix;
    }
    void SetScratchpad(const Scratchpad& scratchpad) {
        m_Scratchpad = scratchpad;
        m_Camera->SetScratchpadCallback(
            [](ZelColorImage* image, void* function) { return (*static_cast<Scratchpad*>(function))(image); },
            &m_Scratchpad);
    }
    Scratchpad m_Scratchpad;
};

TEST_F(ColorTest, APictureIsTheDemosaicedFrameUntilATransformIsSet) {
    for (const auto& [told, phase, bits] : {std::array{1, 1, 16}, {5, 0, 14}}) {  // grey without a phase
        m_Table.m_Values[CFA_PHASE] = told;
        m_Table.m_Values[BITS_PER_PIXEL] = bits;
        ASSERT_EQ(m_Camera->ConnectCommon(), 0);
        // The camera's depth can be asked for before the first start: no bit is shifted out.
        ASSERT_TRUE(m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, bits));
        ASSERT_EQ(m_Camera->StartCommon(), 0);
        const ZelImage* image = Deliver();
        EXPECT_EQ(m_Camera->GetPendingColorImage(), image);
        EXPECT_EQ(Picture(*static_cast<const ZelColorImage*>(image)), Demosaiced(*image, phase));
        EXPECT_FALSE(m_Camera->GetPendingColorImage() || m_Camera->GetLastPendingColorImage());
    }
}

TEST_F(ColorTest, EachPipelineHasItsOwnSettings) {
    constexpr Matrix twice{2, 0, 0, 0, 2, 0, 0, 0, 2}, identity{1, 0, 0, 0, 1, 0, 0, 0, 1};
    const auto scratchpad = [&] {
        Matrix matrix{};
        EXPECT_TRUE(m_Camera->GetScratchpadTransform(matrix.data()));
        return matrix;
    };
    EXPECT_TRUE(m_Camera->ConcatenateColorMatrix(twice.data()));
    EXPECT_EQ(Transform(), twice);
    EXPECT_EQ(scratchpad(), identity);
    EXPECT_TRUE(m_Camera->ConcatenateScratchpadMatrix(twice.data()) && m_Camera->ResetColorTransform());
    EXPECT_EQ(Transform(), identity);
    EXPECT_EQ(scratchpad(), twice);
    EXPECT_TRUE(m_Camera->ResetScratchpadTransform());
    EXPECT_EQ(scratchpad(), identity);
    // What goes into the pictures of one goes past the other's.
    const unsigned short nines[] = {9, 9, 9};
    Words seen;
    SetScratchpad([&](ZelColorImage* image) { return seen = Picture(*image), 0; });
    EXPECT_TRUE(m_Camera->SetScratchpadInputLinearizationTable(nines, 1, 3));
    Begin();
    for (const bool output : {false, true}) {
        if (output) {
            EXPECT_TRUE(m_Camera->SetScratchpadInputLinearizationTable(nullptr, 0, 3));
            EXPECT_TRUE(m_Camera->SetScratchpadOutputNonLinearizationTable(nines, 1, 3));
        }
        const ZelImage* image = Deliver();
        EXPECT_TRUE(m_Camera->GetPendingColorImage());
        EXPECT_EQ(seen, Words(6 * 4 * 3, 9));
        EXPECT_EQ(Picture(*static_cast<const ZelColorImage*>(image)), Demosaiced(*image, 1));
    }
}

TEST_F(ColorTest, MatricesComeFromTheCameraOrAreTheIdentity) {
    Begin();
    m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_WHITE_BALANCE_AND_CORRECTION, 0);
    EXPECT_EQ(Transform(), (Matrix{2, 1, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_TRUE(m_Camera->ResetColorTransform());
    m_Table.m_Exceptions[CCM_2_2] = kExceptionBadIndex;
    m_Table.m_Blocks[DWB_1_1 + 4] = BytesOf<double>(std::numeric_limits<double>::quiet_NaN());
    Begin();
    m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_WHITE_BALANCE_AND_CORRECTION, 0);
    EXPECT_EQ(Transform(), (Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1}));
}

TEST_F(ColorTest, PicturesInXyzPassThroughTwoConversionsThatAreNotQuiteTheIdentity) {
    m_Table.m_Blocks[CCM_OUTPUT_COLOR_SPACE] = TextBytes("XYZ");
    Begin();
    EXPECT_TRUE(m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, 0));
    const Matrix transform = Transform();
    EXPECT_NEAR(transform[0], 1, 0.002);
    EXPECT_NE(transform[0], 1.0f);
    EXPECT_NEAR(transform[1], 0, 0.002);
    EXPECT_TRUE(m_Camera->ResetColorTransform());
    EXPECT_EQ(Transform(), transform);
}

TEST_F(ColorTest, BothBinningFactorsAreAnErrorOfTheCamera) {
    m_Table.m_Values[H_BIN] = m_Table.m_Values[V_BIN] = 2;
    Begin();
    EXPECT_FALSE(m_Camera->IsMonochrome());
    m_Transport.EmitImage(Deliver());
    EXPECT_EQ(m_Camera->GetLastError(), ZEL_ERROR_INVALID_BINNING_SELECTION);
}

// What the callback is handed, and what it may do meanwhile.
TEST_F(ColorTest, TheScratchpadSeesEachFrameInItsOwnColors) {
    Begin();
    const Matrix half{0.5f, 0, 0, 0, 0.5f, 0, 0, 0, 0.5f};
    const Words table(3, 0);
    m_Camera->SetScratchpadInputLinearizationTable(table.data(), 1, 3);
    m_Camera->SetScratchpadInputLinearizationTable(nullptr, 0, 0);
    m_Camera->ConcatenateScratchpadTransform(ZEL_COLOR_TRANSFORM_8_BIT_RGB, 0);
    m_Camera->ConcatenateScratchpadTransform(ZEL_COLOR_TRANSFORM_16_BIT, 0);
    EXPECT_TRUE(m_Camera->ResetScratchpadTransform() && m_Camera->ConcatenateScratchpadMatrix(half.data()));
    SetScratchpad([this](ZelColorImage* image) {
        EXPECT_EQ(Picture(*image)[2], 50) << "100 through the scratchpad's transform";
        // No lock is held: these wait for the processing lock and the pipelines'.
        m_Camera->GetScratchBufferCount();
        m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, 12);
        EXPECT_EQ(Next(), image) << "the frame itself can be taken from inside";
        return 0;
    });
    ZelImage* image = Deliver();
    m_Transport.EmitImage(image);
    Words expected = Demosaiced(*image, 1);
    for (auto& word : expected) word = static_cast<std::uint16_t>(word >> 2);
    EXPECT_EQ(Picture(*static_cast<const ZelColorImage*>(image)), expected)
        << "what the callback staged is in force for the same frame";
}

// A transport that stops waits for its own thread, and that thread may be waiting for the frame.
TEST_F(ColorTest, StoppingAtTheScratchpadDoesNotWaitForAThreadThatWaitsForTheFrame) {
    std::atomic<bool> inside{false}, emitted{false};
    Begin();
    SetScratchpad([&](ZelColorImage*) {
        inside = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return m_Camera->Stop(), 0;
    });
    m_Transport.SetHandler([&](const Bytes& datagram) {
        while (!emitted) std::this_thread::yield();  // for its thread, as a transport waits
        return m_Table.Answer(datagram);
    });
    ZelImage* image = Deliver();
    const std::jthread transport([&] {
        while (!inside) std::this_thread::yield();
        emitted = m_Transport.EmitImage(image);
    });
    EXPECT_EQ(m_Camera->GetPendingColorImage(), image);
}

}  // namespace
}  // namespace zel::test
