// What comes from a camera of the network before anybody has looked at it: names of pixel formats, packed samples,
// numbers of frames, and the figures that a link's rate is shared out by.

#include "devices/gige/BlockIds.h"
#include "devices/gige/LinkShares.h"
#include "devices/gige/PixelFormats.h"
#include "fuzz/Input.h"

using namespace zel;
using namespace zel::gige;

namespace {

void Formats(fuzz::Input& input) {
    constexpr const char* kBeginnings[] = {"Mono", "BayerRG", "BayerGB", ""};
    std::vector<std::string> names;
    while (!input.Ended() && names.size() < 12)
        names.push_back(kBeginnings[input.Below(4)] + std::string(input.Text()));
    for (const PixelFormat& format : RankFormats(names)) {
        FuzzCheck(format.bits >= 8 && format.bits <= 16 && format.phase >= 0 && format.phase <= 4);
        FuzzCheck(std::ranges::find(names, format.name) != names.end());
    }
}

// As many bytes as the samples need and no more, so that a sanitizer sees a byte too much.
void Samples(fuzz::Input& input) {
    const auto packing = static_cast<Packing>(input.Below(6));
    const int bits = packing == Packing::kBytes ? 8 : packing == Packing::kWords ? 16 : BitsOnLink(packing);
    std::vector<std::uint16_t> samples(input.Below(100));
    std::vector<std::uint8_t> bytes(PackedBytes(packing, samples.size()));
    const auto given = input.Rest();
    std::copy_n(given.begin(), std::min(given.size(), bytes.size()), bytes.begin());
    Unpack(packing, bytes, samples);
    for (const std::uint16_t sample : samples) FuzzCheck(sample >> bits == 0);
}

void Numbers(fuzz::Input& input) {
    BlockIds ids;
    for (int frame = 0; frame < 32 && !input.Ended(); ++frame) {
        const bool whole = input.Below(2);
        const std::uint64_t high = static_cast<std::uint32_t>(input.Number());
        const std::uint64_t low = static_cast<std::uint32_t>(input.Number());
        FuzzCheck(ids.Next(high << 32 | low, whole) < 10000);
    }
}

void Shares(fuzz::Input& input) {
    const int packet_bytes = std::clamp(input.Number(), 1, 65535);
    const double rate = 1e6 * std::max(input.Number(), 1);
    const int cameras = std::max(input.Number(), 0);
    FuzzCheck(PacketDelayNs(packet_bytes, rate, cameras) >= 0);
    FuzzCheck(ShareBytesPerSecond(packet_bytes, rate, cameras) <= rate / 8);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    constexpr decltype(&Formats) kGroups[] = {Formats, Samples, Numbers, Shares};
    kGroups[input.Below(4)](input);
    return 0;
}
