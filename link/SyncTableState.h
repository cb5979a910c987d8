// What a SyncTable keeps: the cache of the 89 entries and the table-wide fields.
#ifndef LINK_SYNCTABLESTATE_H
#define LINK_SYNCTABLESTATE_H

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "link/SyncTableIndex.h"
#include "platform/Mutex.h"

namespace zel {

// Flags of an entry.
inline constexpr int SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD = 0x02;
inline constexpr int SYNC_TABLE_FLAG_ANSWER_FROM_TARGET = 0x08;  // as 0x20 for reads; writes go to the camera
inline constexpr int SYNC_TABLE_FLAG_READABLE_FROM_CACHE = 0x10;
inline constexpr int SYNC_TABLE_FLAG_USE_TARGET_VALUE = 0x20;  // the entry lives in the host only
inline constexpr int SYNC_TABLE_FLAG_LOCKED = 0x10000000;      // writes are refused (and report success)

// An integer that some operations read without the exchange lock. Each stands alone: no order between them is needed.
class RelaxedInt {
  public:
    explicit RelaxedInt(int value = 0) : m_Value(value) {}
    int Load() const { return m_Value.load(std::memory_order_relaxed); }
    void Store(int value) { m_Value.store(value, std::memory_order_relaxed); }
    void ClearBits(int bits) { m_Value.fetch_and(~bits, std::memory_order_relaxed); }

  private:
    std::atomic<int> m_Value;
};

struct SyncTableEntry {
    SyncTableAttributes m_Attributes{};               // as last read or overloaded; behind SyncTableState::m_RecordLock
    std::unique_ptr<SyncTableAttributes> m_Overload;  // behind SyncTableState::m_RecordLock
    RelaxedInt m_Flags{SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD};
    RelaxedInt m_Target;                  // last value written
    RelaxedInt m_Value;                   // last value read
    std::uint32_t m_AttributesTimeMs{0};  // when the attributes were read; behind the exchange lock
};

struct SyncTableState {
    static constexpr int kLastRequestSize = 256;

    struct Request {
        int m_Command = 0;
        int m_Index = 0;
        int m_Value = 0;
    };

    // On purpose: of all entries only H_BIN starts at 1.
    SyncTableState() {
        m_Entries[H_BIN].m_Target.Store(1);
        m_Entries[H_BIN].m_Value.Store(1);
    }

    // A record lock is held for a copy only, never around a call of the transport or the logger.
    SyncTableAttributes Attributes(const SyncTableEntry& entry) {
        const platform::ScopedLock lock(m_RecordLock);
        return entry.m_Attributes;
    }

    std::array<SyncTableEntry, SYNC_TABLE_SELECT_MAX> m_Entries;
    platform::Mutex m_RecordLock;
    RelaxedInt m_CachedReads;
    // Behind the exchange lock. The requests are kept for a look with a debugger.
    int m_LastException = 0;  // 0, or kExceptionBadIndex
    std::array<unsigned char, kLastRequestSize> m_LastRequest{};
    Request m_LastGet;

    // When the last command was sent; once its exchange has succeeded, how many milliseconds that took. On purpose: one
    // for all tables of the process, so the "took" figures mix when several cameras are busy.
    static inline std::atomic<std::uint32_t> m_CommandTimeMs{0};
};

}  // namespace zel

#endif
