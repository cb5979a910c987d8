#include "tools/zelcam/check/Clause.h"

#include <algorithm>

#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam::check {

const std::vector<Clause>& AllClauses() {
    static const std::vector<Clause> s_Clauses = [] {
        std::vector<Clause> all;
        for (const auto rows : {&LibraryClauses, &TransportClauses, &StreamClauses, &TableClauses, &RunClauses,
                                &FrameClauses, &TriggerClauses, &PlugClauses, &LifetimeClauses}) {
            all.insert(all.end(), rows().begin(), rows().end());
        }
        return all;
    }();
    return s_Clauses;
}

const Clause* FindClause(std::string_view id) {
    const auto& all = AllClauses();
    const auto row = std::ranges::find_if(all, [&](const Clause& clause) { return clause.id == id; });
    return row == all.end() ? nullptr : &*row;
}

std::vector<const Clause*> SelectClauses(const std::vector<std::string>& words) {
    std::vector<const Clause*> selected;
    std::vector<std::string> known;
    for (const Clause& clause : AllClauses()) {
        known.emplace_back(clause.id);
        if (known.back() != clause.group) known.emplace_back(clause.group);
        const bool named = std::ranges::any_of(
            words, [&](const std::string& word) { return word == clause.id || word == clause.group; });
        if (words.empty() || named) selected.push_back(&clause);
    }
    for (const std::string& word : words) {
        if (std::ranges::find(known, word) != known.end()) continue;
        throw Failure("no clause or group '" + word + "'", "",
                      DidYouMean(word, known) + "'zelcam check-plugin --list' has them all", kUsage);
    }
    return selected;
}

}  // namespace zelcam::check
