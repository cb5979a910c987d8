#include <new>

#include "link/SyncTable.h"
#include "platform/Clock.h"

namespace zel {

bool SyncTable::GetAttribute(int index, SyncTableAttributes* record) {
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::GetAttribute", "SyncTable::GetAttribute(%d %s) enter", index,
            SyncTableName(index));
    Entry* entry = FindEntry(index);
    if (!entry) return false;
    const platform::ScopedLock lock(m_ExchangeLock);
    const platform::TimerResolution resolution;

    SyncTableAttributes attributes{};
    bool is_overloaded = false;
    {
        const platform::ScopedLock record_lock(m_State.m_RecordLock);
        is_overloaded = entry->m_Overload != nullptr;
        attributes = is_overloaded ? *entry->m_Overload : entry->m_Attributes;
    }
    if (is_overloaded) {
        ZEL_LOG(m_Logger, kLogTrace, "SyncTable::GetAttribute",
                "SyncTable::GetAttribute(%s) - min:%d max:%d PARAMETER ATTRIB are OVERLOADED\n", SyncTableName(index),
                attributes.minimum, attributes.maximum);
    } else {
        ZEL_LOG(m_Logger, kLogTrace, "SyncTable::GetAttribute",
                "SyncTable::GetAttribute(%s) - PARAMETER ATTRIB are NOT OVERLOADED\n", SyncTableName(index));
        if ((entry->m_Flags.Load() & SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD) && !ReadAttributes(index, attributes)) {
            ZEL_LOG(m_Logger, kLogTrace, "SyncTable::GetAttribute", "-------- EXIT --------");
            return false;
        }
    }
    if (record) *record = attributes;
    return true;
}

// Asks the camera and fills the cache. Runs behind the exchange lock.
bool SyncTable::ReadAttributes(int index, SyncTableAttributes& attributes) {
    const char* const name = SyncTableName(index);
    if (!CommandSend(SYNC_TABLE_CMD_GET_ATTRIBUTES, index, 0)) {
        ZEL_LOG(m_Logger, kLogError, "SyncTable::GetAttribute",
                "CommandSend(SYNC_TABLE_CMD_GET_ATTRIBUTES) %d %s failed", index, name);
        return false;
    }
    attributes = {};
    if (!CommandRecv(nullptr, &attributes, sizeof attributes)) {
        ZEL_LOG(m_Logger, kLogError, "SyncTable::GetAttribute",
                "CommandRecv(SYNC_TABLE_CMD_GET_ATTRIBUTES) %d %s failed", index, name);
        return false;
    }
    Entry& entry = *FindEntry(index);
    {
        const platform::ScopedLock record_lock(m_State.m_RecordLock);
        entry.m_Attributes = attributes;
    }
    entry.m_Flags.ClearBits(SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD);
    entry.m_AttributesTimeMs = platform::MillisecondClock();
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::GetAttribute", " name:%15.*s  flags:0x%08x min:%5d max:%5d def:%5d\n",
            static_cast<int>(sizeof attributes.name), attributes.name, static_cast<unsigned>(attributes.flags),
            attributes.minimum, attributes.maximum, attributes.default_value);
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::GetAttribute", "%3d (%s)) - exit success. took %d ms", index, name,
            static_cast<int>(State::m_CommandTimeMs.load()));
    return true;
}

bool SyncTable::OverloadAttr(int index, const SyncTableAttributes* record) {
    Entry* entry = FindEntry(index);
    if (!entry || !record) return false;
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::OverloadAttr", "SyncTable::OverloadAttr(index:%s)\n",
            SyncTableName(index));
    {
        const platform::ScopedLock record_lock(m_State.m_RecordLock);
        if (!entry->m_Overload) entry->m_Overload.reset(new (std::nothrow) SyncTableAttributes{});
        if (!entry->m_Overload) return false;
        *entry->m_Overload = *record;
        entry->m_Attributes = *record;
    }
    entry->m_Value.Store(record->default_value);
    return true;
}

}  // namespace zel
