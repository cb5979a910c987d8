#include "util/PngWriter.h"

#include "util/Deflate.h"
#include "util/PngFile.h"
#include "util/PngRows.h"

namespace zel {

std::span<const std::uint8_t> PngWriter::Encode(const PngPicture& picture) {
    if (!picture.pixels || picture.width == 0 || picture.height == 0) return {};
    const std::uint64_t row_size = PngRowSize(picture);
    if (row_size > UINT64_MAX / 2 / picture.height) return {};
    const std::span<std::uint8_t> rows = m_Rows.Take(row_size * picture.height);
    if (rows.empty()) return {};
    MakePngRows(picture, 0, picture.height, PngFilter::kNone, rows);
    const std::size_t offset = PngStreamOffset(picture.light);
    const std::size_t bound = ZlibStreamBound(rows.size());
    const std::span<std::uint8_t> file = m_File.Take(std::uint64_t{offset} + bound + kPngEndSize);
    if (file.empty()) return {};
    const std::size_t size = ZlibCompress(rows, file.subspan(offset, bound));
    if (size == 0 || size > kMaxPngStreamSize) return {};
    const std::span<std::uint8_t> contents = file.first(offset + size + kPngEndSize);
    FramePngStream(picture, contents);
    return contents;
}

void PngWriter::Trim(std::size_t most) {
    if (m_Rows.Size() + m_File.Size() <= most) return;
    m_Rows.Release();
    m_File.Release();
}

}  // namespace zel
