#include "util/Deflate.h"

#include <libdeflate.h>

#include <algorithm>
#include <memory>
#include <new>

#include "util/LiteralDeflate.h"

namespace zel {

namespace {

// Higher levels cost several times the time and hardly gain anything on camera frames.
constexpr int kLevel = 1;

struct CompressorDeleter {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};
using Compressor = std::unique_ptr<libdeflate_compressor, CompressorDeleter>;

// Whether literals alone do for this data: tried on samples of it. They may cost a fiftieth more, which their speed is
// worth, but must gain something over the raw bytes.
bool LiteralsSuffice(const Compressor& compressor, std::span<const std::uint8_t> data) {
    constexpr std::size_t kSamples = 4, kSampleSize = std::size_t{32} << 10;
    if (data.size() < 2 * kSamples * kSampleSize) return false;
    const std::size_t bound = libdeflate_deflate_compress_bound(compressor.get(), kSampleSize);
    const std::unique_ptr<std::uint8_t[]> scratch(new (std::nothrow) std::uint8_t[bound]);
    if (!scratch) return false;
    std::size_t searched = 0, literal = 0;
    for (std::size_t i = 0; i < kSamples; ++i) {
        const auto sample = data.subspan((data.size() - kSampleSize) / (kSamples - 1) * i, kSampleSize);
        searched += libdeflate_deflate_compress(compressor.get(), sample.data(), sample.size(), scratch.get(), bound);
        literal += LiteralBlockSize(sample);
    }
    return literal <= searched + searched / 50 && literal <= kSamples * kSampleSize / 64 * 63;
}

}  // namespace

std::size_t ZlibStreamBound(std::size_t size) { return libdeflate_zlib_compress_bound(nullptr, size); }

std::size_t ZlibCompress(std::span<const std::uint8_t> data, std::span<std::uint8_t> out) {
    const Compressor compressor(libdeflate_alloc_compressor(kLevel));
    if (!compressor) return 0;
    if (LiteralsSuffice(compressor, data)) {
        if (const std::size_t size = LiteralZlibCompress(data, out)) return size;
    }
    return libdeflate_zlib_compress(compressor.get(), data.data(), data.size(), out.data(), out.size());
}

std::uint32_t Crc32(std::span<const std::uint8_t> data) { return libdeflate_crc32(0, data.data(), data.size()); }

}  // namespace zel
