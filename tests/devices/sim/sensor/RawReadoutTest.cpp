// Tap order and 12-bit packing, against plain forms that go through the raw data sample by sample.
#include <gtest/gtest.h>

#include <cstring>

#include "devices/sim/sensor/FrameReadout.h"
#include "devices/sim/sensor/RawReadout.h"
#include "tests/devices/sim/sensor/FrameStatistics.h"

namespace zel::sim::test {

// Rows are wide enough for vectors and a rest. What does not fit into the record is cut off.
TEST(RawReadout, APlainDecoderGetsThePictureBack) {
    constexpr std::size_t kWidth = 42;
    constexpr std::size_t kHeight = 6;
    Sensor sensor(ModelOf(kWidth, kHeight));
    FrameReadout readout;
    for (const SensorFill fill : {SensorFill::kNoise, SensorFill::kStatic}) {
        const Frame picture = RenderFrame(sensor, {}, 3, fill);
        for (const std::size_t taps : {1u, 2u, 4u}) {
            Frame raw(picture.size());
            for (std::size_t i = 0; i < picture.size(); ++i) {
                std::size_t x = i % kWidth;
                std::size_t y = i / kWidth;
                if (taps > 1) {
                    x = i / taps % (kWidth / 2);
                    y = i / taps / (kWidth / 2);
                    if (i % 2 == 1) x = kWidth - 1 - x;
                    if (i % taps >= 2) y = kHeight - 1 - y;
                }
                raw[i] = picture[y * kWidth + x];
            }
            for (const std::size_t cut : {0u, 1u, 7u, 150u}) {
                std::vector<std::uint8_t> record(picture.size() * 2, 0x77), expected = record;
                std::memcpy(expected.data(), raw.data(), record.size() - cut);
                readout.ReadOut(sensor, {}, fill, 3, static_cast<int>(taps), false,
                                std::span(record).first(record.size() - cut));
                EXPECT_EQ(record, expected) << taps << " taps, cut by " << cut;
            }
        }
    }
}

TEST(RawReadout, PackingDropsHighBitsAndWhatDoesNotFit) {
    Frame samples(40);
    std::vector<std::uint8_t> whole;
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<std::uint16_t>(i * 0x1ABC + 0xF0DE);
    for (std::size_t i = 0; i < samples.size(); i += 2) {
        const unsigned a = samples[i] & 0xFFFu, b = samples[i + 1] & 0xFFFu;
        for (const unsigned byte : {a >> 4, (b & 15) << 4 | (a & 15), b >> 4})
            whole.push_back(static_cast<std::uint8_t>(byte));
    }
    for (std::size_t room = 0; room <= whole.size() + 20; ++room) {
        std::vector<std::uint8_t> packed(room, 0x77), expected = packed;
        std::copy_n(whole.begin(), std::min(room / 3 * 3, whole.size()), expected.begin());
        Pack12(samples, packed);
        EXPECT_EQ(packed, expected) << room;
    }
}

}  // namespace zel::sim::test
