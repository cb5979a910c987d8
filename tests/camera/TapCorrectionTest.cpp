// Frames through the lookup tables of a calibration: on the way of the readout as afterwards.
#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <random>

#include "image/ZelCameraControlImpl.h"
#include "kernels/Kernels.h"
#include "tapbalance/TapBalance.h"
#include "tests/support/ScriptedTransport.h"

namespace zel::test {
namespace {

constexpr int kCameraLink = 3, kEBus = 4;
using Samples = std::vector<std::uint16_t>;

class Processor : public ZelCameraControlImpl {
  public:
    Processor(int type, TapBalance* balance) : ZelCameraControlImpl(""), m_Type(type), m_Balance(balance) {}

  protected:
    int TransportInterfaceType() override { return m_Type; }
    TapBalance* Taps() override { return m_Balance; }

  private:
    int m_Type;
    TapBalance* m_Balance;
};

struct Readout {
    const char* name;
    int type;
    int taps;
    unsigned w, h;
    int mhz;
    bool corrected;
};

class TapCorrectionTest : public testing::TestWithParam<Readout> {
  protected:
    TapCorrectionTest() {
        m_Balance.SetBitsPerPixel(12);
        m_Balance.SetGain(0);
        const int taps = GetParam().taps == 3 ? 4 : GetParam().taps;
        for (const char* speed : {"20MHz", "40MHz"}) {
            const std::string name = std::string("taps_") + speed + ".txt";
            std::ofstream file(name);
            file << "6 " << taps << '\n';
            // The taps' gains differ, and differ with the level.
            for (int row = 0; row < 6; ++row) {
                file << row * 300;
                for (int tap = 0; tap < 4; ++tap) file << ' ' << (tap < taps ? 0.9 + 0.04 * tap + 0.005 * row : 0.0);
                file << '\n';
            }
            file.close();
            EXPECT_TRUE(m_Balance.LoadDataFromMasterFile(name.c_str()));
            std::remove(name.c_str());
        }
        EXPECT_TRUE(m_Balance.Enable(true));
    }
    // One frame of the same random readout, through a processor with or without correction.
    Samples Process(TapBalance* balance) {
        const Readout& readout = GetParam();
        Processor processor(readout.type, balance);
        FrameGeometry geometry;
        geometry.width = readout.w;
        geometry.height = readout.h;
        geometry.bit_depth = 12;
        geometry.bytes_per_pixel = 2;
        geometry.taps = readout.taps;
        geometry.readout_mhz = readout.mhz;
        geometry.roi = {0, 0, readout.w, readout.h, 1, 1};
        processor.SetGeometry(geometry);
        EXPECT_EQ(processor.UpdateImagePool(1), 0);
        ZelImageInternal* image = processor.Pool().GetFreeImage();
        std::mt19937 random(7);
        for (unsigned i = 0; i < image->num_pixels; ++i) image->pixels[i] = static_cast<std::uint16_t>(random() % 4096);
        EXPECT_TRUE(processor.PostProcessTapBalance(image));
        return Samples(image->pixels, image->pixels + readout.w * readout.h);
    }

    platform::RecursiveLock m_Lock;
    ScriptedTransport m_Transport;
    TextProtocol m_Text{&m_Transport, "", m_Lock};
    TapBalance m_Balance{m_Text, ""};
};

TEST_P(TapCorrectionTest, EachQuadrantGoesThroughItsTapsTable) {
    const Readout& readout = GetParam();
    const Samples raw = Process(nullptr);
    Samples expected = raw;
    const TapTables tables = m_Balance.TablesFor(readout.mhz == 40);
    ASSERT_TRUE(tables);
    if (readout.corrected) {
        for (unsigned y = 0; y < readout.h; ++y) {
            for (unsigned x = 0; x < readout.w; ++x) {
                const bool left = x < readout.w / 2, top = readout.taps == 2 || y < readout.h / 2;
                const std::size_t tap = top ? (left ? 0 : 1) : (left ? 3 : 2);
                expected[y * readout.w + x] = tables.lut[tap][raw[y * readout.w + x] & 4095];
            }
        }
        EXPECT_NE(expected, raw);
    }
    EXPECT_EQ(Process(&m_Balance), expected);
    m_Balance.Enable(false);
    EXPECT_EQ(Process(&m_Balance), raw);
}

INSTANTIATE_TEST_SUITE_P(, TapCorrectionTest,
                         testing::Values(Readout{"TwoTaps", kCameraLink, 2, 70, 5, 20, true},
                                         Readout{"TwoTapsOdd", kCameraLink, 2, 37, 3, 40, true},
                                         Readout{"TwoTapsPacked", kEBus, 2, 70, 5, 40, true},
                                         Readout{"TwoTapsPackedOdd", kEBus, 2, 37, 3, 20, true},
                                         Readout{"FourTaps", kCameraLink, 4, 70, 6, 40, true},
                                         Readout{"FourTapsOdd", kCameraLink, 4, 37, 5, 20, true},
                                         Readout{"FourTapsPacked", kEBus, 4, 70, 6, 20, true},
                                         Readout{"FourTapsPackedOdd", kEBus, 4, 70, 5, 40, true},
                                         Readout{"OtherReadoutSpeed", kCameraLink, 4, 70, 6, 30, false}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace zel::test
