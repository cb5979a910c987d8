/// @file
/// The values of one camera's parameter table.
#ifndef DEVICES_KIT_PARAMETERTABLE_H
#define DEVICES_KIT_PARAMETERTABLE_H

#include <array>
#include <bitset>
#include <string>

#include "devices/kit/Entry.h"

namespace zel::kit {

/// What each entry holds, and whether the host knows it. A back end that gets to see it does so in its conversation
/// with the host alone; no lock is needed there. Indices are 0 to 88.
class ParameterTable {
  public:
    /// What the entry holds.
    const Value& Get(int index) const { return m_Values[static_cast<std::size_t>(index)]; }
    /// The entry as a number; 0 when it is a text.
    int Number(int index) const;
    /// The entry as a text; empty when it is none.
    std::string Text(int index) const;
    /// Changes an entry from inside the camera: no access check, no bounds. Texts are cut at 31 bytes.
    void Store(int index, Value value);

    /// Whether the entry changed since the host read it last.
    bool Unread(int index) const { return m_Unread.test(static_cast<std::size_t>(index)); }
    /// The host has read it.
    void MarkRead(int index) { m_Unread.reset(static_cast<std::size_t>(index)); }
    /// The host knows nothing.
    void MarkAllUnread() { m_Unread.set(); }

  private:
    std::array<Value, SYNC_TABLE_SELECT_MAX> m_Values{};
    std::bitset<SYNC_TABLE_SELECT_MAX> m_Unread;
};

}  // namespace zel::kit

#endif
