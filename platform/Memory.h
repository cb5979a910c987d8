// Memory straight from the system's page allocator, and how much of it there is.
#ifndef PLATFORM_MEMORY_H
#define PLATFORM_MEMORY_H

#include <cstddef>
#include <cstdint>

namespace zel::platform {

// Reserves and commits `bytes` bytes, zeroed, readable and writable. Null when there are none.
void* ReservePages(std::size_t bytes);

// Asks for large pages behind the pages of a reservation. A hint: there may be none, and nothing else changes.
void AskForLargePages(void* pages, std::size_t bytes);

// Gives a whole reservation back. Null is allowed.
void ReleasePages(void* pages);

// Physical memory that is available now, in bytes; 0 when the system does not tell.
std::uint64_t AvailablePhysicalMemory();

}  // namespace zel::platform

#endif
