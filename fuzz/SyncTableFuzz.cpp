// Replies of any kind to the operations of SyncTable. The first byte chooses operation and delivery, the second the
// entry; the rest is the reply stream.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz/FuzzCheck.h"
#include "link/SyncTable.h"
#include "tests/support/ScriptedTransport.h"

using namespace zel;
using namespace zel::test;

namespace {

constexpr std::uint32_t kExchangeMs = 4 * 5600;  // header, payload, and both of the exception

void CheckGet(SyncTable& table, int index) {
    std::vector<unsigned char> out(SyncTable::kBlockCapacity, 0xEE);
    const bool is_block = SyncTableIsBlock(index);
    table.Get(index, out.data());
    if (!is_block) ZEL_FUZZ_CHECK(std::all_of(out.begin() + 4, out.end(), [](unsigned char c) { return c == 0xEE; }));
}

void CheckAttributes(SyncTable& table, const ScriptedTransport& camera, int index) {
    const std::vector<SyncTableAttributes> marked(1, MakeAttributes(1, "marked", 2, 3, 4));
    std::vector<SyncTableAttributes> out = marked;
    const bool result = table.GetAttribute(index, out.data());
    const bool is_marked = std::memcmp(out.data(), marked.data(), sizeof marked[0]) == 0;
    ZEL_FUZZ_CHECK(result || is_marked);
    if (!result || index < 0) return;
    const int sent = camera.Exchanges();
    ZEL_FUZZ_CHECK(table.GetAttribute(index, nullptr) && camera.Exchanges() == sent);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    FakeClock clock;
    ScriptedTransport camera(&clock);
    camera.SetDelivery(data[0] & 1 ? ScriptedTransport::Delivery::kOneByte : ScriptedTransport::Delivery::kWhole);
    camera.SetReceiveCost(data[0] & 2 ? 100 : 0);
    camera.Feed(Bytes(data + 2, data + size));
    ExchangeLock lock;
    SyncTable table(&camera, "fuzz", lock);
    const int index = data[1] % 91 - 1;
    const Bytes block(20, 0x42);
    switch (data[0] >> 2 & 3) {
        case 0:
            CheckGet(table, index);
            break;
        case 1:
            CheckAttributes(table, camera, index);
            break;
        case 2:
            table.Set(index, static_cast<int>(size));
            break;
        default:
            table.Set(index, block.data(), 10);
            break;
    }
    ZEL_FUZZ_CHECK(camera.Exchanges() <= 4);
    ZEL_FUZZ_CHECK(clock.Elapsed() <= 4 * kExchangeMs + 300);
    ZEL_FUZZ_CHECK(platform::TimerResolution::LiveCount() == 0);
    return 0;
}
