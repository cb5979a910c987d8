#include "util/LiteralDeflate.h"

#include <gtest/gtest.h>
#include <libdeflate.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "util/Deflate.h"
#include "util/HuffmanLengths.h"

namespace zel {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Inflate(std::span<const std::uint8_t> stream, std::size_t size) {
    const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> decompressor(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    Bytes data(size);
    EXPECT_EQ(LIBDEFLATE_SUCCESS,
              libdeflate_zlib_decompress(decompressor.get(), stream.data(), stream.size(), data.data(), size, nullptr));
    return data;
}

// Sums of `dice` random bytes: the more, the narrower and the easier to compress.
Bytes Noise(std::size_t size, int dice) {
    std::mt19937 random(static_cast<unsigned>(dice));
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) {
        unsigned sum = 0;
        for (int i = 0; i < dice; ++i) sum += static_cast<unsigned>(random() & 0xFF);
        byte = static_cast<std::uint8_t>(sum / static_cast<unsigned>(dice));
    }
    return bytes;
}

// Each value half as often as the one before: codes of the greatest length.
Bytes Skewed(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        std::size_t value = 0;
        while ((i + 1) >> value & 1 ? false : value < 200) ++value;
        bytes[i] = static_cast<std::uint8_t>(value);
    }
    return bytes;
}

struct Case {
    const char* name;
    Bytes data;
};

TEST(LiteralDeflate, StreamsReadBackAndAreAsLongAsForetold) {
    constexpr std::size_t kBlock = std::size_t{128} << 10;
    const Case cases[] = {
        {"one byte", {42}},
        {"three bytes", {1, 2, 3}},
        {"one value", Bytes(1000, 7)},
        {"every value", Noise(5000, 1)},
        {"narrow noise", Noise(100001, 8)},
        {"skewed", Skewed(kBlock)},
        {"a block less one", Noise(kBlock - 1, 3)},
        {"a block", Noise(kBlock, 3)},
        {"a block and one", Noise(kBlock + 1, 3)},
        {"many blocks", Noise(5 * kBlock + 77, 2)},
    };
    for (const auto& [name, data] : cases) {
        SCOPED_TRACE(name);
        Bytes out(data.size() * 2 + 1000);
        const std::size_t size = LiteralZlibCompress(data, out);
        ASSERT_NE(0u, size);
        EXPECT_TRUE(Inflate(std::span(out).first(size), data.size()) == data);
        if (data.size() <= kBlock) {
            EXPECT_EQ(LiteralBlockSize(data) + 6, size);
        }
    }
}

TEST(LiteralDeflate, WritesNothingBehindABufferThatIsTooSmall) {
    const Bytes data = Noise(300000, 4);
    Bytes out(data.size() + 1000);
    const std::size_t size = LiteralZlibCompress(data, out);
    for (std::size_t room :
         {std::size_t{0}, std::size_t{5}, std::size_t{13}, std::size_t{14}, std::size_t{200}, size / 2, size - 1}) {
        Bytes guarded(room + 64, 0xCD);
        EXPECT_EQ(0u, LiteralZlibCompress(data, std::span(guarded).first(room))) << room;
        EXPECT_TRUE(std::all_of(guarded.begin() + static_cast<std::ptrdiff_t>(room), guarded.end(),
                                [](std::uint8_t byte) { return byte == 0xCD; }));
    }
    EXPECT_EQ(0u, LiteralZlibCompress({}, out));
}

TEST(HuffmanLengths, AreTheBestThereAre) {
    // Each count is as large as those below it together.
    LiteralCounts counts{};
    counts[kEndMark] = 1;
    for (unsigned i = 0; i < kMaxLiteralLength; ++i) counts[200 - i] = 1u << i;
    const LiteralLengths lengths = MakeLiteralLengths(counts);
    EXPECT_EQ(kMaxLiteralLength, lengths[kEndMark]);
    for (unsigned i = 0; i < kMaxLiteralLength; ++i) EXPECT_EQ(kMaxLiteralLength - i, lengths[200 - i]) << i;
}

// Noise goes the fast way at hardly any cost; data that repeats itself does not.
TEST(Deflate, ChoosesLiteralsForNoiseAlone) {
    const Bytes noise = Noise(1 << 20, 3);
    Bytes repeating = Noise(1 << 20, 3);
    for (std::size_t i = 1000; i < repeating.size(); ++i) repeating[i] = repeating[i - 1000];
    const Bytes incompressible = Noise(1 << 20, 1);

    Bytes out(ZlibStreamBound(1 << 20)), literals(ZlibStreamBound(1 << 20));
    const std::size_t noise_size = ZlibCompress(noise, out);
    EXPECT_EQ(LiteralZlibCompress(noise, literals), noise_size);
    EXPECT_TRUE(Inflate(std::span(out).first(noise_size), noise.size()) == noise);

    const std::size_t repeating_size = ZlibCompress(repeating, out);
    EXPECT_LT(repeating_size, repeating.size() / 20);
    EXPECT_TRUE(Inflate(std::span(out).first(repeating_size), repeating.size()) == repeating);

    const std::size_t incompressible_size = ZlibCompress(incompressible, out);
    EXPECT_LE(incompressible_size, incompressible.size() + 1000);
    EXPECT_TRUE(Inflate(std::span(out).first(incompressible_size), incompressible.size()) == incompressible);
}

}  // namespace
}  // namespace zel
