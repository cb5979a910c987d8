// Bytes and frames over the last second, in ten slots of a tenth of a second.
#ifndef DEVICES_KIT_RATEMETER_H
#define DEVICES_KIT_RATEMETER_H

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace zel::kit {

class RateMeter {
  public:
    using Clock = std::chrono::steady_clock;

    void Add(std::uint64_t bytes, Clock::time_point now) {
        Slot& slot = m_Slots[static_cast<std::size_t>(SlotNumber(now) % kSlots)];
        if (slot.number != SlotNumber(now)) slot = {SlotNumber(now), 0, 0};
        slot.bytes += bytes;
        ++slot.frames;
    }
    double BytesPerSecond(Clock::time_point now) const { return static_cast<double>(Sum(now).bytes); }
    double FramesPerSecond(Clock::time_point now) const { return static_cast<double>(Sum(now).frames); }

  private:
    static constexpr std::uint64_t kSlots = 10;
    struct Slot {
        std::uint64_t number;
        std::uint64_t bytes;
        std::uint64_t frames;
    };

    static std::uint64_t SlotNumber(Clock::time_point now) {
        using Tenths = std::chrono::duration<std::uint64_t, std::deci>;
        return std::chrono::duration_cast<Tenths>(now.time_since_epoch()).count() + kSlots;
    }
    Slot Sum(Clock::time_point now) const {
        Slot sum{};
        for (const Slot& slot : m_Slots) {
            if (slot.number + kSlots <= SlotNumber(now)) continue;
            sum.bytes += slot.bytes;
            sum.frames += slot.frames;
        }
        return sum;
    }

    std::array<Slot, kSlots> m_Slots{};
};

}  // namespace zel::kit

#endif
