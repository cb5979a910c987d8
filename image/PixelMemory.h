// Page-aligned memory for pixels and records, taken from the system's page allocator and never from the heap.
//
//    raw address                    usable pointer, a multiple of `alignment`
//    |<-- at least one word ... [raw address]|<-- n bytes ...
//                                ^ the word just below the usable pointer
//
// n bytes with alignment a cost n + a + 4 bytes on the 32-bit product: one word more than the alignment.
#ifndef IMAGE_PIXELMEMORY_H
#define IMAGE_PIXELMEMORY_H

#include <cstddef>
#include <cstdint>

namespace zel {

inline constexpr std::size_t kPixelAlignment = 4096;
inline constexpr std::size_t kRecordAlignment = 128;

// Zeroed memory of `bytes` bytes; null when there is none. `alignment` is a power of two.
void* AllocatePages(std::size_t bytes, std::size_t alignment);
// The same with memory behind every page: who uses it first does not wait for the system.
void* AllocateTouchedPixels(std::size_t bytes);
// What the system gives for such a request: whole pages.
std::uint64_t PagesTaken(std::uint64_t bytes, std::size_t alignment);
// Gives it back. Null is allowed.
void FreePages(void* usable);

inline void* AllocatePixels(std::size_t bytes) { return AllocatePages(bytes, kPixelAlignment); }
inline void FreePixels(void* usable) { FreePages(usable); }

// Three planes of 16-bit values with one common element count.
struct PlaneSet {
    unsigned short* planes[3];
    unsigned count;

    // Makes the planes `new_count` elements long; nothing happens when they are already. 0 frees them. False when
    // memory ran out: the set is empty then.
    bool Resize(unsigned new_count);
};

}  // namespace zel

#endif
