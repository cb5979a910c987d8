// Small helpers for texts and numbers.
#ifndef ZELCAM_TEXTTOOLS_H
#define ZELCAM_TEXTTOOLS_H

#include <string>
#include <string_view>
#include <vector>

namespace zelcam {

// ASCII letters in upper case, the rest unchanged.
std::string UpperCase(std::string_view text);

// `text` without blanks and line ends around it.
std::string Trim(std::string_view text);

// "1 frame", "2 frames"
std::string Counted(unsigned long long count, const char* what);

// A text that may be null.
inline std::string TextOrEmpty(const char* text) { return text ? text : ""; }

// Lines up columns: the first row is the heading. Every column but the last is padded; two blanks between columns.
std::string FormatTable(const std::vector<std::vector<std::string>>& rows);

}  // namespace zelcam

#endif
