// A short text that one thread may renew while others read it, such as a reconnection on the transport's thread.
#ifndef CAMERA_SHAREDTEXT_H
#define CAMERA_SHAREDTEXT_H

#include <array>
#include <mutex>

namespace zel {

class SharedText {
  public:
    using Text = std::array<char, 64>;  // zero-filled behind the text, which ends before the last character

    void Set(const Text& text) {
        const std::lock_guard lock(m_Lock);
        if (m_Text != text) m_Text = text;
    }
    Text Get() const {
        const std::lock_guard lock(m_Lock);
        return m_Text;
    }
    // Valid as long as this object is. Written to only when the text changes.
    const char* Address() const { return m_Text.data(); }

  private:
    mutable std::mutex m_Lock;
    Text m_Text{};
};

}  // namespace zel

#endif
