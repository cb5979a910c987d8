// The three exports of the logging library. Nothing thrown leaves them.
#include <exception>

#include "ZelPlatform.h"
#include "logger/LogBook.h"
#include "platform/DynamicLibrary.h"

namespace {

// Never destroyed: threads of cameras may log until the process is gone. Every line is written out at once, so nothing
// is left to be done at the end.
zel::logger::LogBook& TheBook() {
    static zel::logger::LogBook& book = *new zel::logger::LogBook;
    return book;
}

const char* Text(const char* text) { return text ? text : ""; }

}  // namespace

// A handle for zel_log, or null when no lines are asked for.
ZEL_PLUGIN_EXPORT void* ZEL_CALL zel_get_log(const char* source_name, const char* instance_name) {
    zel::platform::KeepThisLibraryLoaded();  // on Linux the link does the same
    try {
        return TheBook().Find(Text(source_name), Text(instance_name));
    } catch (const std::exception&) {
        return nullptr;
    }
}

// 0 when the line was taken.
ZEL_PLUGIN_EXPORT int ZEL_CALL zel_log(void* log_handle, int level, const char* source_file, int line,
                                       const char* function_name, const char* message) {
    if (!log_handle) return 1;
    const auto& log = *static_cast<const zel::logger::Log*>(log_handle);
    const bool written =
        log.outlet->Write(log.name, level, Text(source_file), line, Text(function_name), Text(message));
    return written ? 0 : 1;
}

// Every line is written out at once and logs are shared by name, so there is nothing to give back.
ZEL_PLUGIN_EXPORT void ZEL_CALL zel_free_log(const char*, const char*) {}
