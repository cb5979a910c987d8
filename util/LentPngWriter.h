// A PNG writer for the time of one picture. Some that are given back are kept with their memory, for whichever thread
// saves next.
#ifndef UTIL_LENTPNGWRITER_H
#define UTIL_LENTPNGWRITER_H

#include <cstddef>
#include <memory>

#include "util/PngWriter.h"

namespace zel {

class LentPngWriter {
  public:
    // What is kept at most, for each kind of filters: as many writers as four threads use, and of each the memory that
    // a picture of 16 million samples takes.
    static constexpr std::size_t kKeptWriters = 4;
    static constexpr std::size_t kKeptBytes = std::size_t{64} << 20;

    explicit LentPngWriter(PngFilters filters);
    ~LentPngWriter();
    LentPngWriter(const LentPngWriter&) = delete;
    LentPngWriter& operator=(const LentPngWriter&) = delete;

    // False when memory ran out.
    explicit operator bool() const { return m_Writer != nullptr; }
    PngWriter& operator*() const { return *m_Writer; }

  private:
    const PngFilters m_Filters;
    std::unique_ptr<PngWriter> m_Writer;
};

}  // namespace zel

#endif
