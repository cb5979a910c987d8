// A large working buffer: zeroed pages from the system that go back to it with the object. Empty when there were none.
#ifndef UTIL_WORKBUFFER_H
#define UTIL_WORKBUFFER_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/Memory.h"

namespace zel {

class WorkBuffer {
  public:
    explicit WorkBuffer(std::uint64_t size) {
        if (size == 0 || size > PTRDIFF_MAX) return;
        m_Pages = static_cast<std::uint8_t*>(platform::ReservePages(static_cast<std::size_t>(size)));
        if (m_Pages) m_Size = static_cast<std::size_t>(size);
    }
    ~WorkBuffer() { platform::ReleasePages(m_Pages); }
    WorkBuffer(const WorkBuffer&) = delete;
    WorkBuffer& operator=(const WorkBuffer&) = delete;

    explicit operator bool() const { return m_Pages != nullptr; }
    std::span<std::uint8_t> Bytes() const { return {m_Pages, m_Size}; }

  private:
    std::uint8_t* m_Pages = nullptr;
    std::size_t m_Size = 0;
};

}  // namespace zel

#endif
