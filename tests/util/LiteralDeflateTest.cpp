// Streams of literals, of any bytes, read back with the library that did not write them.
#include "util/LiteralDeflate.h"

#include <gtest/gtest.h>
#include <libdeflate.h>

#include <algorithm>
#include <bit>
#include <memory>
#include <random>
#include <vector>

#include "util/HuffmanLengths.h"

namespace zel {
namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr std::size_t kBlock = LiteralStream::kBlockSize;

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

// The whole as blocks of rows; 0 when they do not fit.
std::size_t Compress(const Bytes& data, std::size_t row_size, std::span<std::uint8_t> out) {
    const auto stream = std::make_unique<LiteralStream>();
    stream->Begin(out);
    const std::size_t step = std::max<std::size_t>(1, kBlock / row_size) * row_size;
    for (std::size_t at = 0; at == 0 || at < data.size(); at += step) {
        const std::size_t size = std::min(step, data.size() - at);
        if (!stream->Put(std::span(data).subspan(at, size), row_size, at + size == data.size())) return 0;
    }
    return stream->End();
}

TEST(LiteralDeflate, StreamsReadBackAndAreAsLongAsForetold) {
    // Each value half as often as the one before: codes of the greatest length.
    Bytes skewed(kBlock);
    for (std::size_t i = 0; i < skewed.size(); ++i) skewed[i] = static_cast<std::uint8_t>(std::countr_zero(i + 1));
    std::vector<Bytes> cases = {skewed, {42}, Bytes(1000, 7)};
    for (const std::size_t size : {std::size_t{3}, kBlock - 1, kBlock, kBlock + 1, 5 * kBlock + 77}) {
        for (const int dice : {1, 2, 8}) cases.push_back(Noise(size, dice));
    }
    std::size_t row_size = 1;
    for (const Bytes& data : cases) {
        row_size = row_size * 5 % 4099;  // odd and even, shorter and longer than what is written at once
        SCOPED_TRACE(testing::Message() << data.size() << " bytes in rows of " << row_size);
        Bytes out(data.size() * 2 + 1000);
        const std::size_t size = Compress(data, row_size, out);
        ASSERT_NE(0u, size);
        EXPECT_TRUE(Inflate(std::span(out).first(size), data.size()) == data);
        if (data.size() <= row_size * (kBlock / row_size)) {
            EXPECT_NEAR(static_cast<double>(LiteralBlockSize(data) + 6), static_cast<double>(size),
                        static_cast<double>(size) / 32);
        }
        // Nothing is written behind a buffer that is too small; counts of all bytes may save what is missing.
        for (const std::size_t room : {std::size_t{0}, std::size_t{5}, std::size_t{14}, size / 2, size - 1}) {
            std::fill(out.begin(), out.end(), 0xCD);
            EXPECT_LE(Compress(data, row_size, std::span(out).first(room)), room == size - 1 ? room : 0) << room;
            EXPECT_EQ(std::count(out.begin() + static_cast<std::ptrdiff_t>(room), out.end(), 0xCD),
                      static_cast<std::ptrdiff_t>(out.size() - room));
        }
    }
    Bytes out(1000);
    EXPECT_EQ(0u, Compress({}, 1, out));
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

}  // namespace
}  // namespace zel
