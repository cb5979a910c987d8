// The host's side of the camera's parameter table: reads and writes its 89 entries over a binary request/reply
// protocol.
#ifndef LINK_SYNCTABLE_H
#define LINK_SYNCTABLE_H

#include <array>
#include <cstdint>

#include "link/ExchangeLock.h"
#include "link/SyncTableIndex.h"
#include "link/SyncTableState.h"
#include "sdk/Logger.h"

class ICameraInterface;

namespace zel {

class SyncTable {
  public:
    static constexpr int kBlockCapacity = 32;    // bytes that Get of a block entry may store
    static constexpr int kBlockDataOffset = 10;  // where the data start in the buffer given to the block form of Set

    SyncTable(ICameraInterface* camera, const char* instance_name, ExchangeLock& exchange_lock);
    virtual ~SyncTable();
    SyncTable(const SyncTable&) = delete;
    SyncTable& operator=(const SyncTable&) = delete;

    // Reads an entry: a 32-bit value into *out (an int), or a block of up to 32 bytes. Up to four attempts.
    virtual bool Get(int index, void* out);
    // Writes a block: num_bytes bytes from buffer + 10; the ten bytes before are not read, except that the first word
    // of `buffer` is compared with the entry's target: when equal nothing is sent.
    virtual bool Set(int index, const void* buffer, int num_bytes);
    // Writes a 32-bit value. No retry. A locked entry reports success.
    virtual bool Set(int index, int value);
    virtual bool Reserved4(int, int) { return true; }
    // The value last written, without traffic.
    virtual bool GetTarget(int index, int* out);
    virtual bool GetAttribute(int index, SyncTableAttributes* record);
    virtual int Reserved7(int) { return 0; }
    // Replaces the camera's attributes of an entry from now on.
    virtual bool OverloadAttr(int index, const SyncTableAttributes* record);
    virtual int GetFlags(int index);
    virtual bool SetFlags(int index, int flags);

    // Table-wide switch: 1 serves entries with SYNC_TABLE_FLAG_READABLE_FROM_CACHE from the cache.
    void SetCachedReads(int on);

  private:
    using Entry = SyncTableEntry;
    using State = SyncTableState;

    Entry* FindEntry(int index);
    void LogLockState(int index, int flags);
    bool GetFromCamera(int index, int* value_out, void* block_out) ZEL_REQUIRES(m_ExchangeLock);
    bool ReadAttributes(int index, SyncTableAttributes& attributes) ZEL_REQUIRES(m_ExchangeLock);

    bool CommandSend(int command, int index, int value) ZEL_REQUIRES(m_ExchangeLock);
    bool CommandSend(int index, const void* buffer, int num_bytes) ZEL_REQUIRES(m_ExchangeLock);
    bool CommandRecv(int* value_out, void* data_out, int data_capacity) ZEL_REQUIRES(m_ExchangeLock);
    bool ReceiveException() ZEL_REQUIRES(m_ExchangeLock);
    bool ReceivePart(unsigned char* into, int length) ZEL_REQUIRES(m_ExchangeLock);

    ICameraInterface* m_Camera;
    ExchangeLock& m_ExchangeLock;
    State m_State;
    Logger m_Logger;
};

}  // namespace zel

#endif
