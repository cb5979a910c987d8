// A description text of a camera: at most 63 characters and a zero byte.
#ifndef SDK_TEXTSLOT_H
#define SDK_TEXTSLOT_H

#include <array>
#include <cstddef>
#include <cstring>

namespace zel {

class TextSlot {
  public:
    static constexpr std::size_t kCapacity = 64;

    // Replaces the text by at most 63 characters of another; null counts as an empty text.
    void Store(const char* text) {
        m_Text.fill('\0');
        for (std::size_t i = 0; text && i + 1 < kCapacity && text[i]; ++i) m_Text[i] = text[i];
    }
    void Clear() { m_Text.fill('\0'); }
    // Ends a text that a plug-in may have written over.
    void Terminate() { m_Text.back() = '\0'; }

    bool Empty() const { return m_Text.front() == '\0'; }
    bool Contains(const char* part) const { return std::strstr(m_Text.data(), part) != nullptr; }
    bool operator==(const TextSlot&) const = default;
    char* Data() { return m_Text.data(); }
    const char* Data() const { return m_Text.data(); }

  private:
    std::array<char, kCapacity> m_Text{};
};

static_assert(sizeof(TextSlot) == TextSlot::kCapacity);

}  // namespace zel

#endif
