// A short text that one thread may renew while others read it, such as a reconnection on the transport's thread.
#ifndef CAMERA_SHAREDTEXT_H
#define CAMERA_SHAREDTEXT_H

#include <array>

#include "platform/Mutex.h"

namespace zel {

class SharedText {
  public:
    using Text = std::array<char, 64>;  // zero-filled behind the text, which ends before the last character

    void Set(const Text& text) {
        const platform::ScopedLock lock(m_Lock);
        if (m_Text != text) m_Text = text;
    }
    Text Get() const {
        const platform::ScopedLock lock(m_Lock);
        return m_Text;
    }
    // Valid as long as this object is. Written to only when the text changes. For readers outside of the library, who
    // know of no lock.
    const char* Address() const ZEL_NO_THREAD_SAFETY_ANALYSIS { return m_Text.data(); }

  private:
    mutable platform::Mutex m_Lock;
    Text m_Text ZEL_GUARDED_BY(m_Lock){};
};

}  // namespace zel

#endif
