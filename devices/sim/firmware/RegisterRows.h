// The camera's parameter table: one row says everything about an entry that does not depend on the camera model.
#ifndef SIM_REGISTERROWS_H
#define SIM_REGISTERROWS_H

#include <array>

#include "link/SyncTableIndex.h"

namespace zel::sim {

enum class RegisterType : int { kInteger = 3, kDouble = 6, kText = 7 };  // the codes of the attribute record

enum class RegisterAccess { kWritable, kReadOnly, kConstant };

struct RegisterRow {
    int index;
    RegisterType type;
    RegisterAccess access;
    bool color_only;  // a monochrome camera does not have the entry
    int minimum;
    int maximum;
    int default_value;
};

inline constexpr int kTextCapacity = 32;  // bytes of a text entry, zero-terminated

const std::array<RegisterRow, SYNC_TABLE_SELECT_MAX>& RegisterRows();

// The entry's name, as in its attribute record; "?" outside 0 to 88.
const char* RegisterName(int index);
// The index of a name, or -1.
int RegisterIndex(const char* name);

}  // namespace zel::sim

#endif
