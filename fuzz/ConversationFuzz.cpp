// What a host may send to a camera that is made with the kit: datagrams that are whole but for what the input says, and
// such that are not. Every answer must be one that a host can take apart, and the region stays on the sensor.
#include <memory>

#include "devices/kit/Camera.h"
#include "devices/kit/Wire.h"
#include "fuzz/Input.h"
#include "tests/support/Datagrams.h"

using namespace zel;
using namespace zel::test;

namespace {

constexpr kit::SensorSize kSensor{64, 48, 12};

// As little as a camera can do.
struct Device final : kit::BackEnd {
    kit::Description Describe() const override { return {}; }
    void PowerOn(kit::ParameterTable& table) override { m_Table = &table; }
    std::optional<kit::Attributes> AttributesOf(int index) override { return kit::SensorAttributes(index, kSensor); }
    void Start(kit::FrameSink&, const kit::Run&) override {}

    const kit::ParameterTable* m_Table = nullptr;
};

Bytes NextDatagram(fuzz::Input& input) {
    constexpr const char* kBeginnings[] = {"info", "name ", "trig sw ", "trig cl ", "trig a ", "cam.", "arm", ""};
    const unsigned kind = input.Below(6);
    if (kind == 0) return AsBytes(input.Bytes());
    if (kind == 1) return GetRequest(input.Number());
    if (kind == 3) return TextRequest(kBeginnings[input.Below(8)] + std::string(input.Text()) + "\r\n");
    if (kind == 4) return TableRequest(77 + static_cast<int>(input.Below(7)), input.Number());
    // Written, whatever an entry holds: a number, or any bytes.
    const Bytes data = kind == 2 ? LittleEndian(input.Number()) : AsBytes(input.Bytes());
    return TableRequest(SYNC_TABLE_CMD_SET, static_cast<int>(input.Below(90)), data);
}

// One datagram of the answer; how long it is.
std::size_t Part(std::span<const std::uint8_t> answer, int id) {
    FuzzCheck(answer.size() >= 3 && answer[0] == id);
    const std::size_t length = 3 + (std::size_t{answer[1]} << 8 | answer[2]);
    FuzzCheck(length <= answer.size());
    return length;
}

void CheckAnswer(const Bytes& datagram, std::span<const std::uint8_t> answer) {
    const std::size_t length = Part(answer, kit::IsTableRequest(datagram) ? 0 : 9);
    if (!kit::IsTableRequest(datagram)) {
        FuzzCheck(length == answer.size() && length >= 6 && answer.back() == 0 && answer[length - 3] == '\r');
        return;
    }
    FuzzCheck(length < 3 + 4096 && Part(answer.subspan(3), kit::TableCommand(datagram)) == length - 3);
    const std::size_t exception = Part(answer.subspan(length), 0);
    FuzzCheck(length + exception == answer.size() && (exception == 3 || exception == 6));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    auto device = std::make_unique<Device>();
    const Device& looked_at = *device;
    kit::Camera camera(std::move(device));
    camera.Connect();
    Bytes answer(8192);
    for (int i = 0; i < 32 && !input.Ended(); ++i) {
        const Bytes datagram = NextDatagram(input);
        FuzzCheck(camera.Send(datagram) == static_cast<int>(datagram.size()));
        const int received = camera.Receive(answer, 0);
        CheckAnswer(datagram, std::span(answer).first(static_cast<std::size_t>(received)));
        const kit::ParameterTable& table = *looked_at.m_Table;
        FuzzCheck(table.Number(H_ROI_ORIGIN) + table.Number(H_ROI_PIXELS) <= kSensor.width);
        FuzzCheck(table.Number(V_ROI_ORIGIN) + table.Number(V_ROI_PIXELS) <= kSensor.height);
        FuzzCheck(table.Number(H_ROI_PIXELS) > 0 && table.Number(V_ROI_PIXELS) > 0);
    }
    return 0;
}
