#include "tests/campaign/CSession.h"

#include <cstdio>

namespace zel::campaign {

namespace {

constexpr int kFrames = 20, kBuffers = 24;
constexpr int kSoundTimeoutMs = 60000, kTimeoutMs = 2;

}  // namespace

bool CSession::Ok(const char* name, const std::function<zel_status()>& call) {
    const bool ok = Do(name, [&] { return call() == ZEL_OK; });
    if (traced && !ok) std::printf("    %s\n", zel_error_message());
    return ok;
}

// A handle that could not be closed is closed now.
void CSession::DestroySdk() {
    if (m_OpenedCamera) Ok("zel_camera_close", [&] { return zel_camera_close(m_OpenedCamera); });
    if (m_Opened) Ok("zel_sdk_close", [&] { return zel_sdk_close(m_Opened); });
    m_OpenedCamera = nullptr;
    m_Opened = nullptr;
}

void CSession::Calls(bool close_sdk) {
    Ok("zel_sdk_open", [&] { return m_Opened ? ZEL_OK : zel_sdk_open(&m_Opened); });
    int32_t count = 0;
    Ok("zel_sdk_find_cameras", [&] { return zel_sdk_find_cameras(m_Opened, &count); });
    zel_camera_info info{};
    info.struct_size = sizeof info;
    Ok("zel_sdk_get_camera_info", [&] { return zel_sdk_get_camera_info(m_Opened, m_Link.camera, &info); });
    zel_hot_plug_event event{};
    event.struct_size = sizeof event;
    Do("zel_sdk_wait_hot_plug", [&] { return zel_sdk_wait_hot_plug(m_Opened, 0, &event), 1; });
    Ok("zel_camera_open_number", [&] {
        return m_OpenedCamera ? ZEL_OK : zel_camera_open_number(m_Opened, m_Link.camera, nullptr, &m_OpenedCamera);
    });
    if (m_OpenedCamera) {
        Camera();
        if (Ok("zel_camera_close", [&] { return zel_camera_close(m_OpenedCamera); })) m_OpenedCamera = nullptr;
    }
    if (close_sdk) DestroySdk();
}

void CSession::Camera() {
    zel_camera* const camera = m_OpenedCamera;
    uint32_t parameters = 0;
    Ok("zel_parameter_count", [&] { return zel_parameter_count(&parameters); });
    for (uint32_t index = 0; index < parameters; ++index) {
        zel_parameter_info info{};
        info.struct_size = sizeof info;
        zel_value value{};
        value.struct_size = sizeof value;
        Ok("zel_parameter_at", [&] { return zel_parameter_at(index, &info); });
        Ok("zel_camera_get_parameter_info", [&] { return zel_camera_get_parameter_info(camera, info.id, &info); });
        Ok("zel_camera_get_value", [&] { return zel_camera_get_value(camera, info.id, &value); });
    }
    zel_set_result result{};
    result.struct_size = sizeof result;
    Ok("zel_camera_set_integer",
       [&] { return zel_camera_set_integer(camera, "NUM_IMAGE_BUFFERS", kBuffers, &result); });
    Ok("zel_camera_set_text", [&] { return zel_camera_set_text(camera, "EXPOSURE_TIME_US", "100", &result); });
    zel_region region{};
    region.struct_size = sizeof region;
    Ok("zel_camera_get_region", [&] { return zel_camera_get_region(camera, &region); });
    // A wrong answer may have been written back by the session before, and a camera keeps its settings.
    region.bin_x = region.bin_y = 1;
    Ok("zel_camera_set_region", [&] { return zel_camera_set_region(camera, &region); });
    Ok("zel_camera_set_averaging", [&] { return zel_camera_set_averaging(camera, 3); });
    char text[256];
    Ok("zel_camera_command", [&] { return zel_camera_command(camera, "info", text, sizeof text, nullptr); });
    Ok("zel_camera_use_color", [&] { return zel_camera_use_color(camera, nullptr); });
    Run(kFrames, ZEL_TRIGGER_AS_SET);
    Ok("zel_camera_use_grey", [&] { return zel_camera_use_grey(camera); });
    Run(0, ZEL_TRIGGER_SOFTWARE);
}

void CSession::Run(int frames, int trigger) {
    zel_camera* const camera = m_OpenedCamera;
    const zel_start_options options{sizeof options, frames, trigger};
    if (Ok("zel_camera_start", [&] { return zel_camera_start(camera, &options); })) {
        for (int i = 0; i < std::max(frames, 3); ++i) {
            if (trigger != ZEL_TRIGGER_AS_SET) Ok("zel_camera_trigger", [&] { return zel_camera_trigger(camera); });
            TakeFrame();
        }
    }
    zel_drops drops{};
    drops.struct_size = sizeof drops;
    Ok("zel_camera_get_drops", [&] { return zel_camera_get_drops(camera, &drops); });
    Ok("zel_camera_stop", [&] { return zel_camera_stop(camera); });
}

void CSession::TakeFrame() {
    zel_frame* frame = nullptr;
    zel_frame_info info{};
    info.struct_size = sizeof info;
    const int timeout = m_Sound || !m_Faults.Happened() ? kSoundTimeoutMs : kTimeoutMs;
    if (!Ok("zel_camera_wait",
            [&] { return zel_camera_wait(m_OpenedCamera, timeout, ZEL_ORDER_EVERY, &frame, &info); }))
        return;
    std::vector<uint16_t> pixels(info.pixel_bytes / 2);
    Ok("zel_frame_copy_pixels", [&] { return zel_frame_copy_pixels(frame, pixels.data(), info.pixel_bytes); });
    Ok("zel_frame_release", [&] { return zel_frame_release(frame); });
}

}  // namespace zel::campaign
