// A logging library that keeps every line in memory, and exports to fetch and clear them.
#include <deque>
#include <mutex>
#include <set>
#include <utility>

#include "ZelPlatform.h"
#include "tests/support/RecordingLog/RecordedLine.h"

namespace {

using Names = std::pair<std::string, std::string>;

struct Recorder {
    std::mutex lock;
    std::set<Names> logs;  // one handle per source and instance, kept until the library is unloaded
    std::deque<zel::test::RecordedLine> lines;
    int live_logs = 0;
};

Recorder& TheRecorder() {
    static Recorder recorder;
    return recorder;
}

}  // namespace

ZEL_PLUGIN_EXPORT void* ZEL_CALL zel_get_log(const char* source_name, const char* instance_name) {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.lock);
    ++recorder.live_logs;
    return const_cast<Names*>(&*recorder.logs.emplace(source_name, instance_name).first);
}

ZEL_PLUGIN_EXPORT int ZEL_CALL zel_log(void* log_handle, int level, const char*, int, const char* function_name,
                                       const char* message) {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.lock);
    const auto& [source, instance] = *static_cast<const Names*>(log_handle);
    recorder.lines.push_back({level, source, instance, function_name, message});
    return 0;
}

ZEL_PLUGIN_EXPORT void ZEL_CALL zel_free_log(const char*, const char*) {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.lock);
    --recorder.live_logs;
}

ZEL_PLUGIN_EXPORT void ZEL_CALL zel_recorded_clear() {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.lock);
    recorder.lines.clear();
}

ZEL_PLUGIN_EXPORT int ZEL_CALL zel_recorded_live_logs() {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.lock);
    return recorder.live_logs;
}

// Null behind the last one. The line stays valid until the next clear.
ZEL_PLUGIN_EXPORT const zel::test::RecordedLine* ZEL_CALL zel_recorded_line(std::size_t index) {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.lock);
    return index < recorder.lines.size() ? &recorder.lines[index] : nullptr;
}
