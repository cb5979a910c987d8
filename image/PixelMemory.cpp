#include "image/PixelMemory.h"

#include <cstdint>
#include <cstring>

#include "platform/Memory.h"

namespace zel {

namespace {

constexpr std::size_t kWord = sizeof(void*);
constexpr std::uint64_t kPage = 4096;  // of both systems

// The word just below a usable pointer holds the address of the reservation it was cut from.
char* WordBelow(void* usable) { return static_cast<char*>(usable) - kWord; }

}  // namespace

void* AllocatePages(std::size_t bytes, std::size_t alignment) {
    const std::size_t extra = alignment + kWord;
    if (bytes > SIZE_MAX - extra) return nullptr;
    char* raw = static_cast<char*>(platform::ReservePages(bytes + extra));
    if (!raw) return nullptr;

    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(raw);
    const std::uintptr_t usable_address = (address + extra) & ~static_cast<std::uintptr_t>(alignment - 1);
    void* usable = raw + (usable_address - address);
    std::memcpy(WordBelow(usable), &raw, kWord);
    return usable;
}

void* AllocateTouchedPixels(std::size_t bytes) {
    void* const pixels = AllocatePixels(bytes);
    if (pixels) platform::TouchPages(pixels, bytes);
    return pixels;
}

std::uint64_t PagesTaken(std::uint64_t bytes, std::size_t alignment) {
    return (bytes + alignment + kWord + kPage - 1) / kPage * kPage;
}

void FreePages(void* usable) {
    if (!usable) return;
    // The two low bits of a pixel pointer carry no address.
    const std::uintptr_t low_bits = reinterpret_cast<std::uintptr_t>(usable) & 3u;
    void* raw;
    std::memcpy(&raw, WordBelow(static_cast<char*>(usable) - low_bits), kWord);
    platform::ReleasePages(raw);
}

bool PlaneSet::Resize(unsigned new_count) {
    if (new_count == count) return true;
    for (unsigned short*& plane : planes) {
        FreePixels(plane);
        plane = nullptr;
    }
    count = 0;
    if (new_count == 0) return true;

    if (std::uint64_t{new_count} > SIZE_MAX / sizeof(unsigned short)) return false;
    count = new_count;
    for (unsigned short*& plane : planes) {
        plane = static_cast<unsigned short*>(AllocateTouchedPixels(new_count * sizeof(unsigned short)));
        if (!plane) {
            Resize(0);
            return false;
        }
    }
    return true;
}

}  // namespace zel
