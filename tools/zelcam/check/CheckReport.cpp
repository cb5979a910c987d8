#include "tools/zelcam/check/CheckReport.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/zelcam/text/Output.h"

namespace zelcam::check {

namespace {

// The worst is the clause's: one camera that fails is enough, one that was checked, too.
std::string StateOf(const std::vector<ClauseResult>& results) {
    for (const char* state : {"FAIL", "ok"}) {
        if (std::ranges::find(results, state, &ClauseResult::state) != results.end()) return state;
    }
    return "skip";
}

// What was seen with each camera, once when it is the same; of a clause that failed, what is in the way.
std::string SeenOf(const std::vector<ClauseResult>& results, const std::string& state) {
    std::string text;
    bool same = true;
    for (const ClauseResult& result : results) {
        if (result.state != state) continue;
        same &= result.seen == results.front().seen;
        text += fmt::format("{}camera {}: {}", text.empty() ? "" : "; ", result.camera, result.seen);
    }
    return same ? results.front().seen : text;
}

}  // namespace

void CheckReport::Add(const ClauseResult& result) {
    if (!m_Present.empty() && m_Present.front().clause != result.clause) Finish();
    m_Present.push_back(result);
}

void CheckReport::Finish() {
    if (m_Present.empty()) return;
    const Clause& clause = *m_Present.front().clause;
    const std::string state = StateOf(m_Present);
    const std::string seen = SeenOf(m_Present, state);
    ++(state == "ok" ? m_Kept : state == "skip" ? m_Skipped : m_Failed);
    m_NoCamera |= state == "skip" && seen == kNoCameraAttached;
    if (m_Print) {
        Print("{:<4} {}: {} ({})\n", state, clause.id, clause.words, seen);
        FlushOutput();
    }
    Json entry{{"id", clause.id}, {"group", clause.group}, {"clause", clause.words}, {"state", state}, {"seen", seen}};
    if (clause.of_camera) {
        for (const ClauseResult& result : m_Present) {
            entry["cameras"].push_back({{"camera", result.camera}, {"state", result.state}, {"seen", result.seen}});
        }
    }
    m_Clauses.push_back(std::move(entry));
    m_Present.clear();
}

Json CheckReport::ToJson(const std::string& file) const {
    return {{"file", file}, {"ok", m_Kept}, {"failed", m_Failed}, {"skipped", m_Skipped}, {"clauses", m_Clauses}};
}

}  // namespace zelcam::check
