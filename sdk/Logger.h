// All diagnostic output of the library. A logger binds the logging library when it is made and hands it finished lines;
// without that library, or when it refuses, every call is dropped after one flag test.
#ifndef SDK_LOGGER_H
#define SDK_LOGGER_H

#include <atomic>
#include <cstdint>
#include <memory>

#include "ZelPlatform.h"
#include "platform/DynamicLibrary.h"

namespace zel {

enum LogLevel : int { kLogError = 0, kLogWarning = 1, kLogTrace = 2 };

class Logger {
  public:
    explicit Logger(const char* source_name, const char* instance_name = "");  // null counts as ""
    ~Logger();
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    bool Enabled() const { return m_Enabled.load(std::memory_order_relaxed); }

    // Delivers one line. Returns true when the logging library took it. The arguments are formatted only when the
    // logger is enabled. No lock is held: lines of several threads reach the logging library at the same time.
#if defined(__MINGW32__)
    __attribute__((format(gnu_printf, 6, 7)))
#else
    __attribute__((format(printf, 6, 7)))
#endif
    bool
    Log(int level, const char* source_file, int line, const char* function_name, const char* format, ...);

  private:
    friend class ProcessLogger;
    using LogFunction = int(ZEL_CALL*)(void* log_handle, int level, const char* source_file, int line,
                                       const char* function_name, const char* message);
    static constexpr int kBusy = -1;

    constexpr Logger() = default;  // idle: bound to nothing
    bool Claim();
    void Bind(const char* source_name, const char* instance_name);
    void Unbind();
    bool Enter();
    void Leave();
    void Retire();

    platform::LibraryHandle m_Module = nullptr;
    void* m_LogHandle = nullptr;
    LogFunction m_LogFunction = nullptr;
    std::unique_ptr<char[]> m_Names;       // the source name, its end, the instance name, its end
    const char* m_InstanceName = nullptr;  // inside m_Names
    std::atomic<bool> m_Enabled{false};
    // 0: idle. kBusy: being bound or unbound by one thread. Above: the owner and each line that is on its way; whoever
    // leaves last unbinds, so that a logger can be retired while other threads log.
    std::atomic<int> m_Users{0};
};

// The process-wide logger of a source, made on first use ("ZEL_SDK", "ZelCameraManager", "ZelCameraControl").
// Destroying it makes the next use create a fresh one. A reference that a thread got before stays good: its lines are
// dropped, or reach the fresh one.
class ProcessLogger {
  public:
    explicit constexpr ProcessLogger(const char* source_name) : m_SourceName(source_name) {}

    Logger& Get() {
        Logger* logger = m_Current.load(std::memory_order_acquire);
        return logger ? *logger : Create();
    }
    void Destroy();

  private:
    static constexpr int kLoggers = 8;
    // Never destroyed: other threads may log for as long as the library is loaded. The last one is never bound; it is
    // for a thread that finds all others taken.
    struct Loggers {
        constexpr Loggers() : all{} {}
        ~Loggers() {}
        union {
            Logger all[kLoggers + 1];
        };
    };

    Logger& Create();

    const char* m_SourceName;
    std::atomic<Logger*> m_Current{nullptr};
    Loggers m_Loggers;
};

ProcessLogger& SdkLogger();
ProcessLogger& CameraManagerLogger();
ProcessLogger& CameraControlLogger();

// The part of a path after its last separator.
const char* BaseName(const char* path);

// Pointers are logged as "0x%08x": at least eight digits. PointerText(p).text is for a "%s" in that place.
struct PointerText {
    explicit PointerText(const void* pointer);
    template <class Result, class... Arguments>
    explicit PointerText(Result (*function)(Arguments...)) : PointerText(reinterpret_cast<const void*>(function)) {}
    char text[24];
};

// Measures a stage: created at its start, logs "%s takes %f microseconds." at its end (Stop, or destruction).
class ScopeTimer {
  public:
    ScopeTimer(const char* label, Logger& logger, const char* source_file, int line, const char* function_name);
    ~ScopeTimer() { Stop(); }
    ScopeTimer(const ScopeTimer&) = delete;
    ScopeTimer& operator=(const ScopeTimer&) = delete;
    void Stop();

  private:
    const char* m_Label;
    Logger& m_Logger;
    const char* m_SourceFile;
    int m_Line;
    const char* m_FunctionName;
    std::int64_t m_Frequency = 0;
    std::int64_t m_Start = 0;
    bool m_Running = false;
};

}  // namespace zel

// The call shape of every log line: ZEL_LOG(logger, level, "Class::Operation", format, ...). Arguments are evaluated
// only when the logger is enabled.
#define ZEL_LOG(logger, level, function_name, ...)                                                    \
    do {                                                                                              \
        if ((logger).Enabled())                                                                       \
            (logger).Log((level), ::zel::BaseName(__FILE__), __LINE__, (function_name), __VA_ARGS__); \
    } while (false)

#define ZEL_SCOPE_TIMER(variable, label, logger, function_name) \
    ::zel::ScopeTimer variable((label), (logger), ::zel::BaseName(__FILE__), __LINE__, (function_name))

#endif
