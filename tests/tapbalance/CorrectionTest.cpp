// Frames through the lookup tables; gain and bit depth.
#include <atomic>
#include <thread>

#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {
namespace {

using Frame = std::vector<unsigned short>;

// Beyond 12 bits, too.
Frame Ramp(int w, int h) {
    Frame frame(static_cast<std::size_t>(w * h));
    for (std::size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<unsigned short>(i * 251 + i / 11);
    return frame;
}

using CorrectionTest = TapBalanceTest;

// Each sample goes through its own tap's table; with odd sizes the middle belongs to the right and the bottom.
TEST_F(CorrectionTest, EverySampleGoesThroughItsTap) {
    for (const int taps : {2, 4}) {
        LoadAndEnable(MakeTable(25, taps), MakeTable(31, taps, 1));
        for (const int select : {0, 1}) {
            const TapTables tables = m_TapBalance.TablesFor(select);
            for (const auto& [w, h] : {std::pair{64, 6}, std::pair{9, 5}, std::pair{1, 1}, std::pair{37, 1}}) {
                const Frame before = Ramp(w, h);
                Frame frame = before;
                ASSERT_TRUE(m_TapBalance.TranslatePixels(w, h, taps, select, frame.data()));
                for (std::size_t at = 0; at < frame.size(); ++at) {
                    const int x = static_cast<int>(at) % w, y = static_cast<int>(at) / w;
                    const bool right = x >= w / 2;
                    const std::size_t tap = taps == 2 || y < h / 2 ? (right ? 1u : 0u) : (right ? 2u : 3u);
                    ASSERT_EQ(frame[at], tables.lut[tap][before[at] & 4095u]) << taps << " " << x << "," << y;
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
    const auto owner = m_TapBalance.TablesFor(1).owner;
    for (const float gain : {NAN, INFINITY}) EXPECT_FALSE(m_TapBalance.SetGain(gain));
    for (const int bits : {-1, 17, 1 << 30}) EXPECT_FALSE(m_TapBalance.SetBitsPerPixel(bits));
    EXPECT_TRUE(m_TapBalance.SetGain(0) && m_TapBalance.SetBitsPerPixel(12)) << "as they are: nothing is calculated";
    EXPECT_EQ(m_TapBalance.TablesFor(1).owner, owner);
    for (const int bits : {16, 1, 0}) {
        EXPECT_TRUE(m_TapBalance.SetBitsPerPixel(bits));
        EXPECT_TRUE(m_TapBalance.TranslatePixels(8, 4, 2, 1, frame.data()));
        for (const unsigned short sample : frame) EXPECT_LT(sample, 1u << bits);
    }
}

// The application changes the gain while frames are corrected: each frame's samples come from one set, which stays.
TEST_F(CorrectionTest, AFrameKeepsTheSetThatItBegan) {
    LoadAndEnable(MakeTable(40, 4), MakeTable(40, 4));
    const TapTables sets[] = {m_TapBalance.TablesFor(0), (m_TapBalance.SetGain(300), m_TapBalance.TablesFor(0))};
    const unsigned low = sets[0].lut[0][3000], high = sets[1].lut[0][3000];
    ASSERT_NE(low, high);
    std::atomic<bool> stop{false};
    std::thread application([&] {
        for (int i = 0; !stop; ++i) m_TapBalance.SetGain(i % 2 ? 0.0f : 300.0f);
    });
    for (int i = 0; i < 200; ++i) {
        Frame frame(64 * 64, 3000);
        EXPECT_TRUE(m_TapBalance.TranslatePixels(64, 64, 4, 0, frame.data()));
        EXPECT_TRUE(frame[0] == low || frame[0] == high) << frame[0];
        EXPECT_TRUE(std::equal(frame.begin(), frame.begin() + 32, frame.begin() + 64 * 31));
    }
    stop = true;
    application.join();
    EXPECT_EQ(sets[0].lut[0][3000], low);
}

}  // namespace
}  // namespace zel::test
