// Frames as the strips of compressed recordings.
#ifndef ZEL_STRIPENCODER_H
#define ZEL_STRIPENCODER_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "record/RecordError.h"
#include "record/RecordingFacts.h"

namespace zel::record {

enum class Compression { kNone, kDeflate, kZstd };

// Any number of threads, each with its own.
class StripEncoder {
  public:
    StripEncoder(const RecordingFacts& facts, Compression compression)
        : m_Width(facts.width), m_Height(facts.height), m_Compression(compression) {}

    // Good until the next call. Uncompressed: the samples themselves. Throws RecordError.
    std::span<const std::byte> Encode(std::span<const std::uint16_t> samples);

  private:
    unsigned m_Width;
    unsigned m_Height;
    Compression m_Compression;
    std::vector<std::byte> m_Bytes;
};

}  // namespace zel::record

#endif
