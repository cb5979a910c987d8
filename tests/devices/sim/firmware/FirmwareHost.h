// A host without a link: asks the firmware, and takes its answers apart.
#ifndef TESTS_SIM_FIRMWAREHOST_H
#define TESTS_SIM_FIRMWAREHOST_H

#include <string>

#include "devices/kit/Conversation.h"
#include "devices/kit/Wire.h"
#include "devices/sim/firmware/Firmware.h"
#include "tests/support/Datagrams.h"

namespace zel::sim {

using zel::test::Bytes;
using zel::test::TableRequest;

class FirmwareHost {
  public:
    // A camera that has no frames.
    struct Target final : Firmware {
        using Firmware::Firmware;
        kit::Description Describe() const override { return {}; }
        void Start(kit::FrameSink&, const kit::Run&) override {}
    };

    explicit FirmwareHost(const CameraModel& model, const FirmwareOptions& options = {0, 0.02})
        : m_Firmware(model, options) {
        m_Conversation.PowerOn();
    }

    Target& Device() { return m_Firmware; }
    void PowerOn() { m_Conversation.PowerOn(); }
    kit::RunControl& Control() { return m_Control; }
    const kit::Conversation& Talk() { return m_Conversation; }
    Bytes Raw(const Bytes& datagram) {
        Bytes answer;
        m_Conversation.Handle(datagram, answer);
        return answer;
    }
    // The exception code of a table request, -1 when it is not answered; and the reply.
    std::pair<int, Bytes> Request(int command, int index, const Bytes& data) {
        const Bytes answer = Raw(TableRequest(command, index, data));
        if (answer.size() < 9) return {-1, {}};
        const std::ptrdiff_t exception = 3 + answer[1] * 256 + answer[2];
        const auto end = answer.begin() + exception;
        return {answer.end() == end + 3 ? 0 : answer.back(), Bytes(answer.begin() + 6, end)};
    }
    int Get(int index) {
        const auto [code, reply] = Request(SYNC_TABLE_CMD_GET, index, {});
        return code == 0 && reply.size() == 4 ? static_cast<int>(kit::Little32(reply)) : -12345;
    }
    int Set(int index, int value) { return Request(SYNC_TABLE_CMD_SET, index, zel::test::LittleEndian(value)).first; }
    // The reply without its last three bytes.
    std::string Text(const std::string& command) {
        const Bytes answer = Raw(Bytes(command.begin(), command.end()));
        return answer.size() < 6 ? "" : std::string(answer.begin() + 3, answer.end() - 3);
    }

  private:
    Target m_Firmware;
    kit::RunControl m_Control;
    kit::Conversation m_Conversation{m_Firmware, m_Control};
};

}  // namespace zel::sim

#endif
