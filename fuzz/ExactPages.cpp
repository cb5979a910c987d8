// Pixels and records of fuzz_frame: what image/PixelMemory.h makes of these pages ends where they end, so that a
// sanitizer sees the first byte behind it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

// What the linker turns every call of platform::ReservePages and platform::ReleasePages to, see CMakeLists.txt.
extern "C" void* StandInReservePages(std::size_t bytes);
extern "C" void StandInReleasePages(void* pages);

namespace {
constexpr std::size_t kPage = 4096;
// A usable pointer stands behind a word of its own and a whole alignment: this makes both fit without a gap.
constexpr std::size_t kShift = kPage - sizeof(void*);
}  // namespace

void* StandInReservePages(std::size_t bytes) {
    void* memory = nullptr;
    if (bytes > SIZE_MAX / 2 || posix_memalign(&memory, kPage, bytes + kShift) != 0) return nullptr;
    std::memset(memory, 0, bytes + kShift);
    return static_cast<char*>(memory) + kShift;
}

void StandInReleasePages(void* pages) {
    if (pages) std::free(static_cast<char*>(pages) - kShift);
}
