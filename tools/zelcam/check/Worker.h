// The process in which a plug-in runs while it is checked, and the lines that it writes to the one that tells the user.
//
// A line of its own begins with the character 0x1E, whatever the plug-in printed before it; words are separated by
// tabs:
//
//    begin  CLAUSE CAMERA                   what follows belongs to it
//    in     OPERATION                       the plug-in was called
//    out    OPERATION                       and has returned
//    done   CLAUSE CAMERA ok|FAIL|skip SEEN
//    end                                    all clauses were checked
#ifndef ZELCAM_WORKER_H
#define ZELCAM_WORKER_H

#include <string>
#include <vector>

#include "tools/zelcam/check/Clause.h"

namespace zelcam::check {

inline constexpr char kWorkerMark = '\x1E';
inline constexpr int kAllCameras = -1;
inline constexpr const char* kNoCameraAttached = "no such camera is attached";

struct WorkerTask {
    std::string file;
    std::vector<const Clause*> clauses;
    int only_camera = kAllCameras;
    int first_camera = 0;  // of the first clause
};

void RunWorker(const WorkerTask& task);

}  // namespace zelcam::check

#endif
