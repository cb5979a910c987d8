// PNG files of grey and color pictures, made in memory. One object serves one thread at a time and keeps its memory
// from picture to picture.
#ifndef UTIL_PNGWRITER_H
#define UTIL_PNGWRITER_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "util/PngPicture.h"
#include "util/WorkBuffer.h"

namespace zel {

enum class PngFilters {
    kNone,    // rows as they are
    kChosen,  // each sample minus its left neighbour where that makes the file smaller
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
    PngFilters m_Filters;
    WorkBuffer m_Rows;
    WorkBuffer m_File;
};

}  // namespace zel

#endif
