#include "tools/zelcam/text/TextTools.h"

#include <fmt/format.h>

#include <algorithm>

namespace zelcam {

std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates) {
    const auto near = zel::detail::nearest_words(word, candidates, 1);
    return near.empty() ? "" : "did you mean " + near.front() + "? ";
}

std::string Counted(unsigned long long count, const char* what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string FormatTable(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        if (row.size() > widths.size()) widths.resize(row.size(), 0);
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) line += fmt::format("{:<{}}", row[i], widths[i] + 2);
        text += line.erase(line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

}  // namespace zelcam
