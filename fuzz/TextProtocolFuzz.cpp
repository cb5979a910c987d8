// Reply bytes of any kind into TextProtocol::Recv. The first byte chooses how the transport delivers them and whether
// there is a log; the rest is the reply stream.
#include <cstring>

#include "fuzz/Input.h"
#include "fuzz/StandIns.h"
#include "link/TextProtocol.h"
#include "tests/support/ScriptedTransport.h"

using namespace zel;
using namespace zel::test;

namespace {

// What stands in the buffer behind what a reply filled.
const std::string s_Marks(TextProtocol::kReplyCapacity, '#');

void CheckReply(const std::vector<char>& out, std::size_t length) {
    for (std::size_t i = length - std::min<std::size_t>(length, 3); i < length; ++i) FuzzCheck(out[i] == 0);
    FuzzCheck(std::memcmp(out.data() + length, s_Marks.data() + length, out.size() - length) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const unsigned flags = input.Byte();
    const Bytes replies = AsBytes(input.Rest());
    fuzz::SetLogging(flags >= 0xFC);
    FakeClock clock;
    ScriptedTransport camera(&clock);
    camera.SetDelivery(flags & 1 ? ScriptedTransport::Delivery::kOneByte : ScriptedTransport::Delivery::kWhole);
    camera.SetReceiveCost(flags & 2 ? 100 : 0);
    camera.Feed(replies);
    ExchangeLock lock;
    TextProtocol protocol(&camera, "fuzz", lock);
    if (flags & 8) protocol.Send(std::string(replies.begin(), replies.end()).c_str());

    // Exactly what the contract asks for, so that a sanitizer sees a byte too much.
    std::vector<char> out(s_Marks.begin(), s_Marks.end());
    for (int reply = 0; reply < 8 && camera.UnreadBytes() > 0; ++reply) {
        const std::size_t before = camera.UnreadBytes();
        const std::uint32_t start = clock.Elapsed();
        const bool received = protocol.Recv(reply % 4 == 3 ? nullptr : out.data(), 5000);
        const std::size_t consumed = before - camera.UnreadBytes();
        FuzzCheck(clock.Elapsed() - start <= 2 * 5600);
        FuzzCheck(consumed <= 3 + 4095);
        if (!received) continue;
        FuzzCheck(consumed >= 3);
        if (reply % 4 == 3) continue;
        CheckReply(out, consumed - 3);
        std::memset(out.data(), '#', consumed - 3);
    }
    return 0;
}
