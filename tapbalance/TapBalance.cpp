#include "tapbalance/TapBalance.h"

#include <cmath>

#include "platform/Clock.h"

namespace zel {

namespace {
constexpr const char* kEnable = "TapBalance::Enable";
constexpr const char* kBits = "TapBalance::SetBitsPerPixel";
constexpr const char* kSelect = "TapBalance::SelectTable";
constexpr const char* kSetGain = "TapBalance::SetGain";
constexpr const char* kCalculate = "TapBalance::CalculateLUT";
constexpr const char* kAllocate = "TapBalance::AllocateTable";
constexpr const char* kPrint = "TapBalance::PrintTable";
}  // namespace

TapBalance::TapBalance(TextProtocol& text_protocol, const char* instance_name)
    : m_Logger("TapBalance", instance_name), m_Flash(text_protocol, m_Logger) {}

bool TapBalance::Enable(bool enable) {
    ZEL_LOG(m_Logger, kLogTrace, kEnable, "enable:%d  m_DataValid:%d m_DataFault:%d", enable ? 1 : 0,
            m_DataValid ? 1 : 0, m_DataFault ? 1 : 0);
    if (!m_DataValid || m_DataFault) {
        m_Enabled = false;
        return false;
    }
    m_Enabled = enable;
    return true;
}

bool TapBalance::SetBitsPerPixel(int bits_per_pixel) {
    if (bits_per_pixel < 0 || bits_per_pixel > LookupTables::kMostBits) {
        ZEL_LOG(m_Logger, kLogError, kBits, "***ERROR***: %d bits per pixel are out of bounds", bits_per_pixel);
        return false;
    }
    const platform::ScopedLock lock(m_Lock);
    if (bits_per_pixel == m_BitsPerPixel) return true;
    m_BitsPerPixel = bits_per_pixel;
    return CalculateLUT();
}

bool TapBalance::SelectTable(int select) {
    const platform::ScopedLock lock(m_Lock);
    m_TableSelect = select;
    if (IsTable(select)) return true;
    ZEL_LOG(m_Logger, kLogError, kSelect, "***ERROR***: table %d is none", select);
    return false;
}

bool TapBalance::SetGain(float gain) {
    const platform::ScopedLock lock(m_Lock);
    ZEL_LOG(m_Logger, kLogTrace, kSetGain, "SetGain - gain:%f", double{gain});
    if (gain == m_Gain) {
        ZEL_LOG(m_Logger, kLogTrace, kSetGain, "TapBalance::SetGain(gain:%f) is equal to m_Gain:%f", double{gain},
                double{m_Gain});
        return true;
    }
    if (!std::isfinite(gain)) {
        ZEL_LOG(m_Logger, kLogError, kSetGain, "***ERROR***: gain:%f is no gain", double{gain});
        return false;
    }
    m_Gain = gain;
    return CalculateLUT();
}

bool TapBalance::CalculateLUT() {
    const platform::ScopedLock lock(m_Lock);
    bool made = true;
    for (int select = 0; select < kTapTables; ++select) {
        if (m_TapBalanceData[Index(select)].configured) made = MakeLUT(select) && made;
    }
    return made;
}

// A table that gives no lookup tables leaves none behind: the old ones belong to other data or another gain.
bool TapBalance::MakeLUT(int select) {
    const Slot& slot = m_TapBalanceData[Index(select)];
    if (!slot.data || !slot.filled) return true;
    const platform::TimerResolution resolution;
    const int entries = 1 << m_BitsPerPixel;
    ZEL_LOG(m_Logger, kLogTrace, kCalculate, "CalculateLUT() gain:%f num_entries:%d num_taps:%d m_MaxNumPixelValues:%d",
            double{m_Gain}, entries, slot.data->Taps(), entries);
    std::shared_ptr<const LookupTables> tables;
    const bool made = Guarded(kCalculate, [&]() ZEL_REQUIRES(m_Lock) {
        if (slot.data->Rows() < kFitRows) {
            ZEL_LOG(m_Logger, kLogError, kCalculate, "***ERROR***: table %d has %d rows, a line needs %d", select,
                    slot.data->Rows(), kFitRows);
            return false;
        }
        tables = MakeLookupTables(*slot.data, m_BitsPerPixel, m_Gain, Published(select).get());
        return true;
    });
    Publish(select, std::move(tables));
    return made;
}

// Makes room for a table of the shape that a directory entry tells; one of that shape stays as it is.
bool TapBalance::AllocateTable(int select, const TableEntry& entry) {
    Slot& slot = m_TapBalanceData[Index(select)];
    slot.offset = entry.offset;
    if (slot.data && slot.configured && slot.data->Rows() == entry.rows && slot.data->Columns() == entry.columns) {
        return true;
    }
    DropTable(select);
    slot.data.reset();
    slot.filled = false;
    if (entry.columns != 3 && entry.columns != 5) {
        ZEL_LOG(m_Logger, kLogError, kAllocate, "***ERROR***: m_Numcols is invalid");
        return false;
    }
    if (!TapTable::IsValidShape(entry.rows, entry.columns)) return false;
    slot.configured = Guarded(kAllocate, [&]() ZEL_REQUIRES(m_Lock) {
        slot.data.emplace(entry.rows, entry.columns - 1);
        return true;
    });
    return slot.configured;
}

bool TapBalance::StoreTable(int select, TapTable table) {
    Slot& slot = m_TapBalanceData[Index(select)];
    slot.data = std::move(table);
    slot.configured = true;
    slot.filled = true;
    return MakeLUT(select);
}

bool TapBalance::StoreTables(std::array<std::optional<TapTable>, kTapTables>& tables) {
    const platform::ScopedLock lock(m_Lock);
    for (int select = 0; select < kTapTables; ++select) {
        if (!StoreTable(select, std::move(*tables[Index(select)]))) return false;
    }
    m_DataValid = true;
    return true;
}

// The table is not corrected with any more.
void TapBalance::DropTable(int select) {
    m_TapBalanceData[Index(select)].configured = false;
    Publish(select, nullptr);
}

void TapBalance::Publish(int select, std::shared_ptr<const LookupTables> tables) {
    const platform::ScopedLock lock(m_PublishLock);
    m_Published[Index(select)].swap(tables);
}

std::shared_ptr<const LookupTables> TapBalance::Published(int select) const {
    const platform::ScopedLock lock(m_PublishLock);
    return m_Published[Index(select)];
}

bool TapBalance::PrintTable() {
    const platform::ScopedLock lock(m_Lock);
    const int select = m_TableSelect;
    if (!IsTable(select) || !m_TapBalanceData[Index(select)].data) {
        ZEL_LOG(m_Logger, kLogError, kPrint, "TapBalance::PrintTable() - m_TapBalanceData[select:%d] is 0\n", select);
        return false;
    }
    const TapTable& table = *m_TapBalanceData[Index(select)].data;
    for (int row = 0; row < table.Rows(); ++row) {
        const TapRow values = table.Row(row);
        ZEL_LOG(m_Logger, kLogTrace, kPrint, "row:%d mV:%f tap gains:%f %f %f %f", row, double{values.millivolts},
                double{values.gains[0]}, double{values.gains[1]}, double{values.gains[2]}, double{values.gains[3]});
    }
    return true;
}

}  // namespace zel
