#include "calibration/Sha1.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace zel {

void Sha1::Update(std::span<const std::uint8_t> bytes) {
    m_Length += bytes.size();
    while (!bytes.empty()) {
        const std::size_t taken = std::min(kBlockSize - m_Filled, bytes.size());
        std::copy_n(bytes.begin(), taken, m_Block.begin() + static_cast<std::ptrdiff_t>(m_Filled));
        m_Filled += taken;
        bytes = bytes.subspan(taken);
        if (m_Filled == kBlockSize) {
            Compress(m_Block.data());
            m_Filled = 0;
        }
    }
}

// The message is followed by a one bit, zeros, and its length in bits as eight big-endian bytes.
Sha1::Digest Sha1::Finish() {
    const std::uint64_t bits = m_Length * 8;
    constexpr std::uint8_t kOneBit[] = {0x80};
    constexpr std::uint8_t kZero[] = {0};
    Update(kOneBit);
    while (m_Filled != kBlockSize - 8) Update(kZero);
    std::array<std::uint8_t, 8> length;
    for (std::size_t i = 0; i < 8; ++i) length[i] = static_cast<std::uint8_t>(bits >> (56 - 8 * i));
    Update(length);

    Digest digest;
    for (std::size_t i = 0; i < digest.size(); ++i) {
        digest[i] = static_cast<std::uint8_t>(m_State[i / 4] >> (24 - 8 * (i % 4)));
    }
    return digest;
}

void Sha1::Compress(const std::uint8_t* block) {
    std::array<std::uint32_t, 80> w;
    for (std::size_t t = 0; t < 16; ++t) {
        w[t] = std::uint32_t{block[4 * t]} << 24 | std::uint32_t{block[4 * t + 1]} << 16 |
               std::uint32_t{block[4 * t + 2]} << 8 | block[4 * t + 3];
    }
    for (std::size_t t = 16; t < 80; ++t) w[t] = std::rotl(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);

    auto [a, b, c, d, e] = m_State;
    for (std::size_t t = 0; t < 80; ++t) {
        std::uint32_t f;
        std::uint32_t k;
        if (t < 20) {
            f = (b & c) | (~b & d);
            k = 0x5A827999u;
        } else if (t < 40) {
            f = b ^ c ^ d;
            k = 0x6ED9EBA1u;
        } else if (t < 60) {
            f = (b & c) | (b & d) | (c & d);
            k = 0x8F1BBCDCu;
        } else {
            f = b ^ c ^ d;
            k = 0xCA62C1D6u;
        }
        const std::uint32_t next = std::rotl(a, 5) + f + e + k + w[t];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    m_State[0] += a;
    m_State[1] += b;
    m_State[2] += c;
    m_State[3] += d;
    m_State[4] += e;
}

}  // namespace zel
