// Small helpers for texts and numbers.
#ifndef ZELCAM_TEXTTOOLS_H
#define ZELCAM_TEXTTOOLS_H

#include <string>
#include <string_view>
#include <vector>

#include "zel/detail/NearestWords.h"
#include "zel/detail/Texts.h"

namespace zelcam {

// `text` without blanks and line ends around it.
inline std::string Trim(std::string_view text) { return zel::detail::trimmed(text); }

// "did you mean A? " with the candidate nearest to `word`, or nothing.
std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates);

// "1 frame", "2 frames"
std::string Counted(unsigned long long count, const char* what);

// Lines up columns: the first row is the heading. Every column but the last is padded; two blanks between columns.
std::string FormatTable(const std::vector<std::vector<std::string>>& rows);

}  // namespace zelcam

#endif
