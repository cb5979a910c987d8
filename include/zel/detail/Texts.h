/// Small helpers for texts.
#ifndef ZEL_LAYER_TEXTS_H
#define ZEL_LAYER_TEXTS_H

#include <string>
#include <string_view>

namespace zel::detail {

/// The text, or an empty one for null.
inline std::string text_or_empty(const char* text) { return text ? text : ""; }

/// Without the spaces and line ends at both ends.
inline std::string trimmed(std::string_view text) {
    constexpr std::string_view kBlank = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlank);
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(kBlank) - first + 1));
}

/// ASCII letters as capitals; locales play no part.
inline std::string upper_case(std::string_view text) {
    std::string upper(text);
    for (char& letter : upper) {
        if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
    }
    return upper;
}

}  // namespace zel::detail

#endif
