/// Color pictures as PNG files whose samples are stored, not compressed: every viewer opens them, and nothing but the
/// standard library is needed.
///
///     signature (8)
///     IHDR: width, height, bits a channel, color type 2 (RGB) or 6 (RGBA), 0, 0, 0
///     sRGB: 0                                     when the samples have that curve
///     IDAT: 78 01, stored blocks of up to 65535 bytes (final?, length, ~length, bytes), Adler-32
///     IEND
/// Every chunk is: length, type, data, CRC-32 of type and data. All numbers are big-endian, block lengths
/// little-endian.
#ifndef ZEL_LAYER_STOREDPNG_H
#define ZEL_LAYER_STOREDPNG_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "zel/Frame.h"

namespace zel::detail {

using Bytes = std::vector<std::uint8_t>;

inline void append_word(Bytes& bytes, std::uint32_t word) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(word >> shift));
}

// CRC-32 of ISO 3309, as PNG uses it.
inline std::uint32_t crc32(const std::uint8_t* data, std::size_t size) {
    static const auto table = [] {
        std::array<std::uint32_t, 256> rows{};
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t row = i;
            for (int bit = 0; bit < 8; ++bit) row = (row >> 1) ^ (row & 1 ? 0xEDB88320u : 0);
            rows[i] = row;
        }
        return rows;
    }();
    std::uint32_t crc = 0xFFFFFFFFu;
    for (std::size_t i = 0; i < size; ++i) crc = table[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

// RFC 1950: two sums modulo 65521, which fit for 5552 bytes before the modulo is due.
inline std::uint32_t adler32(const Bytes& data) {
    constexpr std::uint32_t kModulus = 65521;
    constexpr std::size_t kRun = 5552;
    std::uint32_t low = 1, high = 0;
    for (std::size_t start = 0; start < data.size(); start += kRun) {
        const std::size_t end = (std::min)(data.size(), start + kRun);
        for (std::size_t i = start; i < end; ++i) high += low += data[i];
        low %= kModulus;
        high %= kModulus;
    }
    return high << 16 | low;
}

inline void append_chunk(Bytes& png, std::string_view type, const Bytes& data) {
    append_word(png, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = png.size();
    png.insert(png.end(), type.begin(), type.end());
    png.insert(png.end(), data.begin(), data.end());
    append_word(png, crc32(png.data() + start, png.size() - start));
}

// Rows of filter 0, red, green, blue (and opacity), 16-bit samples of `bits` shifted into the upper bits.
inline Bytes png_rows(const Frame& frame) {
    const ColorSetting& color = *frame.color();
    const std::size_t channels = color.channels(), samples = std::size_t{frame.width()} * channels;
    const bool wide = color.bytes_per_channel() == 2;
    const unsigned shift = 8 * color.bytes_per_channel() - color.output_bits();
    Bytes rows;
    rows.reserve((samples * color.bytes_per_channel() + 1) * frame.height());
    for (std::size_t y = 0; y < frame.height(); ++y) {
        rows.push_back(0);
        for (std::size_t i = 0; i < samples; ++i) {
            // Blue, green and red change places; a fourth channel stays.
            const std::size_t channel = i % channels;
            const std::size_t at = y * samples + (channel < 3 ? i - channel + 2 - channel : i);
            const unsigned value = wide ? static_cast<unsigned>(frame.color16()[at]) << shift : frame.color8()[at];
            if (wide) rows.push_back(static_cast<std::uint8_t>(value >> 8));
            rows.push_back(static_cast<std::uint8_t>(value));
        }
    }
    return rows;
}

inline Bytes stored_zlib(const Bytes& data) {
    constexpr std::size_t kBlock = 65535;
    Bytes zlib = {0x78, 0x01};
    zlib.reserve(data.size() + data.size() / kBlock * 5 + 16);
    for (std::size_t start = 0; start < data.size(); start += kBlock) {
        const std::size_t size = (std::min)(kBlock, data.size() - start);
        const bool final_block = start + size == data.size();
        const auto low = static_cast<std::uint8_t>(size), high = static_cast<std::uint8_t>(size >> 8);
        for (const int byte : {final_block ? 1 : 0, int{low}, int{high}, ~low & 0xFF, ~high & 0xFF}) {
            zlib.push_back(static_cast<std::uint8_t>(byte));
        }
        const auto from = data.begin() + static_cast<std::ptrdiff_t>(start);
        zlib.insert(zlib.end(), from, from + static_cast<std::ptrdiff_t>(size));
    }
    append_word(zlib, adler32(data));
    return zlib;
}

/// The frame's color picture as the bytes of a PNG file. It must have one.
inline Bytes stored_png(const Frame& frame) {
    const ColorSetting& color = *frame.color();
    Bytes png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header;
    append_word(header, frame.width());
    append_word(header, frame.height());
    for (const unsigned byte : {8 * color.bytes_per_channel(), color.channels() == 4 ? 6u : 2u, 0u, 0u, 0u}) {
        header.push_back(static_cast<std::uint8_t>(byte));
    }
    append_chunk(png, "IHDR", header);
    if (color.space == ColorSpace::srgb) append_chunk(png, "sRGB", {0});
    append_chunk(png, "IDAT", stored_zlib(png_rows(frame)));
    append_chunk(png, "IEND", {});
    return png;
}

}  // namespace zel::detail

#endif
