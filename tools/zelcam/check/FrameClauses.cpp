// Frames on their way from the transport into the host's records.
#include <fmt/format.h>

#include <algorithm>

#include "link/LinkKind.h"
#include "tools/zelcam/check/CameraSession.h"

namespace zelcam::check {

namespace {

constexpr std::size_t kFrames = 5;

HostCamera::Seen RunOf(CameraSession& session, std::size_t frames = kFrames) {
    session.Open();
    session.Launch();
    session.WaitForFrames(frames);
    return session.StopAndLook();
}

int ReadEntry(CameraSession& session, int index) {
    int value = 0;
    Require(session.host.Get(index, value), fmt::format("entry {} can't be read", index));
    return value;
}

// Frame numbers that were left out.
std::size_t HolesOf(const std::vector<unsigned>& numbers) {
    return numbers.empty() ? 0 : numbers.back() + 1 - numbers.size();
}

std::string CheckOrder(CheckedPlugin& plugin, int camera) {
    static constexpr const char* kOrder[] = {"free", "info", "pending", "event", "image"};
    CameraSession session(plugin, camera);
    const HostCamera::Seen seen = RunOf(session);
    std::size_t place = 0;
    for (const std::string& call : seen.calls) {
        // A frame that finds no record ends there.
        if (place == 1 && call == "free") continue;
        Require(call == kOrder[place], fmt::format("'{}' came where '{}' belongs", call, kOrder[place]));
        place = (place + 1) % std::size(kOrder);
    }
    Require(!seen.foreign_record, "a record was handed over that had not been taken");
    return FramesText(seen.image_numbers.size());
}

std::string CheckNumbers(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    for (int run = 0; run < 2; ++run) {
        session.Launch();
        session.WaitForFrames(kFrames);
        const std::vector<unsigned> numbers = session.StopAndLook().image_numbers;
        for (std::size_t i = 1; i < numbers.size(); ++i) {
            Require(numbers[i] > numbers[i - 1], fmt::format("{} after {}", numbers[i], numbers[i - 1]));
        }
    }
    return "in two runs";
}

std::string CheckThread(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    const HostCamera::Seen seen = RunOf(session, 1);
    Require(seen.frame_thread != std::this_thread::get_id(), "they come on the host's");
    return "another one";
}

std::string CheckSize(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    const HostCamera::Seen seen = RunOf(session);
    const auto samples =
        static_cast<std::size_t>(ReadEntry(session, H_SIZE)) * static_cast<std::size_t>(ReadEntry(session, V_SIZE));
    const bool packed =
        zel::LinkKindOf(session.transport.GetInterfaceType()).packed && ReadEntry(session, SENSOR_TAPS_VAL) > 1;
    const std::size_t expected = packed ? samples * 3 / 2 : samples * 2;
    Require(seen.written == expected, fmt::format("{} bytes were written, {} belong to it", seen.written, expected));
    return fmt::format("{} bytes", expected);
}

std::string CheckSamples(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    const HostCamera::Seen seen = RunOf(session);
    const int bits = ReadEntry(session, BITS_PER_PIXEL);
    Require(bits >= 8 && bits <= 16, fmt::format("BITS_PER_PIXEL is {}", bits));
    if (zel::LinkKindOf(session.transport.GetInterfaceType()).packed && ReadEntry(session, SENSOR_TAPS_VAL) > 1) {
        return fmt::format("{} bits, packed", bits);
    }
    const auto largest = *std::ranges::max_element(seen.last_frame);
    Require(largest >> bits == 0, fmt::format("a sample is {}, the camera has {} bits", largest, bits));
    return fmt::format("{} bits, the largest is {}", bits, largest);
}

std::string CheckInside(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    const HostCamera::Seen seen = RunOf(session);
    Require(!seen.guard_damaged, "the bytes behind a record were written to");
    return FramesText(seen.image_numbers.size());
}

std::string CheckSmallRecord(CheckedPlugin& plugin, int camera) {
    constexpr std::size_t kSmall = 1000;
    CameraSession session(plugin, camera);
    session.Open();
    session.host.m_BufferSize = kSmall;
    session.Launch();
    const bool came = session.host.WaitForFrames(2, 1000);
    const HostCamera::Seen seen = session.StopAndLook();
    Require(!seen.guard_damaged, "the bytes behind it were written to");
    Require(seen.taken == seen.returned, fmt::format("{} of {} records came back", seen.returned, seen.taken));
    return fmt::format("{} bytes: {}", kSmall, came ? "the frame is cut" : "no frame comes");
}

std::string CheckRecordsBack(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    const HostCamera::Seen seen = RunOf(session);
    Require(seen.taken == seen.returned,
            fmt::format("{} were taken, {} made pending or released", seen.taken, seen.returned));
    return fmt::format("{} records", seen.taken);
}

// All records are out at the application, then they are back.
std::string CheckNoRecord(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.host.m_Recycle = false;
    session.Launch();
    const auto records = static_cast<std::size_t>(session.host.m_Buffers);
    session.WaitForFrames(records);
    Require(session.host.WaitForRequests(session.host.m_Buffers + 3, kFrameTimeMs),
            "it does not ask for a record again");
    session.host.m_Recycle = true;
    while (ZelImage* const image = session.host.TakePending()) session.host.GiveBack(image);
    session.WaitForFrames(records + 2);
    const HostCamera::Seen seen = session.StopAndLook();
    const std::size_t holes = HolesOf(seen.image_numbers);
    Require(holes >= 3, fmt::format("3 or more were dropped, {} numbers are left out", holes));
    const int lost = session.transport.GetDroppedFrames();
    Require(lost == 0, fmt::format("{} are counted as lost on the link", lost));
    return fmt::format("{} dropped, their numbers left out, none counted as lost on the link", holes);
}

// A simulated camera loses some; of another one every hole must be counted that enough records do not explain.
std::string CheckDropped(CheckedPlugin& plugin, int camera) {
    constexpr std::size_t kLost = 3;
    CameraSession session(plugin, camera);
    session.Open();
    bool scripted = true;
    try {
        plugin.Control("fault", camera, fmt::format("lose after=2 times={}", kLost));
    } catch (const Skipped&) {
        scripted = false;
    }
    session.host.m_Buffers = 16;
    session.Launch();
    session.WaitForFrames(8);
    const HostCamera::Seen seen = session.StopAndLook();
    if (scripted) plugin.Control("fault", camera, "clear");
    const int lost = session.transport.GetDroppedFrames();
    const auto unserved = static_cast<std::size_t>(seen.free_requests - seen.taken);
    const std::size_t holes = HolesOf(seen.image_numbers);
    Require(lost >= 0, fmt::format("{} frames", lost));
    Require(static_cast<std::size_t>(lost) + unserved >= holes && static_cast<std::size_t>(lost) <= holes + 1,
            fmt::format("{} numbers are left out, {} counted as lost, {} had no record", holes, lost, unserved));
    Require(!scripted || static_cast<std::size_t>(lost) == kLost, fmt::format("{} of {} are counted", lost, kLost));
    session.Launch();
    const int after = session.transport.GetDroppedFrames();
    Require(after == 0, fmt::format("{} still after the next start", after));
    return fmt::format("{} of {}", lost, scripted ? "3 that were lost on purpose" : "those that the link lost");
}

std::string CheckSequence(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    const int exception = session.host.Set(FRAME_COUNT, 3);
    if (exception != 0) throw Skipped(fmt::format("FRAME_COUNT is refused with exception 0x{:02x}", exception));
    session.transport.SetFrameCount(3);
    session.Launch();
    session.WaitForFrames(3);
    session.RequireSilence("after the last frame of a sequence");
    const std::size_t frames = session.host.Snapshot().image_numbers.size();
    const int to_come = session.transport.GetStatusValue();
    session.StopAndLook();
    session.host.Set(FRAME_COUNT, 0);
    session.transport.SetFrameCount(0);
    Require(frames == 3, FramesText(frames) + " instead of 3");
    Require(to_come == 0, FramesText(static_cast<std::size_t>(to_come)) + " still to come");
    session.Launch();
    session.WaitForFrames(4);
    return "3, then without an end";
}

std::string CheckNoHandlers(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.transport.SetImageHandler(nullptr, nullptr);
    session.transport.SetEventHandler(nullptr, nullptr);
    session.Launch();
    Require(session.host.WaitForRequests(1, kFrameTimeMs), "no record is asked for");
    ZelImage* image = nullptr;
    for (int i = 0; i < kFrameTimeMs / 10 && !(image = session.host.TakePending()); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    Require(image != nullptr, "no frame is made pending");
    Require(session.StopAndLook().image_numbers.empty(), "the handler is called still");
    return "frames wait in the list";
}

std::string CheckAfterDisconnect(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.Launch();
    session.WaitForFrames(1);
    const int code = session.transport.Disconnect();
    session.RequireSilence("after Disconnect");
    Require(code == 0, fmt::format("Disconnect answered code {}", code));
    const HostCamera::Seen seen = session.host.Snapshot();
    Require(seen.taken == seen.returned, "a record is still being filled");
    return "in the middle of a run";
}

std::string CheckAfterNull(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.Launch();
    session.WaitForFrames(1);
    session.transport.SetCameraCommon(nullptr);
    session.RequireSilence("after SetCameraCommon(null)");
    return "in the middle of a run";
}

constexpr Clause kFrameClauses[] = {
    {"frame", "frame-order", "each frame: a free record, its settings, pending, event 6, image handler", true,
     CheckOrder},
    {"frame", "frame-numbers", "frame numbers ascend within a run", true, CheckNumbers},
    {"frame", "frame-thread", "frames come on a thread of the transport's own", true, CheckThread},
    {"frame", "frame-size", "a frame has as many bytes as its size and packing say", true, CheckSize},
    {"frame", "frame-samples", "no sample has more bits than the camera says", true, CheckSamples},
    {"frame", "frame-inside-record", "a frame stays within its record", true, CheckInside},
    {"frame", "frame-small-record", "a frame stays within a record that is too small for it", true, CheckSmallRecord},
    {"frame", "records-returned", "every record that was taken is made pending or released", true, CheckRecordsBack},
    {"frame", "no-free-record", "a frame without a free record is dropped, its number left out", true, CheckNoRecord},
    {"frame", "dropped-frames", "frames that the link lost are counted, from each start anew", true, CheckDropped},
    {"frame", "sequence", "a sequence of 3 has 3 frames", true, CheckSequence},
    {"frame", "no-handlers", "without handlers frames are made pending all the same", true, CheckNoHandlers},
    {"frame", "silent-after-disconnect", "nothing is called after Disconnect has returned", true, CheckAfterDisconnect},
    {"frame", "silent-after-null", "nothing is called after SetCameraCommon(null) has returned", true, CheckAfterNull},
};

}  // namespace

std::span<const Clause> FrameClauses() { return kFrameClauses; }

}  // namespace zelcam::check
