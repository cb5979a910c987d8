// The transport object itself: identity, connecting, and what stays on the host's side.
#include <fmt/format.h>

#include <cmath>

#include "link/LinkKind.h"
#include "tools/zelcam/check/CameraSession.h"

namespace zelcam::check {

namespace {

std::string CheckSameTransport(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    for (int i = 0; i < 3; ++i) {
        Require(plugin.Create(camera) == &session.Raw(), "create_camera_interface answered another one");
    }
    return "asked four times";
}

std::string CheckCreateAgain(CheckedPlugin& plugin, int camera) {
    for (int i = 0; i < 3; ++i) CameraSession(plugin, camera).Open();
    return "three times, connected each time";
}

std::string CheckInterfaceType(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    const int type = session.transport.GetInterfaceType();
    Require(type >= CAMERA_TYPE_EDT_CAMERA_LINK && type <= CAMERA_TYPE_USB, fmt::format("it answers {}", type));
    return std::to_string(type);
}

std::string CheckInterfaceTypeSteady(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    const int type = session.transport.GetInterfaceType();
    const auto look = [&](const char* when) {
        for (int i = 0; i < 3; ++i) {
            const int now = session.transport.GetInterfaceType();
            Require(now == type, fmt::format("first {}, {} {}", type, when, now));
        }
    };
    look("when asked again");
    session.Open();
    look("when connected");
    session.Launch();
    look("while it runs");
    return std::to_string(type);
}

std::string CheckCameraObject(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    auto* const mark = reinterpret_cast<ZelCamera*>(&session);  // stored and answered, no more
    Require(!session.transport.GetCameraObject(), "there is one before any was bound");
    session.transport.SetCameraObject(mark);
    Require(session.transport.GetCameraObject() == mark, "another one than was bound");
    session.transport.SetCameraObject(nullptr);
    Require(!session.transport.GetCameraObject(), "still there after null was bound");
    return "bound, answered, dropped";
}

std::string CheckQuietAtFirst(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.host.RegisterHandlers();
    session.RequireSilence("before Connect");
    Require(session.host.Calls() == 0, "a call came while handlers were registered");
    return "no call";
}

std::string CheckHandlers(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    const auto nothing = [](ZelImage*, ZelCamera*) {};
    Require(session.transport.SetImageHandler(nothing, nullptr), "SetImageHandler answers false");
    Require(session.transport.SetImageHandler(nullptr, nullptr), "SetImageHandler(null) answers false");
    const auto no_event = [](const ZelCameraEvent*, ZelCamera*) {};
    Require(session.transport.SetEventHandler(no_event, nullptr), "SetEventHandler answers false");
    Require(session.transport.EnableEvents(11), "EnableEvents(11) answers false");
    Require(session.transport.SetEventHandler(nullptr, nullptr), "SetEventHandler(null) answers false");
    return "taken";
}

std::string CheckConnect(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    const int connects = session.host.Snapshot().connects;
    Require(connects == 1, fmt::format("{} calls of ConnectCommon", connects));
    return "code 0, one call";
}

std::string CheckConnectCode(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    for (const int code : {17, 5}) {
        session.host.m_ConnectCode = code;
        const int answer = session.transport.Connect();
        Require(answer == code, fmt::format("{} instead of {}", answer, code));
        session.transport.Disconnect();
    }
    session.host.m_ConnectCode = 0;
    session.Open();
    return "17 and 5, then it connects";
}

std::string CheckConnectExchange(CheckedPlugin& plugin, int camera) {
    bool table = false;
    bool text = false;
    CameraSession session(plugin, camera);
    session.host.m_OnConnect = [&] {
        std::string reply;
        text = session.host.Text("info", reply);
        table = session.host.Request(SYNC_TABLE_CMD_GET, HW_MODEL).complete;
    };
    session.Open();
    Require(text, "a text command got no reply");
    Require(table, "a table request got no reply");
    return "both protocols";
}

std::string CheckReconnect(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    constexpr int kRounds = 3;
    for (int i = 0; i < kRounds; ++i) {
        session.Open();
        Require(!session.host.GetText(HW_MODEL).empty(), fmt::format("no answer after Connect {}", i + 1));
        const int code = session.transport.Disconnect();
        Require(code == 0, fmt::format("Disconnect answered code {}", code));
    }
    return fmt::format("{} times", kRounds);
}

std::string CheckConnectTwice(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    const int code = session.transport.Connect();
    Require(!session.host.GetText(HW_MODEL).empty(), "no answer after the second Connect");
    session.transport.Disconnect();
    session.transport.Disconnect();
    session.Open();
    return fmt::format("the second Connect answers code {}", code);
}

std::string CheckLed(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    unsigned char led = 7;
    Require(!session.transport.GetLedState(nullptr), "GetLedState(null) answers true");
    if (!session.transport.SetLedState(true)) {
        Require(!session.transport.GetLedState(&led), "it can't be switched, but read");
        return "the camera has none";
    }
    for (const bool on : {true, false, true}) {
        Require(session.transport.SetLedState(on) && session.transport.GetLedState(&led), "an operation failed");
        Require(led == (on ? 1 : 0), fmt::format("switched {}, it reads {}", on ? "on" : "off", led));
    }
    return "on, off, on";
}

std::string CheckStatusValue(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    const int before = session.transport.GetStatusValue();
    Require(before >= 0, fmt::format("{} frames to come", before));
    if (!session.transport.SetStatusValue(3)) return "it takes no number of frames";
    const int after = session.transport.GetStatusValue();
    Require(after == 3, fmt::format("set to 3, it reads {}", after));
    Require(session.transport.SetStatusValue(0), "0 is refused, 3 is not");
    return "3 frames to come";
}

std::string CheckLinkFigures(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    const auto look = [&] {
        const double figures[] = {session.transport.GetLinkThroughput(), session.transport.GetLinkFrameRate(),
                                  session.transport.GetLinkLatency(), session.transport.GetLinkUtilization()};
        for (const double figure : figures) {
            Require(std::isfinite(figure) && figure >= 0.0, fmt::format("one is {}", figure));
        }
        Require(figures[3] <= 1.0, fmt::format("a utilization of {}", figures[3]));
    };
    look();
    session.Launch();
    session.WaitForFrames(3);
    look();
    return "idle and running";
}

constexpr Clause kTransportClauses[] = {
    {"transport", "same-transport", "a camera has the same transport until that is destroyed", true,
     CheckSameTransport},
    {"transport", "create-again", "after destroy_camera_interface the camera can be had again", true, CheckCreateAgain},
    {"transport", "interface-type", "GetInterfaceType is 3, 4 or 5", true, CheckInterfaceType},
    {"transport", "interface-type-steady", "GetInterfaceType never changes", true, CheckInterfaceTypeSteady},
    {"transport", "camera-object", "SetCameraObject is stored and answered", true, CheckCameraObject},
    {"transport", "quiet-at-first", "the camera object is not called before Connect", true, CheckQuietAtFirst},
    {"transport", "handlers", "handlers are taken, and null ends them", true, CheckHandlers},
    {"transport", "connect", "Connect calls ConnectCommon once and answers 0; Stop right after it, too", true,
     CheckConnect},
    {"transport", "connect-code", "Connect hands on the code of ConnectCommon", true, CheckConnectCode},
    {"transport", "connect-exchange", "the camera can be talked to inside ConnectCommon", true, CheckConnectExchange},
    {"transport", "reconnect", "a camera connects again after Disconnect, which answers 0", true, CheckReconnect},
    {"transport", "connect-twice", "Connect and Disconnect twice in a row do no harm", true, CheckConnectTwice},
    {"transport", "led", "the LED is as it was switched, or the camera has none", true, CheckLed},
    {"transport", "status-value", "the status value counts frames to come", true, CheckStatusValue},
    {"transport", "link-figures", "figures of the link are not negative, the utilization 0 to 1", true,
     CheckLinkFigures},
};

}  // namespace

std::span<const Clause> TransportClauses() { return kTransportClauses; }

}  // namespace zelcam::check
