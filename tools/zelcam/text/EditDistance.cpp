#include "tools/zelcam/text/EditDistance.h"

#include <algorithm>
#include <utility>

namespace zelcam {

std::size_t EditDistance(std::string_view from, std::string_view to) {
    // Three rows of the table of distances between all beginnings of the two words.
    std::vector<std::size_t> before_last(to.size() + 1), last(to.size() + 1), row(to.size() + 1);
    for (std::size_t j = 0; j <= to.size(); ++j) last[j] = j;
    for (std::size_t i = 1; i <= from.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t replace = last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            row[j] = std::min({replace, last[j] + 1, row[j - 1] + 1});
            const bool swapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
            if (swapped) row[j] = std::min(row[j], before_last[j - 2] + 1);
        }
        std::swap(before_last, last);
        std::swap(last, row);
    }
    return last[to.size()];
}

std::vector<std::string> NearestWords(std::string_view word, const std::vector<std::string>& candidates,
                                      std::size_t count) {
    std::vector<std::pair<std::size_t, std::string>> near;
    const std::size_t limit = std::max<std::size_t>(2, word.size() / 3);
    for (const std::string& candidate : candidates) {
        const bool contained = word.size() >= 3 && candidate.find(word) != std::string::npos;
        const std::size_t distance = EditDistance(word, candidate);
        if (distance <= limit) {
            near.emplace_back(distance, candidate);
        } else if (contained) {
            near.emplace_back(limit + 1, candidate);
        }
    }
    std::stable_sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    if (near.size() > count) near.resize(count);
    std::vector<std::string> words;
    for (auto& entry : near) words.push_back(std::move(entry.second));
    return words;
}

}  // namespace zelcam
