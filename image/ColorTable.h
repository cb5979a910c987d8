// A table that replaces the samples of each channel: input linearization or output non-linearization.
#ifndef IMAGE_COLORTABLE_H
#define IMAGE_COLORTABLE_H

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace zel {

class ColorTable {
  public:
    // From num_values entries of `channels` values each, interleaved. Null when memory ran out.
    static std::shared_ptr<const ColorTable> Make(const unsigned short* entries, unsigned num_values,
                                                  unsigned channels);

    // Only a table of three channels can be applied.
    bool Usable() const { return m_Usable; }
    // One channel's values for every sample there can be, ready for the lookup kernel; samples beyond the table's end
    // get its last value.
    const std::uint16_t* Channel(int channel) const { return m_Channels[static_cast<unsigned>(channel)].data(); }

  private:
    bool m_Usable = false;
    std::array<std::vector<std::uint16_t>, 3> m_Channels;
};

}  // namespace zel

#endif
