// The cameras as an application sees them, and who else may be using them.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "platform/OtherProcesses.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/camera/Session.h"
#include "tools/zelcam/doctor/Checks.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

constexpr std::size_t kCamerasShown = 8;

std::string Label(const CameraEntry& camera) { return "camera " + std::to_string(camera.number); }

void Compare(std::size_t listed, const PluginCounts& plugins, Examination& examination) {
    const auto told = static_cast<std::size_t>(plugins.cameras);
    const Json facts{{"listed", listed}, {"told_by_plugins", told}};
    if (told > kCamerasShown && listed == kCamerasShown) {
        examination.Add(State::kNote, "cameras", Counted(told, "camera") + " are attached; the SDK shows the first 8",
                        "", facts);
    } else if (listed != told) {
        examination.Add(State::kWarning, "cameras",
                        "the plug-ins tell of " + Counted(told, "camera") + ", the SDK lists " + std::to_string(listed),
                        "was one plugged in or out just now? try again", facts);
    } else if (listed == 0) {
        examination.Add(State::kWarning, "cameras", "no cameras", "check power and cables", facts);
    }
}

void TellOthers(const SdkFile& sdk, Examination& examination) {
    const std::string name = zel::platform::Utf8Text(zel::platform::Utf8Path(sdk.path).filename());
    for (const zel::platform::OtherProcess& process : zel::platform::ProcessesWithLibrary(name)) {
        examination.Add(State::kNote, "other_process",
                        process.name + " (process " + std::to_string(process.id) + ") has the SDK loaded, too",
                        "a camera that it has open can't be opened here",
                        {{"process", process.id}, {"name", process.name}});
    }
}

void TakeOneFrame(const Session& session, const CameraEntry& entry, Examination& examination) {
    const auto start = std::chrono::steady_clock::now();
    OpenCamera camera(session, std::to_string(entry.number));
    Acquisition acquisition(camera, FrameMode::kEvery, StartMode::kFree, {});
    const Frame frame = acquisition.Next();
    if (!frame) return;
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    examination.Add(State::kOk, "frame",
                    fmt::format("{} opens and sent a frame of {} x {} within {:.0f} ms", Label(entry), frame->w,
                                frame->h, took.count()),
                    "", {{"camera", entry.number}, {"width", frame->w}, {"height", frame->h}, {"ms", took.count()}});
}

}  // namespace

CameraCounts CheckCameras(const SdkFile& sdk, const PluginCounts& plugins, Examination& examination) {
    examination.Begin("cameras");
    CameraCounts counts;
    const Session session;
    for (const CameraEntry& camera : session.Cameras()) {
        std::string text = Label(camera) + ": " + camera.name + ", " + camera.serial + ", " + camera.interface_type;
        for (const std::string& address : camera.addresses) text += ", " + address;
        examination.Add(State::kOk, "camera", text, "",
                        {{"number", camera.number},
                         {"name", camera.name},
                         {"serial", camera.serial},
                         {"interface", camera.interface_type},
                         {"addresses", camera.addresses}});
        if (std::ranges::find(camera.addresses, "simulated") != camera.addresses.end()) continue;
        counts.network |= camera.interface_type.find("Gig") != std::string::npos;
        counts.usb |= camera.interface_type.starts_with("USB");
    }
    Compare(session.Cameras().size(), plugins, examination);
    TellOthers(sdk, examination);
    return counts;
}

void TryCameras(Examination& examination) {
    examination.Begin("frames");
    const Session session;
    CatchInterrupts();
    for (const CameraEntry& entry : session.Cameras()) {
        if (Interrupted()) break;
        try {
            TakeOneFrame(session, entry, examination);
        } catch (const Failure& failure) {
            if (failure.Kind().exit_code == kOutput.exit_code) throw;
            examination.Add(State::kProblem, "frame", failure.what(), "",
                            {{"camera", entry.number}, {"code", failure.Kind().code}});
        }
    }
    FailIfInterrupted("the examination was cut short");
}

}  // namespace zelcam
