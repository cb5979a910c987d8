/// @file
/// The entries of a camera's parameter table, as a back end describes them. Their numbers, 0 to 88, are those of
/// link/SyncTableIndex.h (EXPOSURE_TIME, H_SIZE ...).
#ifndef DEVICES_KIT_ENTRY_H
#define DEVICES_KIT_ENTRY_H

#include <string>
#include <string_view>
#include <variant>

#include "link/SyncTableIndex.h"

namespace zel::kit {

/// How a value travels: 4 bytes, 8 bytes, 32 bytes with a zero at the end. The numbers are those of the attribute
/// record.
enum class EntryType : int { kInteger = 3, kDouble = 6, kText = 7 };

/// What the host may do. A write to kReadOnly and to kConstant is refused with different codes.
enum class EntryAccess { kWritable, kReadOnly, kConstant };

/// What a host may know of an entry before it touches it. Bounds are inclusive and in the entry's unit (times in
/// microseconds); those of a text are not looked at.
struct Attributes {
    EntryType type = EntryType::kInteger;         ///< how its value travels
    EntryAccess access = EntryAccess::kWritable;  ///< what the host may do
    int minimum = 0;                              ///< smallest value
    int maximum = 0;                              ///< largest value
    int default_value = 0;  ///< what the entry holds when the camera is switched on; texts are stored by the back end

    /// The same entry with other bounds.
    Attributes Bounded(int least, int most, int preset) const { return {type, access, least, most, preset}; }
};

/// The value of an entry: of the alternative that its type names.
using Value = std::variant<int, double, std::string>;

inline constexpr int kTextCapacity = 32;  ///< bytes of a text entry with its zero; longer texts are cut

/// What the parameter table of this system's own cameras says of an entry: type, access and bounds that do not depend
/// on the sensor (those that do are 0). A back end starts from it.
/// @param index 0 to 88
const Attributes& StandardAttributes(int index);

/// The sensor as its frames show it.
struct SensorSize {
    int width = 0;   ///< columns
    int height = 0;  ///< rows
    int bits = 0;    ///< of a sample
};
/// StandardAttributes() with the bounds that a sensor sets: H_SIZE, V_SIZE, the region's four, BITS_PER_PIXEL ...
/// @param index  0 to 88
/// @param sensor its size and depth
Attributes SensorAttributes(int index, const SensorSize& sensor);
/// Whether every camera has the entry: identity, size, region, run, sequence, triggers, calculation. The kit follows
/// them by itself, a back end need not know them.
/// @param index 0 to 88
bool IsBasicEntry(int index);

/// The entry's name as a host sees it, "EXPOSURE_TIME"; "?" outside 0 to 88.
const char* EntryName(int index);
/// The index of a name, or -1.
int EntryIndex(std::string_view name);

}  // namespace zel::kit

#endif
