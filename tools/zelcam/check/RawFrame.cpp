#include "tools/zelcam/check/RawFrame.h"

#include <fmt/format.h>

#include <fstream>
#include <vector>

#include "link/LinkKind.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/check/HostCamera.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam::check {

namespace {

constexpr int kRawFrameTime = 20000;  // milliseconds

struct RawFrame {
    std::vector<std::uint8_t> bytes;
    int width = 0;
    int height = 0;
    int bits = 0;
    int taps = 0;
    bool packed = false;  // 12-bit samples, two in three bytes
};

bool TakeFrame(ICameraInterface& transport, HostCamera& host, int taps, RawFrame& frame) {
    const int taps_index = taps == 4 ? 2 : taps - 1;
    if (taps > 0 && host.Set(SENSOR_TAPS_IDX, taps_index) != 0) return false;
    const bool came = transport.Start() == 0 && host.Set(CAMERA_STATE, 2) == 0 && host.WaitForFrames(1, kRawFrameTime);
    const bool stopped = transport.Stop() == 0;
    if (!came || !stopped || !host.Get(H_SIZE, frame.width) || !host.Get(V_SIZE, frame.height) ||
        !host.Get(BITS_PER_PIXEL, frame.bits) || !host.Get(SENSOR_TAPS_VAL, frame.taps)) {
        return false;
    }
    for (const std::uint16_t sample : host.Snapshot().last_frame) {
        frame.bytes.push_back(static_cast<std::uint8_t>(sample));
        frame.bytes.push_back(static_cast<std::uint8_t>(sample >> 8));
    }
    frame.packed = zel::LinkKindOf(transport.GetInterfaceType()).packed && frame.taps > 1;
    return frame.width > 0 && frame.height > 0 &&
           frame.bytes.size() >=
               std::size_t{2} * static_cast<unsigned>(frame.width) * static_cast<unsigned>(frame.height);
}

// byte 0: bits 11..4 of the first sample   byte 1: bits 3..0 of the second | of the first   byte 2: 11..4 of the second
unsigned Sample(const RawFrame& frame, std::size_t i) {
    if (!frame.packed) return frame.bytes[2 * i] | static_cast<unsigned>(frame.bytes[2 * i + 1]) << 8;
    const std::uint8_t* const pair = frame.bytes.data() + i / 2 * 3;
    return i % 2 == 0 ? pair[0] * 16u + (pair[1] & 0x0Fu) : pair[2] * 16u + (pair[1] >> 4);
}

bool WritePicture(const RawFrame& frame, RawFrameKind kind, const std::string& file_name) {
    const bool bytes = kind == RawFrameKind::kBytes && frame.packed;
    const int width = bytes ? frame.width * 3 / 2 : frame.width;
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(frame.height);
    std::ofstream file(zel::platform::Utf8Path(file_name), std::ios::binary);
    file << "P5\n" << width << " " << frame.height << "\n" << (bytes ? 255 : 65535) << "\n";
    for (std::size_t i = 0; i < count; ++i) {
        if (bytes) {
            file.put(static_cast<char>(frame.bytes[i]));
        } else {
            const unsigned sample = Sample(frame, i);
            file.put(static_cast<char>(sample >> 8)).put(static_cast<char>(sample));
        }
    }
    file.close();
    return file.good();
}

}  // namespace

std::string SaveRawFrame(const PluginLibrary& library, RawFrameKind kind, int taps, const std::string& file_name,
                         Json& result) {
    if (!library.Complete() || library.get_num_cameras() < 1) {
        throw Failure("no camera", library.Loaded() ? "the library finds none" : library.Why(), "", kNoCamera);
    }
    char name[] = "";
    ICameraInterface* const transport = library.create_camera_interface(0, name);
    if (!transport) throw Failure("the camera can't be used", "the library makes no transport", "", kNoCamera);
    RawFrame frame;
    bool taken = false;
    {
        HostCamera host(*transport);
        transport->SetCameraCommon(&host);
        if (transport->Connect() == 0) {
            host.RegisterHandlers();
            taken = TakeFrame(*transport, host, taps, frame);
            transport->Disconnect();
        }
        transport->SetImageHandler(nullptr, nullptr);
        transport->SetEventHandler(nullptr, nullptr);
        transport->SetCameraCommon(nullptr);
    }
    library.destroy_camera_interface(transport);
    if (library.lib_unload) library.lib_unload();
    if (!taken) {
        throw Failure("the camera delivered no frame" + std::string(taps > 0 ? " with this number of taps" : ""), "",
                      "", taps > 0 ? kRefused : kTimeout);
    }
    if (!WritePicture(frame, kind, file_name)) throw Failure("'" + file_name + "' can't be written", "", "", kOutput);
    result = {{"file", file_name},  {"width", frame.width}, {"height", frame.height},
              {"bits", frame.bits}, {"taps", frame.taps},   {"packed", frame.packed}};
    return fmt::format("{}: {} x {}, {} bits, {} taps{}\n", file_name, frame.width, frame.height, frame.bits,
                       frame.taps, frame.packed ? ", packed" : "");
}

}  // namespace zelcam::check
