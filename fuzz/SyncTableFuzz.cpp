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
    table.Get(index, out.data());
    if (!SyncTableIsBlock(index))
        FuzzCheck(std::all_of(out.begin() + 4, out.end(), [](unsigned char c) { return c == 0xEE; }));
}

void CheckAttributes(SyncTable& table, const ScriptedTransport& camera, int index) {
    const SyncTableAttributes marked = MakeAttributes(1, "marked", 2, 3, 4);
    SyncTableAttributes out = marked;
    const bool result = table.GetAttribute(index, &out);
    FuzzCheck(result || std::memcmp(&out, &marked, sizeof marked) == 0);
    if (!result || index < 0) return;
    const int sent = camera.Exchanges();
    FuzzCheck(table.GetAttribute(index, nullptr) && camera.Exchanges() == sent);
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
    const int operation = data[0] >> 2 & 3;
    if (operation == 0) CheckGet(table, index);
    if (operation == 1) CheckAttributes(table, camera, index);
    if (operation == 2) table.Set(index, static_cast<int>(size));
    if (operation == 3) table.Set(index, block.data(), 10);
    FuzzCheck(camera.Exchanges() <= 4);
    FuzzCheck(clock.Elapsed() <= 4 * kExchangeMs + 300);
    FuzzCheck(platform::TimerResolution::LiveCount() == 0);
    return 0;
}
