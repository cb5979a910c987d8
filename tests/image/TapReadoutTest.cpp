// The tap readout alone: every way of it against the order of the taps in plain words.
#include "image/TapReadout.h"

#include <random>

#include "kernels/Kernels.h"
#include "tests/image/Record.h"
#include "tests/support/PageReservations.h"
#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {
namespace {

FrameGeometry Taps(int taps, bool packed = false, int mhz = 20) {
    // Room for every frame here.
    return {.packed = packed, .width = 300, .height = 80, .bytes_per_pixel = 2, .taps = taps, .readout_mhz = mhz};
}

// Two taps deliver from both ends of a row to its middle, four from the corners to the middle in groups of top left,
// top right, bottom left, bottom right. What no tap reads holds what the scratch held, here zeros.
Words InImageOrder(const Words& raw, unsigned w, unsigned h, int taps) {
    if (taps == 1) return raw;
    Words picture(raw.size());
    for (unsigned i = 0; i < w * h && taps == 2; ++i) {
        const unsigned x = i % w;
        picture[i - x + (x % 2 ? w - 1 - x / 2 : x / 2)] = raw[i];
    }
    if (taps == 2) return picture;
    auto sample = raw.begin();
    for (unsigned y = 0; y < h / 2; ++y) {
        for (unsigned x = 0; x < w / 2; ++x) {
            for (const unsigned row : {y, h - 1 - y}) {
                for (const unsigned column : {x, w - 1 - x}) picture[row * w + column] = *sample++;
            }
        }
    }
    return picture;
}

// Two samples of 12 bits in three bytes.
void Pack(const Words& samples, unsigned short* pixels) {
    auto* out = reinterpret_cast<unsigned char*>(pixels);
    for (std::size_t i = 0; i < samples.size(); ++i, ++out) {
        const unsigned first = samples[i], second = i + 1 < samples.size() ? samples[i + 1] : 0;
        *out++ = static_cast<unsigned char>(first >> 4);
        *out = static_cast<unsigned char>((first & 15) | (second & 15) << 4);
        if (++i < samples.size()) *++out = static_cast<unsigned char>(second >> 4);
    }
}

struct TapReadoutTest : TapBalanceTest {
    Logger m_Logger{"TapReadoutTest"};
    TapReadout m_Readout{m_Logger, nullptr};
};

// With each of the kernels' variants, from the making of the lookup tables on.
struct TapReadoutVariantTest : TapReadoutTest, testing::WithParamInterface<kernels::Variant> {
    void SetUp() override {
        const kernels::KernelTable* const table = kernels::FindKernels(GetParam());
        if (!table) GTEST_SKIP() << "this machine does not run the variant";
        kernels::ForceKernels(table);
    }
    void TearDown() override { kernels::ForceKernels(nullptr); }
};
using kernels::Variant;
INSTANTIATE_TEST_SUITE_P(, TapReadoutVariantTest,
                         testing::Values(Variant::kScalar, Variant::kAvx2WithoutGathers, Variant::kAvx2,
                                         Variant::kAvx512));

TEST_P(TapReadoutVariantTest, EverySampleFindsItsPlaceAndItsTapsTable) {
    std::mt19937 random(7);
    for (const int taps : {1, 2, 4}) {
        LoadAndEnable(MakeTable(6, std::max(taps, 2)), MakeTable(6, std::max(taps, 2), 1));
        for (const bool fast : {false, true})
            EXPECT_EQ(m_TapBalance.TablesFor(fast).lines[1]->Usable(), kernels::Kernels().uses_lines);
        for (const auto& [w, h] :
             {std::pair(4u, 4u), {5u, 2u}, {3u, 3u}, {2u, 1u}, {1u, 1u}, {37u, 5u}, {70u, 5u}, {70u, 6u}, {300u, 4u}}) {
            for (const auto& [packed, mhz] : {std::pair(false, 20), {true, 40}, {false, 30}, {true, 0}}) {
                if (packed && taps == 1) continue;
                SCOPED_TRACE(testing::Message() << w << " x " << h << " taps " << taps << " packed " << packed);
                Words raw(w * h);
                // Samples of more than 12 bits count with their lower ones.
                for (auto& sample : raw) sample = static_cast<std::uint16_t>(random() % (packed ? 4096 : 65536));
                Record record(w, h, raw);
                if (packed) Pack(raw, record.pixels);
                Words expected = InImageOrder(raw, w, h, taps);
                // Cameras are calibrated for two readout speeds.
                const bool corrected = taps > 1 && (mhz == 20 || mhz == 40);
                const TapTables tables = m_TapBalance.TablesFor(mhz == 40);
                Words translated = expected;
                for (unsigned i = 0; corrected && i < expected.size(); ++i) {
                    const bool left = i % w < w / 2, top = taps == 2 || i / w < h / 2;
                    expected[i] = tables.lut[top ? (left ? 0u : 1u) : (left ? 3u : 2u)][expected[i] & 4095u];
                }
                // Where the rows can't be corrected on their way, the frame is corrected as a whole.
                if (corrected) {
                    const auto width = static_cast<int>(w), height = static_cast<int>(h);
                    EXPECT_TRUE(m_TapBalance.TranslatePixels(width, height, taps, mhz == 40, translated.data()));
                    EXPECT_EQ(translated, expected);
                }
                TapReadout readout(m_Logger, &m_TapBalance);
                FrameGeometry room = Taps(taps);
                // A buffer as large as the record's takes its place; out of a larger one the frame is copied.
                if (mhz == 20) room.width = w, room.height = h;
                readout.Prepare(room);
                EXPECT_TRUE(readout.Process(&record, Taps(taps, packed, mhz)));
                EXPECT_EQ(record.Content(), expected);
            }
        }
    }
}

TEST_F(TapReadoutTest, BuffersAreMadeForWhatFramesNeed) {
    for (const auto& [taps, packed, buffers] :
         {std::tuple(1, false, 0), {2, false, 1}, {2, true, 2}, {4, false, 1}, {4, true, 2}}) {
        m_Readout.Prepare(Taps(taps, packed));
        EXPECT_EQ(m_Readout.BufferCount(), buffers) << taps << " taps, packed " << packed;
        m_Readout.ReleaseBuffers();
        EXPECT_EQ(m_Readout.BufferCount(), 0);
    }
}

TEST_F(TapReadoutTest, WithoutScratchFourTapsAreUnpackedAndStayInTheirOrder) {
    for (const bool packed : {false, true}) {
        Record record(4, 2, Counting(8));
        if (packed) Pack(Counting(8), record.pixels);
        EXPECT_FALSE(m_Readout.Process(&record, Taps(4, packed)));
        EXPECT_EQ(record.Content(), Counting(8));
    }
}

TEST_F(TapReadoutTest, PackedFramesAskTheSystemForNoMemoryAndStayPackedWhenThereIsNone) {
    Record record(2, 1, {7, 9});
    platform::SetPageReservationLimit(0);
    EXPECT_TRUE(m_Readout.Process(&record, Taps(2, true)));
    platform::SetPageReservationLimit(-1);
    EXPECT_EQ(record.Content(), (Words{7, 9}));
    m_Readout.Process(&record, Taps(2, true));
    const long long live = platform::LivePageReservations();
    m_Readout.Process(&record, Taps(2, true));
    EXPECT_EQ(platform::LivePageReservations(), live);
}

// A transport may hand over less than the full frame: the next frame finds the record's buffer as large as ever.
TEST_F(TapReadoutTest, ASmallerPackedFrameLeavesTheRecordItsBuffer) {
    m_Readout.Prepare(Taps(4));
    for (const auto& [w, h, taps] : {std::array{0u, 4u, 2u}, {2u, 2u, 2u}, {3u, 1u, 2u}, {2u, 2u, 4u}, {0u, 0u, 4u}}) {
        Record record(4, 4, Counting(16));
        record.w = w;
        record.h = h;
        m_Readout.Process(&record, Taps(static_cast<int>(taps), true));
        EXPECT_NE(record.pixels, nullptr);
        EXPECT_EQ(record.buffer_size, 32u) << w << " x " << h;
        EXPECT_EQ(record.size_in_bytes, 2 * w * h);
    }
}

TEST_F(TapReadoutTest, GeometryThatDoesNotFitTheBufferIsRefused) {
    EXPECT_FALSE(m_Readout.Process(nullptr, Taps(2)));
    for (const bool packed : {false, true}) {
        for (const int taps : {1, 2, 4}) {
            Record record(4, 4, Counting(16));
            record.w = record.h = 4000;
            record.size_in_bytes = 2 * (record.num_pixels = record.w * record.h);
            m_Readout.Prepare(Taps(taps));
            EXPECT_EQ(m_Readout.Process(&record, Taps(taps, packed)), taps == 1);
            record.w = record.h = 4;
            EXPECT_EQ(record.Content(), Counting(16));
        }
    }
}

}  // namespace
}  // namespace zel::test
