#include "tools/zelcam/check/Worker.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <mutex>

#include "platform/ChildProcess.h"
#include "tools/zelcam/check/CheckedPlugin.h"

namespace zelcam::check {

namespace {

// Whole lines, from any thread.
void TellParent(std::string words) {
    static std::mutex s_Writing;
    words = std::string("\n") + kWorkerMark + words + "\n";
    const std::lock_guard lock(s_Writing);
    std::fwrite(words.data(), 1, words.size(), stdout);
    std::fflush(stdout);
}

// What the plug-in said may be in it, and must not look like the end of a line or of a word.
std::string OneWord(std::string text) {
    std::ranges::replace_if(
        text, [](char one) { return static_cast<unsigned char>(one) < ' '; }, ' ');
    return text;
}

std::string ResultOf(const Clause& clause, CheckedPlugin& plugin, int camera) {
    try {
        if (clause.of_camera && camera >= plugin.Cameras()) throw Skipped(kNoCameraAttached);
        return "ok\t" + OneWord(clause.check(plugin, camera));
    } catch (const Broken& broken) {
        return "FAIL\t" + OneWord(broken.what());
    } catch (const Skipped& skipped) {
        return "skip\t" + OneWord(skipped.what());
    } catch (const std::exception& error) {
        return "FAIL\tan exception: " + OneWord(error.what());
    }
}

bool HasCamera(CheckedPlugin& plugin, int camera) {
    try {
        return camera < plugin.Cameras();
    } catch (const Skipped&) {
        return false;  // which the clause has told
    }
}

void CheckWith(const Clause& clause, CheckedPlugin& plugin, int camera) {
    TellParent(fmt::format("begin\t{}\t{}", clause.id, camera));
    TellParent(fmt::format("done\t{}\t{}\t{}", clause.id, camera, ResultOf(clause, plugin, camera)));
}

}  // namespace

void RunWorker(const WorkerTask& task) {
    zel::platform::CrashQuietly();
    OperationWatch watch(
        [](const char* name, bool begins) { TellParent((begins ? "in\t" : "out\t") + std::string(name)); });
    CheckedPlugin plugin(task.file, watch);
    int camera = std::max(task.first_camera, task.only_camera);
    for (const Clause* const clause : task.clauses) {
        if (!clause->check) {
            // The rest is the end of this process, which the other one sees.
            TellParent(fmt::format("begin\t{}\t0", clause->id));
            HasCamera(plugin, 0);  // it is loaded by now
            return;
        }
        if (!clause->of_camera) {
            CheckWith(*clause, plugin, 0);
            continue;
        }
        // The first one is begun before the plug-in is asked how many there are.
        do {
            if (task.only_camera == kAllCameras && camera > 0 && !HasCamera(plugin, camera)) break;
            CheckWith(*clause, plugin, camera);
        } while (task.only_camera == kAllCameras && ++camera < kMostCameras);
        camera = std::max(0, task.only_camera);
    }
    TellParent("end");
}

}  // namespace zelcam::check
