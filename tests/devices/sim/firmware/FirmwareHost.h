// A host without a link: asks the firmware, and takes its answers apart.
#ifndef TESTS_SIM_FIRMWAREHOST_H
#define TESTS_SIM_FIRMWAREHOST_H

#include <string>

#include "devices/sim/firmware/Firmware.h"
#include "tests/support/Datagrams.h"

namespace zel::sim {

using zel::test::Bytes;
using zel::test::TableRequest;

class FirmwareHost {
  public:
    explicit FirmwareHost(const CameraModel& model, const FirmwareOptions& options = {0, 0.02})
        : m_Firmware(model, options) {}

    Firmware& Target() { return m_Firmware; }
    Bytes Raw(const Bytes& datagram) {
        Bytes answer;
        m_Firmware.Handle(datagram, answer);
        return answer;
    }
    // The exception code of a table request; -1 when it is not answered.
    int Request(int command, int index, const Bytes& data, Bytes& reply) {
        const Bytes answer = Raw(TableRequest(command, index, data));
        if (answer.size() < 9) return -1;
        const std::size_t exception = 3 + answer[1] * 256u + answer[2];
        reply.assign(answer.begin() + 6, answer.begin() + static_cast<std::ptrdiff_t>(exception));
        return answer.size() == exception + 3 ? 0 : answer.back();
    }
    int Get(int index) {
        Bytes reply;
        return Request(SYNC_TABLE_CMD_GET, index, {}, reply) == 0 && reply.size() == 4
                   ? static_cast<int>(Little32(reply))
                   : -12345;
    }
    int Set(int index, int value) {
        Bytes reply;
        return Request(SYNC_TABLE_CMD_SET, index, zel::test::LittleEndian(value), reply);
    }
    // The reply without its last three bytes.
    std::string Text(const std::string& command) {
        const Bytes answer = Raw(Bytes(command.begin(), command.end()));
        return answer.size() < 6 ? "" : std::string(answer.begin() + 3, answer.end() - 3);
    }

  private:
    Firmware m_Firmware;
};

}  // namespace zel::sim

#endif
