// Frames that the application holds.
#include <cstring>

#include "bindings/c/Call.h"
#include "bindings/c/SaveFrame.h"

using zel::c::Call;
using zel::c::Failure;
using zel::c::FrameObject;
using zel::c::Guard;

namespace {

void CopyOut(const void* from, std::size_t bytes, void* to, std::size_t size) {
    if (size < bytes) {
        throw Failure(ZEL_STATUS_TOO_SMALL, "the picture has " + std::to_string(bytes) + " bytes",
                      "there is room for " + std::to_string(size));
    }
    std::memcpy(to, from, bytes);
}

}  // namespace

zel_status zel_frame_get_info(zel_frame* frame, zel_frame_info* info) {
    return Guard(__func__, [&](Call& call) {
        const FrameObject& object = call.FindFrame(frame);
        zel::c::RequireStruct(info, "info");
        zel::c::FillStruct(info, object.Info());
    });
}

zel_status zel_frame_copy_pixels(zel_frame* frame, uint16_t* samples, size_t size) {
    return Guard(__func__, [&](Call& call) {
        const auto pixels = call.FindFrame(frame).frame().pixels();
        zel::c::RequirePointer(samples, "samples");
        CopyOut(pixels.data(), pixels.size_bytes(), samples, size);
    });
}

zel_status zel_frame_copy_color(zel_frame* frame, void* picture, size_t size) {
    return Guard(__func__, [&](Call& call) {
        const auto bytes = call.FindFrame(frame).frame().color_bytes();
        zel::c::RequirePointer(picture, "picture");
        if (bytes.empty()) {
            throw Failure(ZEL_STATUS_REFUSED, "the frame has no color picture", "",
                          "call zel_camera_use_color() before it is taken");
        }
        CopyOut(bytes.data(), bytes.size(), picture, size);
    });
}

zel_status zel_frame_save(zel_frame* frame, const char* file_name) {
    return Guard(__func__, [&](Call& call) {
        const FrameObject& object = call.FindFrame(frame);
        zel::c::RequirePointer(file_name, "file_name");
        zel::c::SaveFrame(object.frame(), file_name);
    });
}

zel_status zel_frame_keep(zel_frame* frame) {
    return Guard(__func__, [&](Call& call) { call.FindFrame(frame).Keep(); });
}

zel_status zel_frame_release(zel_frame* frame) {
    return Guard(__func__, [&](Call& call) {
        if (frame) call.TakeFrame(frame);
    });
}
