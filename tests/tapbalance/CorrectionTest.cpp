// Frames, gains and depths that are refused, and a gain that changes. Which table each sample goes through is seen at
// the tap readout.
#include <thread>

#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {

using Frame = std::vector<unsigned short>;

using CorrectionTest = TapBalanceTest;

TEST_F(CorrectionTest, WhatDoesNotFitIsRefusedAndUnchanged) {
    LoadAndEnable(MakeTable(25, 2), MakeTable(25, 2));
    const Frame before{0, 1, 251, 4095, 4096, 5000, 30000, 65535};
    Frame frame = before;
    const int cases[][4] = {{4, 2, 4, 0}, {4, 2, 3, 0}, {-4, 2, 2, 0}, {4, -2, 2, 0}, {4, 2, 2, 2}, {4, 2, 2, -1}};
    for (const auto& [w, h, taps, select] : cases)
        EXPECT_FALSE(m_TapBalance.TranslatePixels(w, h, taps, select, frame.data())) << w << " " << taps;
    EXPECT_FALSE(m_TapBalance.TranslatePixels(4, 2, 2, 0, nullptr));
    EXPECT_TRUE(m_TapBalance.TranslatePixels(0, 2, 2, 0, nullptr)) << "no samples";
    EXPECT_EQ(frame, before);
    const auto owner = m_TapBalance.TablesFor(1).owner;
    for (const float gain : {NAN, INFINITY}) EXPECT_FALSE(m_TapBalance.SetGain(gain));
    for (const int bits : {-1, 17, 1 << 30}) EXPECT_FALSE(m_TapBalance.SetBitsPerPixel(bits));
    EXPECT_TRUE(m_TapBalance.SetGain(0) && m_TapBalance.SetBitsPerPixel(12)) << "as they are: nothing is calculated";
    EXPECT_EQ(m_TapBalance.TablesFor(1).owner, owner);
    for (const int bits : {16, 1, 0}) {
        EXPECT_TRUE(m_TapBalance.SetBitsPerPixel(bits));
        EXPECT_TRUE(m_TapBalance.TranslatePixels(4, 2, 2, 1, frame.data()));
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

}  // namespace zel::test
