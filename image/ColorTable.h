// A table that replaces the samples of each channel: input linearization or output non-linearization.
#ifndef IMAGE_COLORTABLE_H
#define IMAGE_COLORTABLE_H

#include <cstdint>
#include <memory>
#include <vector>

#include "kernels/ColorKernels.h"

namespace zel {

class ColorTable {
  public:
    ColorTable() = default;
    ColorTable(const ColorTable&) = delete;  // the maps point into it
    ColorTable& operator=(const ColorTable&) = delete;

    // From num_values entries of `channels` values each, interleaved. Null when memory ran out.
    static std::shared_ptr<const ColorTable> Make(const unsigned short* entries, unsigned num_values,
                                                  unsigned channels);

    // Only a table of three channels can be applied.
    bool Usable() const { return m_Usable; }
    // For the kernels: a subtraction where the entries are one, otherwise the entries for every sample there can be.
    // Samples beyond the table's end get its last value; channels with the same entries share them.
    const kernels::ChannelMaps& Maps() const { return m_Maps; }

  private:
    void Take(unsigned channel, std::vector<std::uint16_t>&& entries);

    bool m_Usable = false;
    kernels::ChannelMaps m_Maps;
    std::vector<std::uint16_t> m_Entries[3];  // what the maps point into
};

}  // namespace zel

#endif
