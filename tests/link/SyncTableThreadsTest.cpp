#include <atomic>
#include <thread>
#include <vector>

#include "link/TextProtocol.h"
#include "tests/link/SyncTableFixture.h"
#include "tests/support/TableCamera.h"

namespace zel::test {
namespace {

class SyncTableThreadsTest : public SyncTableFixture {
  protected:
    TableCamera m_Model;
    TextProtocol m_Text{&m_Camera, "test", m_Lock};

    void SetUp() override {
        m_Camera.SetHandler(m_Model.Handler());
        m_Camera.SetDelivery(ScriptedTransport::Delivery::kOneByte);
    }
};

// Each thread owns one entry and must read back what it wrote, while both protocols share the byte stream and the
// caches are touched from everywhere.
TEST_F(SyncTableThreadsTest, ExchangesOfBothProtocolsDoNotMix) {
    constexpr int kRounds = 100;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (const int index : {VGA_GAIN, OB_LEVEL}) {
        threads.emplace_back([&, index] {
            for (int i = 0; i < kRounds; ++i) {
                int value = -1;
                if (!m_Table.Set(index, i) || !m_Table.Get(index, &value) || value != i) ++failures;
            }
        });
    }
    threads.emplace_back([&] {
        char out[TextProtocol::kReplyCapacity];
        for (int i = 0; i < kRounds; ++i) {
            if (!m_Text.Exchange("tb p s", out) || std::string(out) != "OK") ++failures;
        }
    });
    threads.emplace_back([&] {
        for (int i = 0; i < kRounds; ++i) {
            SyncTableAttributes record{};
            m_Table.SetFlags(OB_LEVEL, SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD);
            if (!m_Table.GetAttribute(OB_LEVEL, &record) || std::string(record.name) != "OB_LEVEL") ++failures;
        }
    });
    threads.emplace_back([&] {
        for (int i = 0; i < kRounds; ++i) {
            const SyncTableAttributes record = MakeAttributes(H_SIZE, "width", i, i, i);
            SyncTableAttributes seen{};
            int target = 0;
            if (!m_Table.OverloadAttr(H_SIZE, &record) || !m_Table.GetAttribute(H_SIZE, &seen) ||
                seen.minimum != seen.maximum || !m_Table.GetTarget(VGA_GAIN, &target) || target < 0) {
                ++failures;
            }
            m_Table.SetCachedReads(0);
        }
    });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, failures);
    EXPECT_EQ(0u, m_Camera.UnreadBytes());
}

}  // namespace
}  // namespace zel::test
