// Replies of any kind to the operations of SyncTable. The first byte chooses delivery and log, the second how many
// operations there are; two bytes for each of them, operation and entry, follow; the rest is the reply stream.
#include <cstring>

#include "fuzz/Input.h"
#include "fuzz/StandIns.h"
#include "link/SyncTable.h"
#include "tests/support/ScriptedTransport.h"

using namespace zel;
using namespace zel::test;

namespace {

constexpr std::uint32_t kExchangeMs = 4 * 5600;  // header, payload, and both of the exception
constexpr int kFlags[] = {0,
                          SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD,
                          SYNC_TABLE_FLAG_ANSWER_FROM_TARGET,
                          SYNC_TABLE_FLAG_READABLE_FROM_CACHE,
                          SYNC_TABLE_FLAG_USE_TARGET_VALUE,
                          SYNC_TABLE_FLAG_LOCKED};

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

void Do(SyncTable& table, const ScriptedTransport& camera, unsigned operation, int index) {
    const SyncTableAttributes own = MakeAttributes(index, "own", 0, static_cast<int>(operation), 0);
    const Bytes block(20, 0x42);
    const unsigned kind = operation % 8, variant = operation / 8;
    if (kind == 0) CheckGet(table, index);
    if (kind == 1) CheckAttributes(table, camera, index);
    if (kind == 2) table.Set(index, static_cast<int>(operation));
    if (kind == 3) table.Set(index, block.data(), 10);
    if (kind == 4) table.SetFlags(index, kFlags[variant % std::size(kFlags)]);
    if (kind == 5) table.SetCachedReads(variant % 2);
    if (kind == 6) table.OverloadAttr(index, variant % 2 ? &own : nullptr);
    if (kind == 7) table.Set(index, block.data(), static_cast<int>(variant % 27) - 16);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const unsigned flags = input.Byte();
    fuzz::SetLogging(flags >= 0xE0);
    const auto operations = fuzz::Input(data, size).Rest().subspan(std::min<std::size_t>(size, 2));
    const std::size_t count = std::min<std::size_t>(1 + input.Below(6), operations.size() / 2);
    FakeClock clock;
    ScriptedTransport camera(&clock);
    camera.SetDelivery(flags & 1 ? ScriptedTransport::Delivery::kOneByte : ScriptedTransport::Delivery::kWhole);
    camera.SetReceiveCost(flags & 2 ? 100 : 0);
    const auto replies = operations.subspan(2 * count);
    camera.Feed(Bytes(replies.begin(), replies.end()));
    ExchangeLock lock;
    SyncTable table(&camera, "fuzz", lock);
    for (std::size_t i = 0; i < 2 * count; i += 2) {
        const int sent = camera.Exchanges();
        const std::uint32_t start = clock.Elapsed();
        Do(table, camera, operations[i], operations[i + 1] % 91 - 1);
        FuzzCheck(camera.Exchanges() <= sent + 4);
        FuzzCheck(clock.Elapsed() - start <= 4 * kExchangeMs + 300);
    }
    FuzzCheck(platform::TimerResolution::LiveCount() == 0);
    return 0;
}
