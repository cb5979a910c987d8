#include "util/Deflate.h"

#include <libdeflate.h>

namespace zel {

namespace {

// Higher levels cost several times the time and hardly gain anything on camera frames.
constexpr int kLevel = 1;

}  // namespace

std::size_t ZlibStreamBound(std::size_t size) { return libdeflate_zlib_compress_bound(nullptr, size); }

void Deflate::Deleter::operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }

std::size_t Deflate::Compress(std::span<const std::uint8_t> data, std::span<std::uint8_t> out) {
    if (!m_Compressor) m_Compressor.reset(libdeflate_alloc_compressor(kLevel));
    if (!m_Compressor) return 0;
    return libdeflate_zlib_compress(m_Compressor.get(), data.data(), data.size(), out.data(), out.size());
}

std::uint32_t Crc32(std::span<const std::uint8_t> data) { return libdeflate_crc32(0, data.data(), data.size()); }

}  // namespace zel
