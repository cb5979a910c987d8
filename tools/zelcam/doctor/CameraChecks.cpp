// The cameras as an application sees them, and who else may be using them.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "platform/OtherProcesses.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/camera/PluginSet.h"
#include "tools/zelcam/doctor/Checks.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

constexpr std::size_t kCamerasShown = 8;

std::string Label(const zel::CameraInfo& camera) { return "camera " + std::to_string(camera.number); }

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
    // The system knows the file itself, not the link that it was found through.
    std::error_code error;
    const std::filesystem::path path = zel::platform::Utf8Path(sdk.path);
    const std::filesystem::path file = std::filesystem::canonical(path, error);
    const std::string name = zel::platform::Utf8Text((error ? path : file).filename());
    for (const zel::platform::OtherProcess& process : zel::platform::ProcessesWithLibrary(name)) {
        examination.Add(State::kNote, "other_process",
                        process.name + " (process " + std::to_string(process.id) + ") has the SDK loaded, too",
                        "a camera that it has open can't be opened here",
                        {{"process", process.id}, {"name", process.name}});
    }
}

// Every frame travels whole, in samples of one or two bytes.
double BytesPerSecond(const zel::Camera& camera, const zel::Frame& frame) {
    const auto rate = camera.parameter(ZEL_PARAM_FRAME_RATE).try_value();  // in 1000 s
    if (!rate) return 0.0;
    const double bytes = frame.bits() > 8 ? 2.0 : 1.0;
    return static_cast<double>(frame.width()) * frame.height() * bytes * static_cast<double>(rate->integer()) / 1000.0;
}

void TakeOneFrame(zel::Sdk& sdk, const zel::CameraInfo& entry, CameraCounts& counts, Examination& examination) {
    const auto start = std::chrono::steady_clock::now();
    zel::Camera camera = sdk.open(entry.number);
    Acquisition acquisition(camera, {});
    const zel::Frame frame = acquisition.Next();
    if (!frame) return;
    const auto known = std::ranges::find(counts.network, entry.number, &NetworkCamera::number);
    if (known != counts.network.end()) known->bytes_per_second = BytesPerSecond(camera, frame);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    examination.Add(
        State::kOk, "frame",
        fmt::format("{} opens and sent a frame of {} x {} within {:.0f} ms", Label(entry), frame.width(),
                    frame.height(), took.count()),
        "", {{"camera", entry.number}, {"width", frame.width()}, {"height", frame.height()}, {"ms", took.count()}});
}

void Tell(const Failure& failure, const zel::CameraInfo& entry, Examination& examination) {
    examination.Add(State::kProblem, "frame", failure.what(), "",
                    {{"camera", entry.number}, {"code", failure.Kind().code}});
}

}  // namespace

CameraCounts CheckCameras(const SdkFile& sdk, const PluginCounts& plugins, Examination& examination) {
    examination.Begin("cameras");
    CameraCounts counts;
    const std::vector<zel::CameraInfo> cameras = zel::Sdk().cameras();
    for (const zel::CameraInfo& camera : cameras) {
        std::string text = Label(camera) + ": " + camera.name + ", " + camera.serial + ", " + camera.interface_type;
        for (const std::string& address : camera.addresses) text += ", " + address;
        examination.Add(State::kOk, "camera", text, "",
                        {{"number", camera.number},
                         {"name", camera.name},
                         {"serial", camera.serial},
                         {"interface", camera.interface_type},
                         {"addresses", camera.addresses}});
        if (IsSimulated(camera)) continue;
        if (camera.interface_type.find("Gig") != std::string::npos) {
            counts.network.push_back({camera.number, camera.addresses, 0.0});
        }
        counts.usb |= camera.interface_type.starts_with("USB");
    }
    Compare(cameras.size(), plugins, examination);
    TellOthers(sdk, examination);
    return counts;
}

void TryCameras(CameraCounts& cameras, Examination& examination) {
    examination.Begin("frames");
    zel::Sdk sdk;
    CatchInterrupts();
    for (const zel::CameraInfo& entry : sdk.cameras()) {
        if (Interrupted()) break;
        try {
            TakeOneFrame(sdk, entry, cameras, examination);
        } catch (const zel::Error& error) {
            Tell(Failure(error), entry, examination);
        } catch (const Failure& failure) {
            if (failure.Kind().exit_code == kOutput.exit_code) throw;
            Tell(failure, entry, examination);
        }
    }
    FailIfInterrupted("the examination was cut short");
}

}  // namespace zelcam
