// The description of a camera for C.
#ifndef BINDINGS_C_CAMERAINFO_H
#define BINDINGS_C_CAMERAINFO_H

#include <iterator>

#include "bindings/c/Texts.h"
#include "zel.h"
#include "zel/CameraInfo.h"

namespace zel::c {

inline zel_camera_info ToStruct(const CameraInfo& from) {
    zel_camera_info info{};
    info.struct_size = sizeof info;
    info.number = from.number;
    CutInto(info.name, from.name);
    CutInto(info.serial, from.serial);
    CutInto(info.interface_type, from.interface_type);
    for (std::size_t i = 0; i < from.addresses.size() && i < std::size(info.addresses); ++i) {
        CutInto(info.addresses[i], from.addresses[i]);
    }
    return info;
}

}  // namespace zel::c

#endif
