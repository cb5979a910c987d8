#include "link/SyncTable.h"

namespace zel {

SyncTable::SyncTable(ICameraInterface* camera, const char* instance_name, ExchangeLock& exchange_lock)
    : m_Camera(camera), m_ExchangeLock(exchange_lock), m_Logger("SyncTable", instance_name) {}

SyncTable::~SyncTable() = default;

// Null for an index outside the table.
SyncTable::Entry* SyncTable::FindEntry(int index) {
    if (index < 0 || index >= SYNC_TABLE_SELECT_MAX) return nullptr;
    return &m_State.m_Entries[static_cast<std::size_t>(index)];
}

bool SyncTable::GetTarget(int index, int* out) {
    const Entry* entry = FindEntry(index);
    if (!entry) return false;
    if (out) *out = entry->m_Target.Load();
    return true;
}

int SyncTable::GetFlags(int index) {
    const Entry* entry = FindEntry(index);
    return entry ? entry->m_Flags.Load() : 0;
}

bool SyncTable::SetFlags(int index, int flags) {
    Entry* entry = FindEntry(index);
    if (!entry) return false;
    entry->m_Flags.Store(flags);
    return true;
}

void SyncTable::SetCachedReads(int on) { m_State.m_CachedReads.Store(on); }

}  // namespace zel
