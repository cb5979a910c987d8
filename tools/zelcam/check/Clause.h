// One sentence of what the SDK expects of a camera interface library (a plug-in), and the check of it.
#ifndef ZELCAM_CLAUSE_H
#define ZELCAM_CLAUSE_H

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zelcam::check {

class CheckedPlugin;

struct Clause {
    const char* group;
    const char* id;     // stays as it is: scripts name it
    const char* words;  // a sentence without its stop
    bool of_camera;     // checked with each camera
    // What was seen when the clause is kept; throws Broken or Skipped. Null: that of the process's end.
    std::string (*check)(CheckedPlugin& plugin, int camera);
};

// The clause is not kept: what was seen instead.
class Broken : public std::runtime_error {
    using std::runtime_error::runtime_error;
};
// It can't be checked here, and why.
class Skipped : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

inline void Require(bool kept, const std::string& seen) {
    if (!kept) throw Broken(seen);
}

// The rows of each file of clauses.
std::span<const Clause> LibraryClauses();
std::span<const Clause> TransportClauses();
std::span<const Clause> StreamClauses();
std::span<const Clause> TableClauses();
std::span<const Clause> RunClauses();
std::span<const Clause> FrameClauses();
std::span<const Clause> TriggerClauses();
std::span<const Clause> PlugClauses();
std::span<const Clause> LifetimeClauses();

// All of them, in the order in which they are checked.
const std::vector<Clause>& AllClauses();
// Those with these ids or of these groups; all when there are no words. Throws Failure for a word that is neither.
std::vector<const Clause*> SelectClauses(const std::vector<std::string>& words);
const Clause* FindClause(std::string_view id);

}  // namespace zelcam::check

#endif
