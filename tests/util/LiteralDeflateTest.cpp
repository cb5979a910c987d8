// Streams of any bytes, read back with the library that did not write them.
#include "util/LiteralDeflate.h"

#include <gtest/gtest.h>
#include <libdeflate.h>

#include <algorithm>
#include <bit>
#include <memory>
#include <random>
#include <vector>

#include "util/Deflate.h"
#include "util/HuffmanLengths.h"

namespace zel {
namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr std::size_t kBlock = std::size_t{128} << 10;

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

TEST(LiteralDeflate, StreamsReadBackAndAreAsLongAsForetold) {
    // Each value half as often as the one before: codes of the greatest length.
    Bytes skewed(kBlock);
    for (std::size_t i = 0; i < skewed.size(); ++i) skewed[i] = static_cast<std::uint8_t>(std::countr_zero(i + 1));
    std::vector<Bytes> cases = {skewed, {42}, Bytes(1000, 7)};
    for (const std::size_t size : {std::size_t{3}, kBlock - 1, kBlock, kBlock + 1, 5 * kBlock + 77}) {
        for (const int dice : {1, 2, 8}) cases.push_back(Noise(size, dice));
    }
    for (const Bytes& data : cases) {
        SCOPED_TRACE(data.size());
        Bytes out(data.size() * 2 + 1000);
        const std::size_t size = LiteralZlibCompress(data, out);
        ASSERT_NE(0u, size);
        EXPECT_TRUE(Inflate(std::span(out).first(size), data.size()) == data);
        if (data.size() <= kBlock) {
            EXPECT_EQ(LiteralBlockSize(data) + 6, size);
        }
        // Nothing is written behind a buffer that is too small.
        for (const std::size_t room : {std::size_t{0}, std::size_t{5}, std::size_t{14}, size / 2, size - 1}) {
            std::fill(out.begin(), out.end(), 0xCD);
            EXPECT_EQ(0u, LiteralZlibCompress(data, std::span(out).first(room))) << room;
            EXPECT_EQ(std::count(out.begin() + static_cast<std::ptrdiff_t>(room), out.end(), 0xCD),
                      static_cast<std::ptrdiff_t>(out.size() - room));
        }
    }
    Bytes out(1000);
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

// Noise goes the fast way at hardly any cost; data that repeats itself does not, and what can't be compressed stays.
TEST(Deflate, ChoosesLiteralsForNoiseAlone) {
    const std::size_t size = 1 << 20;
    Bytes repeating = Noise(size, 3);
    for (std::size_t i = 1000; i < size; ++i) repeating[i] = repeating[i - 1000];
    const Bytes kinds[] = {Noise(size, 3), repeating, Noise(size, 1)};
    std::size_t sizes[3];
    Bytes out(ZlibStreamBound(size));
    for (int i = 0; i < 3; ++i) {
        sizes[i] = ZlibCompress(kinds[i], out);
        EXPECT_TRUE(Inflate(std::span(out).first(sizes[i]), size) == kinds[i]) << i;
    }
    EXPECT_EQ(LiteralZlibCompress(kinds[0], out), sizes[0]);
    EXPECT_LT(sizes[1], size / 20);
    EXPECT_LE(sizes[2], size + 200);
}

}  // namespace
}  // namespace zel
