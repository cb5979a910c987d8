// Memory straight from the system's page allocator, and how much of it there is.
#ifndef PLATFORM_MEMORY_H
#define PLATFORM_MEMORY_H

#include <cstddef>
#include <cstdint>

namespace zel::platform {

// Reserves and commits `bytes` bytes, zeroed, readable and writable. Null when there are none. Where the system has
// large pages for the asking, it is asked for them: they come several times as fast, and the processor finds its way in
// them sooner.
void* ReservePages(std::size_t bytes);

// Has the system put memory behind these pages now instead of when each is first used. Only for pages that nobody else
// uses meanwhile; what is in them stays.
void TouchPages(void* pages, std::size_t bytes);

// Gives a whole reservation back. Null is allowed.
void ReleasePages(void* pages);

// Physical memory that is available now, in bytes; 0 when the system does not tell.
std::uint64_t AvailablePhysicalMemory();

}  // namespace zel::platform

#endif
