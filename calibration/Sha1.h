// SHA-1 (FIPS 180-4): the digest that tells whether a calibration table is the one the camera holds. It guards against
// damage and mix-ups, not against forgery.
#ifndef CALIBRATION_SHA1_H
#define CALIBRATION_SHA1_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zel {

class Sha1 {
  public:
    using Digest = std::array<std::uint8_t, 20>;

    void Update(std::span<const std::uint8_t> bytes);
    // The digest of everything given so far. The object is used up.
    Digest Finish();

  private:
    static constexpr std::size_t kBlockSize = 64;
    void Compress(const std::uint8_t* block);

    std::array<std::uint32_t, 5> m_State{0x67452301u, 0xEFCDAB89u, 0x98BADCFEu, 0x10325476u, 0xC3D2E1F0u};
    std::array<std::uint8_t, kBlockSize> m_Block{};
    std::size_t m_Filled = 0;  // bytes in m_Block
    std::uint64_t m_Length = 0;
};

}  // namespace zel

#endif
