#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "link/TextProtocol.h"
#include "tests/link/SyncTableFixture.h"
#include "tests/support/TableCamera.h"

namespace zel::test {
namespace {

using SyncTableThreadsTest = SyncTableFixture;

// Each thread owns one entry and must read back what it wrote, while both protocols share the byte stream and the
// caches are touched from everywhere.
TEST_F(SyncTableThreadsTest, ExchangesOfBothProtocolsDoNotMix) {
    TableCamera model;
    TextProtocol text(&m_Camera, "test", m_Lock);
    m_Camera.SetHandler(model.Handler());
    m_Camera.SetDelivery(ScriptedTransport::Delivery::kOneByte);
    const auto own_entry = [&](int index, int i) {
        int value = -1;
        return m_Table.Set(index, i) && m_Table.Get(index, &value) && value == i;
    };
    const std::function<bool(int)> works[] = {
        [&](int i) { return own_entry(VGA_GAIN, i); },
        [&](int i) { return own_entry(OB_LEVEL, i); },
        [&](int) {
            char out[TextProtocol::kReplyCapacity];
            return text.Exchange("tb p s", out) && std::string(out) == "OK";
        },
        [&](int) {
            SyncTableAttributes record{};
            m_Table.SetFlags(OB_LEVEL, SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD);
            return m_Table.GetAttribute(OB_LEVEL, &record) && std::string(record.name) == "OB_LEVEL";
        },
        [&](int i) {
            SyncTableAttributes record = MakeAttributes(H_SIZE, "width", i, i, i);
            m_Table.SetCachedReads(0);
            return m_Table.OverloadAttr(H_SIZE, &record) && m_Table.GetAttribute(H_SIZE, &record) &&
                   record.minimum == record.maximum && Target(VGA_GAIN) >= 0;
        },
    };
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (const auto& work : works) {
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) failures += !work(i);
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, failures);
    EXPECT_EQ(0u, m_Camera.UnreadBytes());
}

}  // namespace
}  // namespace zel::test
