#include <array>
#include <chrono>
#include <cstring>

#include "link/LinkKind.h"
#include "tools/plugin_check/Checks.h"

namespace zel::plugin_check {

namespace {

using Clock = std::chrono::steady_clock;

std::string Quoted(const std::string& text) {
    std::string quoted(1, '"');
    quoted += text;
    quoted += '"';
    return quoted;
}

void CheckIdentity(ICameraInterface& transport, Report& report) {
    const int type = transport.GetInterfaceType();
    report.Check(type != 0 && LinkKindOf(type).interface_type == type, "interface type", std::to_string(type));
    report.Check(transport.GetInterfaceType() == type && transport.GetInterfaceType() == type,
                 "interface type is steady", "asked three times");
    int marker = 0;
    auto* const camera = reinterpret_cast<ZelCamera*>(&marker);
    report.Check(!transport.GetCameraObject(), "no camera object at first", "null");
    transport.SetCameraObject(camera);
    report.Check(transport.GetCameraObject() == camera, "camera object is kept", "the one that was bound");
    transport.SetCameraObject(nullptr);
    report.Check(!transport.GetCameraObject(), "camera object is dropped", "null again");
}

void CheckConnecting(ICameraInterface& transport, HostCamera& host, Report& report) {
    host.m_ConnectCode = 17;
    report.Check(transport.Connect() != 0, "Connect passes a failed ConnectCommon on", "code 17");
    host.m_ConnectCode = 0;
    transport.Disconnect();
    const int code = transport.Connect();
    report.Check(code == 0, "Connect", "code " + std::to_string(code));
    report.Check(host.Snapshot().connects == 2, "Connect calls ConnectCommon once",
                 std::to_string(host.Snapshot().connects) + " calls in two connects");
    const int stop = transport.Stop();
    report.Check(stop == 0, "Stop after Connect", "code " + std::to_string(stop));
}

void CheckTable(HostCamera& host, Report& report) {
    report.Check(!host.GetText(HW_MODEL).empty(), "table: model text", Quoted(host.GetText(HW_MODEL)));
    int width = 0;
    int height = 0;
    const bool sized = host.Get(H_SIZE, width) && host.Get(V_SIZE, height) && width > 0 && height > 0;
    report.Check(sized, "table: size", std::to_string(width) + " x " + std::to_string(height));
    const TableAnswer record = host.Request(SYNC_TABLE_CMD_GET_ATTRIBUTES, V_BIN);
    report.Check(record.complete && record.exception == 0 && record.data.size() == 56, "table: attribute record",
                 std::to_string(record.data.size()) + " bytes");
    const TableAnswer beyond = host.Request(SYNC_TABLE_CMD_GET, SYNC_TABLE_SELECT_MAX);
    report.Check(beyond.complete && beyond.exception == kExceptionBadIndex, "table: index 89 is refused",
                 std::to_string(beyond.exception) + " is the exception");
    const int written = host.Set(EXPOSURE_TIME, 2000);
    int exposure = 0;
    report.Check(written == 0 && host.Get(EXPOSURE_TIME, exposure) && exposure == 2000, "table: write and read back",
                 std::to_string(exposure) + " us of exposure");
    report.Check(host.Set(H_SIZE, width) > 0, "table: a constant refuses a write", "H_SIZE");
}

void CheckText(HostCamera& host, Report& report) {
    std::string reply;
    const bool answered = host.Text("info", reply);
    report.Check(answered && reply.size() > 3, "text: info", std::to_string(reply.size()) + " bytes");
    std::string line_end;
    report.Check(host.Text("info\r\n", line_end) && line_end == reply, "text: a line end changes nothing", "info");
    report.Check(host.Text("no such command", reply) && !reply.empty(), "text: an unknown command is answered",
                 std::to_string(reply.size()) + " bytes");
}

// The reply of one request in pieces: bytes that were not asked for stay.
void CheckStream(ICameraInterface& transport, Report& report) {
    const std::uint8_t request[] = {0, 0, 7, SYNC_TABLE_CMD_GET, 0, 4, H_SIZE, 0, 0, 0};
    constexpr int kLength = static_cast<int>(sizeof(request));
    report.Check(transport.SendData(kLength, request) == kLength, "SendData answers its length", "10 bytes");
    std::array<std::uint8_t, 13> bytes{};
    bool one_each = true;
    for (std::uint8_t& byte : bytes) one_each &= transport.RecvData(1, &byte, 500) == 1;
    report.Check(one_each && bytes[1] == 0 && bytes[2] == 7 && bytes[4] == 0 && bytes[5] == 4,
                 "RecvData keeps what was not asked for", "a reply byte by byte");
    const auto start = Clock::now();
    std::uint8_t none = 0;
    const int count = transport.RecvData(1, &none, 50);
    const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    report.Check(count == 0 && waited >= 30 && waited < 1000, "RecvData waits its time, then answers 0",
                 std::to_string(waited) + " of 50 ms");
}

void CheckHostSide(ICameraInterface& transport, Report& report) {
    unsigned char led = 7;
    if (transport.SetLedState(true)) {
        report.Check(transport.GetLedState(&led) && led == 1, "LED on", "reads " + std::to_string(led));
        report.Check(transport.SetLedState(false) && transport.GetLedState(&led) && led == 0, "LED off",
                     "reads " + std::to_string(led));
    } else {
        report.Check(!transport.GetLedState(&led), "LED", "not supported");
    }
    report.Check(!transport.GetLedState(nullptr), "LED without a place", "refused");
    report.Check(transport.GetDroppedFrames() >= 0, "dropped frames", std::to_string(transport.GetDroppedFrames()));
    const double used = transport.GetLinkUtilization();
    report.Check(used >= 0.0 && used <= 1.0 && transport.GetLinkThroughput() >= 0.0 &&
                     transport.GetLinkFrameRate() >= 0.0 && transport.GetLinkLatency() >= 0.0,
                 "link figures", "not negative, utilization " + std::to_string(used));
}

}  // namespace

void CheckLink(const PluginLibrary& library, ICameraInterface& transport, HostCamera& host, Report& report) {
    if (library.set_camera_connection_event_callback) library.set_camera_connection_event_callback(nullptr, 0);
    CheckIdentity(transport, report);
    transport.SetCameraCommon(&host);
    CheckConnecting(transport, host, report);
    CheckTable(host, report);
    CheckText(host, report);
    CheckStream(transport, report);
    CheckHostSide(transport, report);
}

}  // namespace zel::plugin_check
