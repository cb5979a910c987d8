#include "calibration/Sha1.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace zel::test {
namespace {

TEST(Sha1Test, PublishedVectors) {
    const std::pair<std::string, const char*> vectors[] = {
        {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
        {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
        // Around the place where the length no longer fits its block.
        {std::string(55, 'a'), "c1c8bbdc22796e28c0e15163d20899b65621d65a"},
        {std::string(56, 'a'), "c2db330f6083854c99d4b5bfb6e8f29f201be699"},
        {std::string(64, 'a'), "0098ba824b5c16427bd7a1122a5a442a25ec644d"},
        {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
    };
    for (const auto& [message, digest] : vectors) {
        char text[41];
        char* out = text;
        const std::vector<std::uint8_t> bytes(message.begin(), message.end());
        for (const unsigned byte : Sha1::Of(bytes)) out += std::snprintf(out, 3, "%02x", byte);
        EXPECT_STREQ(text, digest) << message.size() << " bytes";
    }
}

}  // namespace
}  // namespace zel::test
