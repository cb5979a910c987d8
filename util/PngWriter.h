// PNG files of grey and color pictures, made in memory. One object serves one thread at a time and keeps its memory
// from picture to picture.
#ifndef UTIL_PNGWRITER_H
#define UTIL_PNGWRITER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "util/Deflate.h"
#include "util/LiteralDeflate.h"
#include "util/PngPicture.h"
#include "util/PngRows.h"
#include "util/WorkBuffer.h"

namespace zel {

enum class PngFilters {
    kNone,    // rows as they are
    kChosen,  // each byte minus that of the pixel before where this makes the file smaller
};

class PngWriter {
  public:
    explicit PngWriter(PngFilters filters) : m_Filters(filters) {}

    // The whole file. It stands in this object's memory until it is used again. Empty when the picture has no pixels,
    // is too large for a file, or memory runs out.
    std::span<const std::uint8_t> Encode(const PngPicture& picture);

    // Gives memory back when it is more than `most` bytes.
    void Trim(std::size_t most);

  private:
    // How a picture is to be compressed.
    struct Choice {
        PngFilter filter = PngFilter::kNone;
        bool literals = false;
    };
    Choice Choose(const PngPicture& picture);
    std::span<const std::uint8_t> Sample(const PngPicture& picture, PngFilter filter);
    std::size_t SearchedSize(std::span<const std::uint8_t> sample);
    std::size_t PutLiterals(const PngPicture& picture, PngFilter filter, std::span<std::uint8_t> out);
    std::size_t PutSearched(const PngPicture& picture, PngFilter filter, std::span<std::uint8_t> out);

    PngFilters m_Filters;
    Deflate m_Deflate;
    std::unique_ptr<LiteralStream> m_Literals;
    WorkBuffer m_Rows;  // some, or all where repetitions are searched for
    WorkBuffer m_File;
};

}  // namespace zel

#endif
