// A logging library that keeps every line in memory, and exports to fetch and clear them.
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "ZelPlatform.h"

namespace {

using Names = std::pair<std::string, std::string>;

struct Line {
    int level;
    int line;
    Names names;
    std::string file;
    std::string function;
    std::string message;
};

struct Recorder {
    std::mutex lock;
    std::vector<std::unique_ptr<Names>> logs;  // one handle per source and instance, kept until the library is unloaded
    std::deque<Line> lines;
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
    Names names(source_name, instance_name);
    ++recorder.live_logs;
    for (const auto& log : recorder.logs) {
        if (*log == names) return log.get();
    }
    recorder.logs.push_back(std::make_unique<Names>(std::move(names)));
    return recorder.logs.back().get();
}

ZEL_PLUGIN_EXPORT int ZEL_CALL zel_log(void* log_handle, int level, const char* source_file, int line,
                                       const char* function_name, const char* message) {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.lock);
    recorder.lines.push_back(
        {level, line, *static_cast<const Names*>(log_handle), source_file, function_name, message});
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

ZEL_PLUGIN_EXPORT int ZEL_CALL zel_recorded_count() {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.lock);
    return static_cast<int>(recorder.lines.size());
}

ZEL_PLUGIN_EXPORT int ZEL_CALL zel_recorded_live_logs() {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.lock);
    return recorder.live_logs;
}

// One line: level and line number in numbers[0] and [1]; source, instance, file, function and message in texts[0] to
// [4]. The texts stay valid until the next clear.
ZEL_PLUGIN_EXPORT int ZEL_CALL zel_recorded_line(int index, int* numbers, const char** texts) {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.lock);
    if (index < 0 || index >= static_cast<int>(recorder.lines.size())) return 0;
    const Line& line = recorder.lines[static_cast<std::size_t>(index)];
    numbers[0] = line.level;
    numbers[1] = line.line;
    texts[0] = line.names.first.c_str();
    texts[1] = line.names.second.c_str();
    texts[2] = line.file.c_str();
    texts[3] = line.function.c_str();
    texts[4] = line.message.c_str();
    return 1;
}
