/// Finding the word that was meant.
#ifndef ZEL_LAYER_NEARESTWORDS_H
#define ZEL_LAYER_NEARESTWORDS_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zel::detail {

/// How many letters must be inserted, removed, replaced or swapped with their neighbour to turn one word into the
/// other.
inline std::size_t edit_distance(std::string_view from, std::string_view to) {
    // Three rows of the table of distances between all beginnings of the two words.
    std::vector<std::size_t> before_last(to.size() + 1), last(to.size() + 1), row(to.size() + 1);
    for (std::size_t j = 0; j <= to.size(); ++j) last[j] = j;
    for (std::size_t i = 1; i <= from.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t replace = last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            row[j] = (std::min)({replace, last[j] + 1, row[j - 1] + 1});
            const bool swapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
            if (swapped) row[j] = (std::min)(row[j], before_last[j - 2] + 1);
        }
        std::swap(before_last, last);
        std::swap(last, row);
    }
    return last[to.size()];
}

/// The candidates nearest to `word`, at most `count`, nearest first; those more than a third of the word's letters away
/// are left out unless they contain the word.
inline std::vector<std::string> nearest_words(std::string_view word, const std::vector<std::string>& candidates,
                                              std::size_t count) {
    std::vector<std::pair<std::size_t, std::string>> found;
    const std::size_t limit = (std::max<std::size_t>)(2, word.size() / 3);
    for (const std::string& candidate : candidates) {
        const bool contained = word.size() >= 3 && candidate.find(word) != std::string::npos;
        const std::size_t distance = edit_distance(word, candidate);
        if (distance <= limit) {
            found.emplace_back(distance, candidate);
        } else if (contained) {
            found.emplace_back(limit + 1, candidate);
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    if (found.size() > count) found.resize(count);
    std::vector<std::string> words;
    for (auto& entry : found) words.push_back(std::move(entry.second));
    return words;
}

/// "did you mean A, B? ", or nothing.
inline std::string did_you_mean(std::string_view word, const std::vector<std::string>& candidates) {
    std::string text;
    for (const std::string& word_found : nearest_words(word, candidates, 3))
        text += (text.empty() ? "" : ", ") + word_found;
    return text.empty() ? text : "did you mean " + text + "? ";
}

}  // namespace zel::detail

#endif
