// The compressor that searches for repetitions, and the checksum of PNG files.
#ifndef UTIL_DEFLATE_H
#define UTIL_DEFLATE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

struct libdeflate_compressor;

namespace zel {

// Size of the longest zlib stream that `size` bytes can become.
std::size_t ZlibStreamBound(std::size_t size);

// Keeps its tables from use to use.
class Deflate {
  public:
    // Compresses `data` into one zlib stream (32 KB window, Adler-32 trailer) at the start of `out`, and answers its
    // length; 0 when memory runs out or `out` is too small.
    std::size_t Compress(std::span<const std::uint8_t> data, std::span<std::uint8_t> out);

  private:
    struct Deleter {
        void operator()(libdeflate_compressor* compressor) const;
    };
    std::unique_ptr<libdeflate_compressor, Deleter> m_Compressor;
};

// The CRC-32 that PNG chunks end with.
std::uint32_t Crc32(std::span<const std::uint8_t> data);

}  // namespace zel

#endif
