#include "tests/support/GuardPages.h"

#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace zel::test {

namespace {

constexpr std::size_t kPage = 4096;

// Addresses that nobody may use, of which those from the second page to the last but one can be used.
char* Reserve(std::size_t bytes) {
#ifdef _WIN32
    void* const all = VirtualAlloc(nullptr, bytes, MEM_RESERVE, PAGE_NOACCESS);
    const bool there =
        all && VirtualAlloc(static_cast<char*>(all) + kPage, bytes - 2 * kPage, MEM_COMMIT, PAGE_READWRITE);
#else
    void* const all = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const bool there =
        all != MAP_FAILED && mprotect(static_cast<char*>(all) + kPage, bytes - 2 * kPage, PROT_READ | PROT_WRITE) == 0;
#endif
    if (!there) std::abort();
    return static_cast<char*>(all);
}

}  // namespace

GuardPages::GuardPages(std::size_t bytes) {
    const std::size_t room = (bytes + kPage - 1) / kPage * kPage;
    m_Begin = Reserve(room + 2 * kPage) + kPage;
    m_End = m_Begin + room;
}

}  // namespace zel::test
