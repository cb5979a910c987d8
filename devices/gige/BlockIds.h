// The numbers that a camera gives its frames.
#ifndef GIGE_BLOCKIDS_H
#define GIGE_BLOCKIDS_H

#include <cstdint>

namespace zel::gige {

// Finds the frames of a run that nothing is known of but that their number is missing. Numbers go from 1 to 65535 and
// then on with 1; cameras with numbers of 64 bits do without the end. A run may begin with any.
class BlockIds {
  public:
    // A frame has come, whole or not. Result: how many did not since the one before. One that is late, or a camera that
    // begins to count anew, is no gap. A broken one may have lost its own number, too, and show that of an earlier
    // frame, or 0 in a buffer that never held one: then it is the next one.
    unsigned Next(std::uint64_t id, bool whole) {
        if (m_Last == kNone) {
            m_Last = id;
            return 0;
        }
        const bool is_short = id <= kShort && m_Last <= kShort;
        const std::uint64_t distance = is_short ? (id + kShort - m_Last) % kShort : id - m_Last;
        const bool follows = id != 0 && distance > 0 && distance <= kFarthest;
        m_Last = follows || whole ? id : is_short ? m_Last % kShort + 1 : m_Last + 1;
        return follows ? static_cast<unsigned>(distance - 1) : 0;
    }

  private:
    static constexpr std::uint64_t kNone = ~std::uint64_t{0};
    static constexpr std::uint64_t kShort = 65535;
    static constexpr std::uint64_t kFarthest = 10000;
    std::uint64_t m_Last = kNone;
};

}  // namespace zel::gige

#endif
