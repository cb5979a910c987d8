// Corrects the rows of a frame that is being put together: each half of a row goes through its tap's lookup table.
#ifndef IMAGE_TAPROWS_H
#define IMAGE_TAPROWS_H

#include <cstdint>
#include <span>
#include <utility>

#include "tapbalance/LookupTables.h"

namespace zel {

class TapRows {
  public:
    // Does nothing without tables for as many taps.
    TapRows(TapTables tables, int taps, std::size_t h)
        : m_Tables(std::move(tables)), m_FourTaps(taps == 4), m_Half(h / 2) {
        m_There = m_Tables && m_Tables.taps >= taps && (taps == 2 || taps == 4);
    }
    bool There() const { return m_There; }

    // Row number y of the picture. Taps 1 and 2 are at its top left and right, 3 and 4 at its bottom right and left.
    void Correct(std::span<std::uint16_t> row, std::size_t y) const {
        if (!m_There) return;
        const bool bottom = m_FourTaps && y >= m_Half;
        Half(row.first(row.size() / 2), bottom ? 3 : 0);
        Half(row.subspan(row.size() / 2), bottom ? 2 : 1);
    }

  private:
    void Half(std::span<std::uint16_t> samples, std::size_t tap) const {
        // On purpose: only two-tap frames mask the result.
        m_Tables.LookUp(samples, tap, m_FourTaps ? 0xFFFF : m_Tables.mask);
    }

    TapTables m_Tables;
    bool m_FourTaps;
    bool m_There;
    std::size_t m_Half;
};

}  // namespace zel

#endif
