// A table and a lock on a scripted transport. After each test no timer resolution may be left raised and the lock must
// be free.
#ifndef TESTS_LINK_SYNCTABLEFIXTURE_H
#define TESTS_LINK_SYNCTABLEFIXTURE_H

#include <gmock/gmock.h>

#include <thread>

#include "link/SyncTable.h"
#include "platform/Clock.h"
#include "tests/support/ScriptedTransport.h"

namespace zel::test {

struct SyncTableFixture : testing::Test {
    FakeClock m_Clock;
    ScriptedTransport m_Camera{&m_Clock};
    ExchangeLock m_Lock;
    SyncTable m_Table{&m_Camera, "test", m_Lock};

    // Whether a thread that holds nothing could take the lock now.
    bool LockIsFree() {
        bool is_free = false;
        std::thread([&] {
            if (!m_Lock.try_lock()) return;
            is_free = true;
            m_Lock.unlock();
        }).join();
        return is_free;
    }

    // The cached value, without traffic.
    int CachedValue(int index) {
        const int flags = m_Table.GetFlags(index);
        m_Table.SetFlags(index, SYNC_TABLE_FLAG_READABLE_FROM_CACHE);
        m_Table.SetCachedReads(1);
        int value = -1;
        EXPECT_TRUE(m_Table.Get(index, &value));
        m_Table.SetCachedReads(0);
        m_Table.SetFlags(index, flags);
        return value;
    }

    int Target(int index) {
        int value = -1;
        EXPECT_TRUE(m_Table.GetTarget(index, &value));
        return value;
    }

    void TearDown() override {
        EXPECT_EQ(0, platform::TimerResolution::LiveCount());
        EXPECT_TRUE(LockIsFree());
    }
};

}  // namespace zel::test

#endif
