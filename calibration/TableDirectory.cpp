#include "calibration/TableDirectory.h"

#include <algorithm>
#include <cstddef>

namespace zel {

namespace {

std::uint32_t Load(const std::uint8_t* from, int size) {
    std::uint32_t value = 0;
    for (int i = size; i-- > 0;) value = value << 8 | from[i];
    return value;
}

void Store(std::uint8_t* to, std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i) to[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

}  // namespace

TableDirectory TableDirectory::Decode(const Bytes& bytes) {
    TableDirectory directory;
    directory.num_tables = bytes[0];
    const std::uint8_t* from = bytes.data() + 1;
    for (TableEntry& entry : directory.entries) {
        entry.rows = static_cast<int>(Load(from, 2));
        entry.columns = static_cast<int>(Load(from + 2, 2));
        entry.offset = Load(from + 4, 4);
        std::copy_n(from + 8, entry.digest.size(), entry.digest.begin());
        from += TableEntry::kSize;
    }
    return directory;
}

TableDirectory::Bytes TableDirectory::Encode() const {
    Bytes bytes{};
    bytes[0] = static_cast<std::uint8_t>(num_tables);
    std::uint8_t* to = bytes.data() + 1;
    for (const TableEntry& entry : entries) {
        Store(to, static_cast<std::uint32_t>(entry.rows), 2);
        Store(to + 2, static_cast<std::uint32_t>(entry.columns), 2);
        Store(to + 4, entry.offset, 4);
        std::copy(entry.digest.begin(), entry.digest.end(), to + 8);
        to += TableEntry::kSize;
    }
    return bytes;
}

}  // namespace zel
