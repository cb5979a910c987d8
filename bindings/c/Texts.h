// Texts on their way into the caller's memory.
#ifndef BINDINGS_C_TEXTS_H
#define BINDINGS_C_TEXTS_H

#include <cstddef>
#include <cstring>
#include <string_view>

namespace zel::c {

// As many characters as fit into the room with a zero behind them; a letter of several bytes (UTF-8) is not cut in two.
inline void CutInto(char* room, std::size_t size, std::string_view text) noexcept {
    std::size_t length = text.size();
    if (length >= size) {
        length = size - 1;
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) --length;
    }
    std::memcpy(room, text.data(), length);
    room[length] = '\0';
}

template <std::size_t kSize>
void CutInto(char (&room)[kSize], std::string_view text) noexcept {
    CutInto(room, kSize, text);
}

// A text for a caller who handed in room, its size and a place for the length; see "Texts" in zel.h. Throws Failure.
void AnswerText(std::string_view answer, char* text, std::size_t size, std::size_t* length);

}  // namespace zel::c

#endif
