#include <cstring>

#include "link/SyncTable.h"
#include "platform/Clock.h"

namespace zel {

namespace {

constexpr int kRetries = 3;
constexpr std::uint32_t kRetryPauseMs = 100;

void StoreInt(void* out, int value) {
    if (out) std::memcpy(out, &value, sizeof value);
}

}  // namespace

bool SyncTable::Get(int index, void* out) {
    Entry* entry = FindEntry(index);
    if (!entry) return false;
    const int flags = entry->m_Flags.Load();
    if (flags & (SYNC_TABLE_FLAG_USE_TARGET_VALUE | SYNC_TABLE_FLAG_ANSWER_FROM_TARGET)) {
        StoreInt(out, entry->m_Target.Load());
        ZEL_LOG(m_Logger, kLogTrace, "SyncTable::Get", "SyncTable::Get() - SYNC_TABLE_FLAG_USE_TARGET_VALUE\n");
        return true;
    }
    LogLockState(index, flags);
    if ((flags & SYNC_TABLE_FLAG_READABLE_FROM_CACHE) && m_State.m_CachedReads.Load() == 1) {
        StoreInt(out, entry->m_Value.Load());
        return true;
    }

    const platform::ScopedLock lock(m_ExchangeLock);
    const platform::TimerResolution resolution;
    const bool is_block = SyncTableIsBlock(index);
    int value = 0;
    int* value_out = out ? static_cast<int*>(out) : &value;
    if (!(is_block ? GetFromCamera(index, nullptr, out) : GetFromCamera(index, value_out, nullptr))) return false;
    if (!is_block) entry->m_Value.Store(*value_out);
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::Get", "(index:%d (0x%08x) (%s), value_ptr:%d value:%d)", index,
            static_cast<unsigned>(index), SyncTableName(index), is_block ? 0 : *value_out, entry->m_Value.Load());
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::Get", " Exiting returning true\n");
    return true;
}

void SyncTable::LogLockState(int index, int flags) {
    if (!m_Logger.Enabled()) return;
    const Entry& entry = *FindEntry(index);
    const SyncTableAttributes attributes = m_State.Attributes(entry);
    if (flags & SYNC_TABLE_FLAG_LOCKED) {
        ZEL_LOG(m_Logger, kLogTrace, "SyncTable::Get",
                "SyncTable::Get(index:%s) is LOCKED.  min:%d  max:%d  value:%d\n", SyncTableName(index),
                attributes.minimum, attributes.maximum, entry.m_Value.Load());
    } else {
        ZEL_LOG(m_Logger, kLogTrace, "SyncTable::Get",
                "SyncTable::Get(index:%s) is not LOCKED. min:%d max:%d value:%d\n", SyncTableName(index),
                attributes.minimum, attributes.maximum, entry.m_Value.Load());
    }
}

// The first attempt and up to three more. Each pause gives the rest of a broken reply time to arrive. Runs behind the
// exchange lock.
bool SyncTable::GetFromCamera(int index, int* value_out, void* block_out) {
    m_State.m_LastGet = {SYNC_TABLE_CMD_GET, index, 0};
    for (int retry = 1;; ++retry) {
        if (!CommandSend(SYNC_TABLE_CMD_GET, index, 0)) {
            ZEL_LOG(m_Logger, kLogError, "SyncTable::Get",
                    "%s :SyncTable::Get(index:%s) CommandSend(SYNC_TABLE_CMD_GET) failed\n",
                    platform::TimeOfDay().c_str(), SyncTableName(index));
            return false;
        }
        m_State.m_LastException = 0;
        if (CommandRecv(value_out, block_out, kBlockCapacity)) return true;
        if (m_State.m_LastException == kExceptionBadIndex) {
            ZEL_LOG(m_Logger, kLogError, "SyncTable::Get", "BAD INDEX EXCEPTION");
            return false;
        }
        if (m_ExchangeLock.Cancelled()) return false;
        if (retry > kRetries) {
            ZEL_LOG(m_Logger, kLogError, "SyncTable::Get",
                    "%s: SyncTable::Get(index:%s) CommandRecv() failed - no retry, exiting with failure\n",
                    platform::TimeOfDay().c_str(), SyncTableName(index));
            return false;
        }
        ZEL_LOG(m_Logger, kLogError, "SyncTable::Get",
                "%s: SyncTable::Get(index:%s) CommandRecv() failed - retry attempt:%d\n", platform::TimeOfDay().c_str(),
                SyncTableName(index), retry);
        platform::SleepMilliseconds(kRetryPauseMs);
    }
}

}  // namespace zel
