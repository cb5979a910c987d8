// Frames through the lookup tables; enable, gain and bit depth.
#include <atomic>
#include <thread>

#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {
namespace {

using Frame = std::vector<unsigned short>;

Frame Ramp(int w, int h, unsigned step = 7) {
    Frame frame(static_cast<std::size_t>(w * h));
    for (std::size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<unsigned short>(i * step + i / 11);
    return frame;
}

class CorrectionTest : public TapBalanceTest {
  protected:
    CorrectionTest() { m_TapBalance.SetBitsPerPixel(12); }
};

TEST_F(CorrectionTest, WithoutEnablingNothingChanges) {
    const Frame before = Ramp(16, 4);
    Frame frame = before;
    EXPECT_TRUE(m_TapBalance.TranslatePixels(16, 4, 2, 0, frame.data()));
    m_Flash.Install(MakeTable(20, 2), MakeTable(20, 2));
    EXPECT_FALSE(m_TapBalance.Enable(true)) << "no data";
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera());
    EXPECT_TRUE(m_TapBalance.TranslatePixels(16, 4, 2, 0, frame.data()));
    EXPECT_EQ(frame, before);
    EXPECT_TRUE(m_TapBalance.Enable(true));
    EXPECT_TRUE(m_TapBalance.TranslatePixels(16, 4, 2, 0, frame.data()));
    EXPECT_NE(frame, before);
}

// Each sample goes through its own tap's table; with odd sizes the middle belongs to the right and the bottom.
TEST_F(CorrectionTest, EverySampleGoesThroughItsTap) {
    for (const int taps : {2, 4}) {
        LoadAndEnable(MakeTable(25, taps), MakeTable(31, taps, 1));
        for (const int select : {0, 1}) {
            const TapTables tables = m_TapBalance.TablesFor(select);
            for (const auto& [w, h] : {std::pair{64, 6}, std::pair{9, 5}, std::pair{1, 1}, std::pair{37, 1}}) {
                const Frame before = Ramp(w, h, 251);  // beyond 12 bits, too
                Frame frame = before;
                ASSERT_TRUE(m_TapBalance.TranslatePixels(w, h, taps, select, frame.data()));
                for (int y = 0; y < h; ++y) {
                    for (int x = 0; x < w; ++x) {
                        const bool right = x >= w / 2;
                        const std::size_t tap = taps == 2 || y < h / 2 ? (right ? 1u : 0u) : (right ? 2u : 3u);
                        const auto at = static_cast<std::size_t>(y * w + x);
                        ASSERT_EQ(frame[at], tables.lut[tap][before[at] & 4095u]) << taps << " " << x << "," << y;
                    }
                }
            }
        }
    }
}

TEST_F(CorrectionTest, WhatDoesNotFitIsRefusedAndUnchanged) {
    LoadAndEnable(MakeTable(25, 2), MakeTable(25, 2));
    const Frame before = Ramp(8, 4);
    Frame frame = before;
    const int cases[][4] = {{8, 4, 4, 0}, {8, 4, 3, 0}, {-8, 4, 2, 0}, {8, -4, 2, 0}, {8, 4, 2, 2}, {8, 4, 2, -1}};
    for (const auto& [w, h, taps, select] : cases) {
        EXPECT_FALSE(m_TapBalance.TranslatePixels(w, h, taps, select, frame.data())) << w << " " << taps;
    }
    EXPECT_FALSE(m_TapBalance.TranslatePixels(8, 4, 2, 0, nullptr));
    EXPECT_TRUE(m_TapBalance.TranslatePixels(0, 4, 2, 0, nullptr)) << "no samples";
    EXPECT_EQ(frame, before);
}

TEST_F(CorrectionTest, AFrameKeepsTheSetThatItBegan) {
    LoadAndEnable(MakeTable(25, 4), MakeTable(25, 4));
    const TapTables first = m_TapBalance.TablesFor(0);
    const std::vector<std::uint16_t> entries = Entries(first, 2);
    EXPECT_TRUE(m_TapBalance.SetGain(0)) << "the gain it has: nothing is calculated";
    EXPECT_EQ(m_TapBalance.TablesFor(0).owner, first.owner);
    EXPECT_TRUE(m_TapBalance.SetGain(400));
    EXPECT_NE(m_TapBalance.TablesFor(0).owner, first.owner);
    EXPECT_NE(Entries(m_TapBalance.TablesFor(0), 2), entries);
    EXPECT_EQ(Entries(first, 2), entries);
}

TEST_F(CorrectionTest, NonsenseGainsAndDepthsAreRefused) {
    LoadAndEnable(MakeTable(25, 4), MakeTable(25, 4));
    const TapTables before = m_TapBalance.TablesFor(1);
    for (const float gain : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        EXPECT_FALSE(m_TapBalance.SetGain(gain));
    }
    for (const int bits : {-1, 17, 1 << 30}) EXPECT_FALSE(m_TapBalance.SetBitsPerPixel(bits));
    EXPECT_EQ(m_TapBalance.TablesFor(1).owner, before.owner);
    for (const int bits : {16, 1, 0}) {
        EXPECT_TRUE(m_TapBalance.SetBitsPerPixel(bits));
        Frame frame = Ramp(8, 2, 9999);
        EXPECT_TRUE(m_TapBalance.TranslatePixels(8, 2, 4, 1, frame.data()));
        for (const unsigned short sample : frame) EXPECT_LT(sample, 1u << bits);
    }
}

// The application changes the gain while frames are corrected: each frame's samples come from one set.
TEST_F(CorrectionTest, GainChangesWhileFramesPass) {
    LoadAndEnable(MakeTable(40, 4), MakeTable(40, 4));
    constexpr unsigned kSample = 3000;
    std::vector<unsigned> allowed;
    for (const float gain : {0.0f, 300.0f}) {
        m_TapBalance.SetGain(gain);
        allowed.push_back(m_TapBalance.TablesFor(0).lut[0][kSample]);
    }
    ASSERT_NE(allowed[0], allowed[1]);
    std::atomic<bool> stop{false};
    std::thread application([&] {
        for (int i = 0; !stop; ++i) m_TapBalance.SetGain(i % 2 ? 0.0f : 300.0f);
    });
    for (int i = 0; i < 200; ++i) {
        Frame frame(64 * 64, kSample);
        ASSERT_TRUE(m_TapBalance.TranslatePixels(64, 64, 4, 0, frame.data()));
        const bool one_set = frame[0] == allowed[0] || frame[0] == allowed[1];
        ASSERT_TRUE(one_set && std::equal(frame.begin(), frame.begin() + 32, frame.begin() + 64 * 31)) << frame[0];
    }
    stop = true;
    application.join();
}

}  // namespace
}  // namespace zel::test
