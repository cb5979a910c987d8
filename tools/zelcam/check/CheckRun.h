// The clauses checked one after the other, in processes of their own: a plug-in that crashes or hangs costs the clause
// that it was in, and the next ones are checked by a fresh process.
#ifndef ZELCAM_CHECKRUN_H
#define ZELCAM_CHECKRUN_H

#include <functional>
#include <string>
#include <vector>

#include "tools/zelcam/check/Clause.h"
#include "tools/zelcam/check/Worker.h"

namespace zelcam::check {

struct ClauseResult {
    const Clause* clause;
    int camera;         // 0 for a clause of the library
    std::string state;  // ok, FAIL or skip
    std::string seen;
};

struct CheckPlan {
    std::string file;
    std::vector<const Clause*> clauses;
    int only_camera = kAllCameras;
    std::vector<std::string> program_options;  // that stand before the command, for the processes, too
    double time_limit = 60.0;                  // seconds for one clause with one camera
};

// Calls `told` for each result as it comes. Throws Failure when the user wants the end or no process can be started.
void RunChecks(const CheckPlan& plan, const std::function<void(const ClauseResult&)>& told);

}  // namespace zelcam::check

#endif
