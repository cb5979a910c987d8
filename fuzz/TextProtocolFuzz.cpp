// Reply bytes of any kind into TextProtocol::Recv. The first byte chooses how the transport delivers them.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "fuzz/FuzzCheck.h"
#include "link/TextProtocol.h"
#include "tests/support/ScriptedTransport.h"

using namespace zel;
using namespace zel::test;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    FakeClock clock;
    ScriptedTransport camera(&clock);
    camera.SetDelivery(data[0] & 1 ? ScriptedTransport::Delivery::kOneByte : ScriptedTransport::Delivery::kWhole);
    camera.SetReceiveCost(data[0] & 2 ? 100 : 0);
    camera.Feed(Bytes(data + 1, data + size));
    ExchangeLock lock;
    TextProtocol protocol(&camera, "fuzz", lock);

    // Exactly what the contract asks for, so that a sanitizer sees a byte too much.
    std::vector<char> out(TextProtocol::kReplyCapacity, '#');
    for (int reply = 0; reply < 8; ++reply) {
        const std::size_t before = camera.UnreadBytes();
        const std::uint32_t start = clock.Elapsed();
        const bool received = protocol.Recv(reply % 4 == 3 ? nullptr : out.data(), 5000);
        const std::size_t consumed = before - camera.UnreadBytes();
        FuzzCheck(clock.Elapsed() - start <= 2 * 5600);
        FuzzCheck(consumed <= 3 + 4095);
        if (!received) continue;
        FuzzCheck(consumed >= 3);
        if (reply % 4 == 3) continue;
        const std::size_t length = consumed - 3;
        for (std::size_t i = length - std::min<std::size_t>(length, 3); i < length; ++i) FuzzCheck(out[i] == 0);
        FuzzCheck(
            std::all_of(out.begin() + static_cast<std::ptrdiff_t>(length), out.end(), [](char c) { return c == '#'; }));
        std::fill(out.begin(), out.end(), '#');
    }
    return 0;
}
