#include "tapbalance/Sha1.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tapbalance/TapTable.h"

namespace zel::test {
namespace {

std::string Hex(const Sha1::Digest& digest) {
    std::string text;
    for (const int byte : digest) {
        text += "0123456789abcdef"[byte / 16];
        text += "0123456789abcdef"[byte % 16];
    }
    return text;
}

// Given in pieces of this many bytes.
std::string DigestOf(const std::string& message, std::size_t piece) {
    Sha1 sha;
    const std::vector<std::uint8_t> bytes(message.begin(), message.end());
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        sha.Update(std::span(bytes).subspan(at, std::min(piece, bytes.size() - at)));
    }
    return Hex(sha.Finish());
}

TEST(Sha1Test, PublishedVectors) {
    const std::pair<std::string, const char*> vectors[] = {
        {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
        {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
        {"abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrstnopqr"
         "stu",
         "a49b2446a02c645bf419f995b67091253a04a259"},
        {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
    };
    for (const auto& [message, digest] : vectors) {
        for (const std::size_t piece : {1u, 63u, 64u, 65u, 1000000u}) {
            EXPECT_EQ(DigestOf(message, piece), digest) << message.size() << " bytes in pieces of " << piece;
        }
    }
}

// The message ends around the place where the length no longer fits its block.
TEST(Sha1Test, LengthsAroundABlock) {
    const std::pair<std::size_t, const char*> vectors[] = {
        {55, "c1c8bbdc22796e28c0e15163d20899b65621d65a"}, {56, "c2db330f6083854c99d4b5bfb6e8f29f201be699"},
        {63, "03f09f5b158a7a8cdad920bddc29b81c18a551f5"}, {64, "0098ba824b5c16427bd7a1122a5a442a25ec644d"},
        {65, "11655326c708d70319be2610e8a57d9a5b959d3b"},
    };
    for (const auto& [length, digest] : vectors) EXPECT_EQ(DigestOf(std::string(length, 'a'), 7), digest) << length;
}

// Taps, rows, the mV column, then each tap's column: computed with another program.
TEST(Sha1Test, DigestOfATable) {
    TapTable two(2, 2);
    two.SetRow(0, {10.0f, {1.0f, 0.5f}});
    two.SetRow(1, {20.0f, {1.25f, 0.75f}});
    EXPECT_EQ(Hex(two.Digest()), "a8327cd63ff60b45b2a6a000f51b66a425b310bc");
    TapTable four(1, 4);
    four.SetRow(0, {10.0f, {1.0f, 0.5f, 0.25f, 2.0f}});
    EXPECT_EQ(Hex(four.Digest()), "a14b4c6ff231b56013c1e6b8ca59ab237e2fd413");
}

}  // namespace
}  // namespace zel::test
