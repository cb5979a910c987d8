#include "devices/gige/PixelFormats.h"

#include <algorithm>
#include <cstring>

#include "kernels/Kernels.h"

namespace zel::gige {

namespace {

struct Mosaic {
    std::string_view name;
    int phase;
};
constexpr Mosaic kMosaics[] = {{"Mono", 0}, {"BayerRG", 1}, {"BayerBG", 2}, {"BayerGR", 3}, {"BayerGB", 4}};

struct Depth {
    std::string_view name;
    int bits;
    Packing packing;
};
// In the order of preference.
constexpr Depth kDepths[] = {
    {"16", 16, Packing::kWords},          {"14", 14, Packing::kWords}, {"12p", 12, Packing::k12p},
    {"12Packed", 12, Packing::k12Packed}, {"12", 12, Packing::kWords}, {"10p", 10, Packing::k10p},
    {"10Packed", 10, Packing::k10Packed}, {"10", 10, Packing::kWords}, {"8", 8, Packing::kBytes},
};

std::ptrdiff_t Rank(const PixelFormat& format) {
    const auto* const depth = std::ranges::find_if(
        kDepths, [&](const Depth& d) { return d.bits == format.bits && d.packing == format.packing; });
    return depth - std::begin(kDepths) + (format.phase == 0 ? std::ssize(kDepths) : 0);
}

void Unpack12p(const std::uint8_t* bytes, std::span<std::uint16_t> samples) {
    const std::size_t pairs = samples.size() / 2;
    for (std::size_t i = 0; i < pairs; ++i, bytes += 3) {
        samples[2 * i] = static_cast<std::uint16_t>(bytes[0] | (bytes[1] & 15) << 8);
        samples[2 * i + 1] = static_cast<std::uint16_t>(bytes[1] >> 4 | bytes[2] << 4);
    }
    if (samples.size() % 2) samples.back() = static_cast<std::uint16_t>(bytes[0] | (bytes[1] & 15) << 8);
}

void Unpack10p(std::span<const std::uint8_t> bytes, std::span<std::uint16_t> samples) {
    for (std::size_t i = 0, bit = 0; i < samples.size(); ++i, bit += 10) {
        const std::uint8_t* const at = &bytes[bit / 8];
        samples[i] = static_cast<std::uint16_t>((at[0] | at[1] << 8) >> bit % 8 & 1023);
    }
}

void Unpack10Packed(const std::uint8_t* bytes, std::span<std::uint16_t> samples) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::uint8_t* const pair = bytes + i / 2 * 3;
        const int upper = pair[i % 2 * 2];
        samples[i] = static_cast<std::uint16_t>(upper << 2 | (pair[1] >> (i % 2 * 4) & 3));
    }
}

}  // namespace

std::optional<PixelFormat> PixelFormatOf(std::string_view name) {
    for (const Mosaic& mosaic : kMosaics) {
        if (!name.starts_with(mosaic.name)) continue;
        const auto* const depth = std::ranges::find(kDepths, name.substr(mosaic.name.size()), &Depth::name);
        if (depth == std::end(kDepths)) return std::nullopt;
        return PixelFormat{std::string(name), depth->bits, depth->packing, mosaic.phase};
    }
    return std::nullopt;
}

std::vector<PixelFormat> RankFormats(std::span<const std::string> names) {
    std::vector<PixelFormat> formats;
    for (const std::string& name : names) {
        if (auto format = PixelFormatOf(name)) formats.push_back(std::move(*format));
    }
    std::ranges::stable_sort(formats, {}, Rank);
    return formats;
}

int BitsOnLink(Packing packing) {
    switch (packing) {
        case Packing::kBytes:
            return 8;
        case Packing::kWords:
            return 16;
        case Packing::k10p:
            return 10;
        case Packing::k12p:
        case Packing::k12Packed:
        case Packing::k10Packed:
            break;
    }
    return 12;
}

std::size_t PackedBytes(Packing packing, std::size_t samples) {
    return (samples * static_cast<unsigned>(BitsOnLink(packing)) + 7) / 8;
}

void Unpack(Packing packing, std::span<const std::uint8_t> bytes, std::span<std::uint16_t> samples) {
    if (samples.empty()) return;
    switch (packing) {
        case Packing::kBytes:
            std::copy_n(bytes.begin(), samples.size(), samples.begin());
            break;
        case Packing::kWords:
            std::memcpy(samples.data(), bytes.data(), samples.size_bytes());
            break;
        case Packing::k12p:
            Unpack12p(bytes.data(), samples);
            break;
        case Packing::k12Packed:
            kernels::Kernels().unpack12(bytes, samples);
            break;
        case Packing::k10p:
            Unpack10p(bytes, samples);
            break;
        case Packing::k10Packed:
            Unpack10Packed(bytes.data(), samples);
            break;
    }
}

}  // namespace zel::gige
