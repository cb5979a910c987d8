#include "calibration/Sha1.h"

#include <algorithm>
#include <bit>

namespace zel {

namespace {

constexpr std::size_t kBlock = 64;
constexpr std::size_t kLengthAt = kBlock - 8;  // the message's length in bits ends the last block
using State = std::array<std::uint32_t, 5>;

struct Round {
    std::uint32_t function;
    std::uint32_t constant;
};

Round RoundOf(std::size_t t, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    if (t < 20) return {(b & c) | (~b & d), 0x5A827999u};
    if (t < 40) return {b ^ c ^ d, 0x6ED9EBA1u};
    if (t < 60) return {(b & c) | (b & d) | (c & d), 0x8F1BBCDCu};
    return {b ^ c ^ d, 0xCA62C1D6u};
}

void AddBlock(State& state, std::span<const std::uint8_t> block) {
    std::array<std::uint32_t, 80> w;
    for (std::size_t t = 0; t < 16; ++t) {
        w[t] = std::uint32_t{block[4 * t]} << 24 | std::uint32_t{block[4 * t + 1]} << 16 |
               std::uint32_t{block[4 * t + 2]} << 8 | block[4 * t + 3];
    }
    for (std::size_t t = 16; t < w.size(); ++t) w[t] = std::rotl(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
    auto [a, b, c, d, e] = state;
    for (std::size_t t = 0; t < w.size(); ++t) {
        const Round round = RoundOf(t, b, c, d);
        const std::uint32_t next = std::rotl(a, 5) + round.function + e + w[t] + round.constant;
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d, state[4] + e};
}

}  // namespace

Sha1::Digest Sha1::Of(std::span<const std::uint8_t> message) {
    State state = {0x67452301u, 0xEFCDAB89u, 0x98BADCFEu, 0x10325476u, 0xC3D2E1F0u};
    std::span<const std::uint8_t> rest = message;
    for (; rest.size() >= kBlock; rest = rest.subspan(kBlock)) AddBlock(state, rest.first(kBlock));
    std::array<std::uint8_t, kBlock> last{};
    std::copy(rest.begin(), rest.end(), last.begin());
    last[rest.size()] = 0x80;
    if (rest.size() >= kLengthAt) {
        AddBlock(state, last);
        last.fill(0);
    }
    const std::uint64_t bits = std::uint64_t{message.size()} * 8;
    for (std::size_t i = 0; i < 8; ++i) last[kLengthAt + i] = static_cast<std::uint8_t>(bits >> (56 - 8 * i));
    AddBlock(state, last);
    Digest digest;
    for (std::size_t i = 0; i < digest.size(); ++i) {
        digest[i] = static_cast<std::uint8_t>(state[i / 4] >> (24 - 8 * (i % 4)));
    }
    return digest;
}

}  // namespace zel
