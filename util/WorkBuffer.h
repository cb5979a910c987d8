// A large working buffer that is kept: pages from the system, large ones where it has them, that go back to it with the
// object.
#ifndef UTIL_WORKBUFFER_H
#define UTIL_WORKBUFFER_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/Memory.h"

namespace zel {

class WorkBuffer {
  public:
    WorkBuffer() = default;
    ~WorkBuffer() { Release(); }
    WorkBuffer(const WorkBuffer&) = delete;
    WorkBuffer& operator=(const WorkBuffer&) = delete;

    // `size` bytes of any content, those of the last time when they suffice; none when there are none. What was there
    // is lost.
    std::span<std::uint8_t> Take(std::uint64_t size) {
        if (size > m_Size) {
            Release();
            if (size > PTRDIFF_MAX) return {};
            m_Pages = static_cast<std::uint8_t*>(platform::ReservePages(static_cast<std::size_t>(size)));
            if (!m_Pages) return {};
            m_Size = static_cast<std::size_t>(size);
        }
        return {m_Pages, static_cast<std::size_t>(size)};
    }
    std::size_t Size() const { return m_Size; }
    void Release() {
        platform::ReleasePages(m_Pages);
        m_Pages = nullptr;
        m_Size = 0;
    }

  private:
    std::uint8_t* m_Pages = nullptr;
    std::size_t m_Size = 0;
};

}  // namespace zel

#endif
