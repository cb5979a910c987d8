// Opening cameras, and the settings that are no parameters.
#include "bindings/c/Call.h"
#include "bindings/c/CameraInfo.h"

using zel::c::Call;
using zel::c::CameraObject;
using zel::c::Failure;
using zel::c::Guard;

namespace {

// `choose` answers the number of the camera.
template <class Choose>
zel_status OpenCamera(const char* function, zel_sdk* sdk, const zel_open_options* options, zel_camera** camera,
                      Choose choose) {
    return Guard(function, [&](Call& call) {
        if (camera) *camera = nullptr;
        const auto& owner = call.FindSdk(sdk);
        zel::c::RequirePointer(camera, "camera");
        const bool calibrated = zel::c::TakeStruct(options, "options").calibrated != 0;
        const int number = choose(owner->sdk());
        auto state = zel::detail::CameraState::open(zel::detail::SdkState::shared(), number, calibrated);
        *camera = std::make_shared<CameraObject>(owner, std::move(state))->Publish();
    });
}

}  // namespace

zel_status zel_camera_open(zel_sdk* sdk, const char* wanted, const zel_open_options* options, zel_camera** camera) {
    return OpenCamera(__func__, sdk, options, camera, [wanted](zel::Sdk& opened) {
        return zel::select_camera(opened.cameras(), wanted ? wanted : "0");
    });
}

zel_status zel_camera_open_number(zel_sdk* sdk, int32_t number, const zel_open_options* options, zel_camera** camera) {
    return OpenCamera(__func__, sdk, options, camera, [number](zel::Sdk&) { return number; });
}

zel_status zel_camera_close(zel_camera* camera) {
    return Guard(__func__, [&](Call& call) {
        if (camera) call.TakeCamera(camera).End();
    });
}

zel_status zel_camera_get_info(zel_camera* camera, zel_camera_info* info) {
    return Guard(__func__, [&](Call& call) {
        CameraObject& object = call.FindCamera(camera);
        zel::c::RequireStruct(info, "info");
        zel::c::FillStruct(info, zel::c::ToStruct(object.camera().info()));
    });
}

zel_status zel_camera_get_state(zel_camera* camera, zel_camera_state* state) {
    return Guard(__func__, [&](Call& call) {
        const zel::Camera& opened = call.FindCamera(camera).camera();
        zel::c::RequireStruct(state, "state");
        zel_camera_state full{};
        full.struct_size = sizeof full;
        full.running = opened.running();
        full.link_lost = opened.link_lost();
        full.is_monochrome = opened.is_monochrome();
        full.frames_held = opened.frames_held();
        full.frame_timeout_ms = static_cast<int32_t>(opened.frame_timeout().count());
        zel::c::FillStruct(state, full);
    });
}

zel_status zel_camera_get_region(zel_camera* camera, zel_region* region) {
    return Guard(__func__, [&](Call& call) {
        const zel::Camera& opened = call.FindCamera(camera).camera();
        zel::c::RequireStruct(region, "region");
        const ZelRoiBin now = opened.get(zel::settings::region_and_binning);
        zel::c::FillStruct(region, zel_region{sizeof(zel_region), now.XOrigin, now.YOrigin, now.XPixels, now.YPixels,
                                              now.XBin, now.YBin});
    });
}

zel_status zel_camera_set_region(zel_camera* camera, const zel_region* region) {
    return Guard(__func__, [&](Call& call) {
        const zel::Camera& opened = call.FindCamera(camera).camera();
        zel::c::RequirePointer(region, "region");
        const zel_region wanted = zel::c::TakeStruct(region, "region");
        const bool with_region = wanted.width != 0 || wanted.height != 0;
        const bool with_binning = wanted.bin_x != 0 || wanted.bin_y != 0;
        const zel::Region part{wanted.x, wanted.y, wanted.width, wanted.height};
        const zel::Binning binning{wanted.bin_x, wanted.bin_y};
        opened.set_region_and_binning(with_region ? &part : nullptr, with_binning ? &binning : nullptr);
    });
}

zel_status zel_camera_set_averaging(zel_camera* camera, int32_t frames) {
    return Guard(__func__, [&](Call& call) {
        const zel::Camera& opened = call.FindCamera(camera).camera();
        if (frames < 0) throw Failure(ZEL_STATUS_INVALID_ARGUMENT, "'frames' is " + std::to_string(frames));
        opened.set_averaging(frames);
    });
}

zel_status zel_camera_set_calibration(zel_camera* camera, int32_t on) {
    return Guard(__func__, [&](Call& call) {
        const zel::Camera& opened = call.FindCamera(camera).camera();
        if (opened.set_calibration(on != 0)) return;
        throw Failure(ZEL_STATUS_REFUSED, opened.label() + " can't be corrected", "it has no tables of its taps",
                      "open it with the option 'calibrated'");
    });
}

zel_status zel_camera_command(zel_camera* camera, const char* command, char* text, size_t size, size_t* length) {
    return Guard(__func__, [&](Call& call) {
        const zel::Camera& opened = call.FindCamera(camera).camera();
        zel::c::RequirePointer(command, "command");
        if (size > 0) zel::c::RequirePointer(text, "text");
        zel::c::AnswerText(opened.command(command), text, size, length);
    });
}

zel_status zel_camera_use_color(zel_camera* camera, const zel_color_options* options) {
    return Guard(__func__, [&](Call& call) {
        zel::Camera& opened = call.FindCamera(camera).camera();
        const zel_color_options wanted = zel::c::TakeStruct(options, "options");
        opened.use_color({zel::c::TakeEnum(wanted.format, zel::ColorFormat::rgba8, "options->format"),
                          zel::c::TakeEnum(wanted.space, zel::ColorSpace::sensor, "options->space")});
    });
}

zel_status zel_camera_use_grey(zel_camera* camera) {
    return Guard(__func__, [&](Call& call) { call.FindCamera(camera).camera().use_grey(); });
}
