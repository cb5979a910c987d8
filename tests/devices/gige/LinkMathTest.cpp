// What needs no camera: pixel formats, gaps in the numbers, shares of a link, who is who among those found.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "devices/gige/BlockIds.h"
#include "devices/gige/LinkShares.h"
#include "devices/gige/PixelFormats.h"
#include "devices/gige/Roster.h"
#include "devices/kit/Bus.h"

namespace zel::gige {

TEST(PixelFormats, TheDeepestMosaicAndTheFewestBytesWin) {
    const std::vector<std::string> mono{"Mono8", "RGB8", "Mono10", "Mono12", "Mono12Packed", "Mono12p", "YUV422_8"};
    EXPECT_EQ(RankFormats(mono).front(), (PixelFormat{"Mono12p", 12, Packing::k12p, 0}));
    EXPECT_EQ(RankFormats(mono).size(), 5u);
    const std::vector<std::string> color{"Mono16", "BayerGB8", "BayerGB10", "BayerGBR8", "Bayer"};
    EXPECT_EQ(RankFormats(color).front(), (PixelFormat{"BayerGB10", 10, Packing::kWords, 4}));
}

// Bit i of the bytes is told by the format: each is made sample by sample here and read back.
TEST(PixelFormats, EverySampleComesOutOfItsBits) {
    const std::pair<Packing, int> kinds[] = {{Packing::kBytes, 8},     {Packing::kWords, 16}, {Packing::k12p, 12},
                                             {Packing::k12Packed, 12}, {Packing::k10p, 10},   {Packing::k10Packed, 10}};
    for (const auto& [packing, bits] : kinds) {
        for (const std::size_t count : {1u, 7u, 64u, 1021u}) {
            std::vector<std::uint16_t> samples(count);
            std::vector<std::uint8_t> bytes(PackedBytes(packing, count));
            for (std::size_t i = 0; i < count; ++i) {
                samples[i] = static_cast<std::uint16_t>((i * 40503 + 977) % (1u << bits));
                for (int bit = 0; bit < bits; ++bit) {
                    std::size_t at = i * static_cast<std::size_t>(BitsOnLink(packing)) + static_cast<std::size_t>(bit);
                    const int low = bits - 8;  // of the older packing: bits that share the byte between two samples
                    if (packing == Packing::k12Packed || packing == Packing::k10Packed) {
                        at = i / 2 * 24 + (bit < low ? 8 + i % 2 * 4 + static_cast<std::size_t>(bit)
                                                     : i % 2 * 16 + static_cast<std::size_t>(bit - low));
                    }
                    if (samples[i] >> bit & 1) bytes[at / 8] |= static_cast<std::uint8_t>(1 << at % 8);
                }
            }
            std::vector<std::uint16_t> unpacked(count);
            Unpack(packing, bytes, unpacked);
            EXPECT_EQ(unpacked, samples) << "packing " << static_cast<int>(packing) << ", " << count << " samples";
        }
    }
}

TEST(BlockIds, GapsAreCountedAndNothingElse) {
    const std::tuple<std::uint64_t, bool, unsigned> cases[] = {
        {65532, true, 0},  {0, false, 0}, {65534, true, 0}, {1, true, 1},     {5, true, 3}, {4, true, 0}, {5, true, 0},
        {65510, false, 0}, {7, true, 0},  {65536, true, 0}, {65540, true, 3}, {1, true, 0}, {2, true, 0}};
    BlockIds ids;
    for (const auto& [id, whole, gap] : cases) EXPECT_EQ(ids.Next(id, whole), gap) << id;
}

TEST(LinkShares, PacketsOfTheOthersFitBetweenTwo) {
    EXPECT_EQ(PacketDelayNs(1500, 1e9, 1), 0);
    EXPECT_EQ(PacketDelayNs(1462, 1e9, 2), 12000);
    EXPECT_EQ(PacketDelayNs(1462, 1e9, 4), 36000);
    EXPECT_DOUBLE_EQ(ShareBytesPerSecond(1462, 1e9, 2), 125e6 * 1462 / 1500 / 2);
    LinkShares& shares = LinkShares::Get();
    for (const char* address : {"10.0.0.1", "10.0.0.1", "10.0.0.2"}) shares.Join(address);
    shares.Leave("10.0.0.1");
    EXPECT_EQ(shares.Cameras("10.0.0.1"), 1);
    for (const char* address : {"10.0.0.1", "10.0.0.2"}) shares.Leave(address);
    EXPECT_EQ(shares.Cameras("10.0.0.1"), 0);
}

TEST(Roster, CamerasAreKnownBySerialNumberAndTwinsByAddress) {
    const FoundCamera one{"V", "M", "1", "10.0.0.1", ""}, moved{"V", "M", "1", "10.0.0.9", ""};
    const FoundCamera twin{"V", "M", "1", "10.0.0.2", ""};
    kit::Bus listed(CAMERA_TYPE_PLEORA_EBUS);
    Roster roster(listed, {});
    const std::tuple<std::vector<FoundCamera>, bool, const char*> steps[] = {
        {{one, twin}, true, "10.0.0.1"},
        {{twin, moved}, true, "10.0.0.9"},  // the order of answers says nothing
        {{twin}, true, "10.0.0.9"},         // one answer may be lost
        {{twin}, false, "10.0.0.9"},
        {{twin, one}, true, "10.0.0.1"}};
    const auto address = [&](int camera) {
        return std::string(listed.Text(camera, [](const kit::Description& found) { return found.addresses[0]; }));
    };
    for (const auto& step : steps) {
        roster.Update(std::get<0>(step));
        EXPECT_EQ(std::tuple(listed.Plugged(0), address(0)), std::tuple(std::get<1>(step), std::get<2>(step)))
            << &step - steps;
        EXPECT_EQ(std::tuple(listed.Count(), listed.Plugged(1), address(1)), std::tuple(2, true, "10.0.0.2"));
    }
}

}  // namespace zel::gige
