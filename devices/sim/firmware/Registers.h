// The values of one camera's parameter table, with the bounds that its sensor sets.
#ifndef SIM_REGISTERS_H
#define SIM_REGISTERS_H

#include <array>
#include <bitset>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "devices/sim/firmware/RegisterRows.h"
#include "devices/sim/sensor/CameraModel.h"

namespace zel::sim {

class Registers {
  public:
    explicit Registers(const CameraModel& model);

    // Everything but texts goes back to its default.
    void Reset();

    bool Has(int index) const;  // within 0 to 88 and part of this model
    const RegisterRow& Row(int index) const { return m_Rows[static_cast<unsigned>(index)]; }

    int Value(int index) const { return m_Values[static_cast<unsigned>(index)].word; }
    // Changes an entry from inside the camera: no access check, no bounds.
    void Store(int index, int value);
    std::string Text(int index) const { return m_Values[static_cast<unsigned>(index)].text.data(); }
    void StoreText(int index, const std::string& text);
    void StoreNumber(int index, double number);

    // The host's write: checks access, length and bounds. Result: 0 or an exception code; a refused write changes
    // nothing.
    int Write(int index, std::span<const std::uint8_t> data);
    // Appends the value as it travels.
    void AppendValue(int index, std::vector<std::uint8_t>& to) const;
    // Appends the 56 bytes of the attribute record.
    void AppendAttributes(int index, std::vector<std::uint8_t>& to) const;

    // Entries that changed since the host read them last.
    std::vector<std::uint8_t> Unread() const;
    void MarkRead(int index) { m_Unread.reset(static_cast<unsigned>(index)); }

  private:
    struct Cell {
        int word = 0;
        double number = 0.0;
        std::array<char, kTextCapacity> text{};
    };

    void Bound(int index, int minimum, int maximum, int default_value);
    void FitToModel(const CameraModel& model);
    int WriteInteger(int index, std::span<const std::uint8_t> data);
    bool RegionFits(int index, int value) const;
    void FollowRegion(int index);

    std::array<RegisterRow, SYNC_TABLE_SELECT_MAX> m_Rows;
    std::array<Cell, SYNC_TABLE_SELECT_MAX> m_Values{};
    std::bitset<SYNC_TABLE_SELECT_MAX> m_Unread;
    bool m_Color;
};

// Little-endian fields of the wire.
void AppendLittle32(std::vector<std::uint8_t>& to, std::uint32_t value);
std::uint32_t Little32(std::span<const std::uint8_t> bytes);

}  // namespace zel::sim

#endif
