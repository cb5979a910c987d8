// Page memory that is kept between frames.
#ifndef IMAGE_PAGEBUFFER_H
#define IMAGE_PAGEBUFFER_H

#include <cstddef>

#include "image/PixelMemory.h"

namespace zel {

struct PageBuffer {
    unsigned short* pixels = nullptr;
    std::size_t capacity = 0;  // bytes

    PageBuffer() = default;
    ~PageBuffer() { Release(); }
    PageBuffer(const PageBuffer&) = delete;
    PageBuffer& operator=(const PageBuffer&) = delete;

    // At least so many bytes, touched; the content is lost when there were fewer.
    bool Reserve(std::size_t bytes) {
        if (capacity >= bytes) return true;
        Release();
        pixels = static_cast<unsigned short*>(AllocateTouchedPixels(bytes));
        if (pixels) capacity = bytes;
        return pixels != nullptr;
    }
    void Release() {
        FreePixels(pixels);
        pixels = nullptr;
        capacity = 0;
    }
};

}  // namespace zel

#endif
