// 32-bit values in the application's untyped buffers, which need not be aligned.
#ifndef CAMERA_RAWVALUE_H
#define CAMERA_RAWVALUE_H

#include <cstring>

namespace zel {

inline int LoadInt(const void* data) {
    int value;
    std::memcpy(&value, data, sizeof value);
    return value;
}

inline bool StoreInt(void* data, int value) {
    std::memcpy(data, &value, sizeof value);
    return true;
}

}  // namespace zel

#endif
