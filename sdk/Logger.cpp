#include "sdk/Logger.h"

#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

#include "platform/Clock.h"

namespace zel {

namespace {

constexpr const char* kLoggingLibrary = "kestrane_zel_logger.dll";

using GetLogFunction = void*(ZEL_CALL*)(const char* source_name, const char* instance_name);
using FreeLogFunction = void(ZEL_CALL*)(const char* source_name, const char* instance_name);

// The finished line in a string of exactly its length; null when the format can't be printed.
std::unique_ptr<char[]> FormatLine(const char* format, va_list arguments) {
    va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0) return nullptr;
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    std::unique_ptr<char[]> text(new (std::nothrow) char[size]);
    if (text) std::vsnprintf(text.get(), size, format, arguments);
    return text;
}

constinit ProcessLogger s_SdkLogger("ZEL_SDK");
constinit ProcessLogger s_CameraManagerLogger("ZelCameraManager");
constinit ProcessLogger s_CameraControlLogger("ZelCameraControl");

}  // namespace

Logger::Logger(const char* source_name, const char* instance_name) {
    Claim();
    Bind(source_name ? source_name : "", instance_name ? instance_name : "");
}

Logger::~Logger() { Retire(); }

bool Logger::Claim() {
    int idle = 0;
    return m_Users.compare_exchange_strong(idle, kBusy);
}

void Logger::Bind(const char* source_name, const char* instance_name) {
    const std::size_t source_size = std::strlen(source_name) + 1;
    const std::size_t instance_size = std::strlen(instance_name) + 1;
    m_Names.reset(new (std::nothrow) char[source_size + instance_size]);
    if (m_Names) {
        std::memcpy(m_Names.get(), source_name, source_size);
        m_InstanceName = m_Names.get() + source_size;
        std::memcpy(m_Names.get() + source_size, instance_name, instance_size);
        m_Module = platform::LoadSharedLibrary(kLoggingLibrary);
    }
    if (const auto get_log = platform::FindFunction<GetLogFunction>(m_Module, "zel_get_log")) {
        m_LogHandle = get_log(m_Names.get(), m_InstanceName);
    }
    if (m_LogHandle) m_LogFunction = platform::FindFunction<LogFunction>(m_Module, "zel_log");
    m_Users = 1;
    m_Enabled = m_LogFunction != nullptr;
}

void Logger::Unbind() {
    if (const auto free_log = platform::FindFunction<FreeLogFunction>(m_Module, "zel_free_log")) {
        free_log(m_Names.get(), m_InstanceName);
    }
    platform::UnloadSharedLibrary(m_Module);
    m_Module = nullptr;
    m_LogHandle = nullptr;
    m_LogFunction = nullptr;
    m_InstanceName = nullptr;
    m_Names.reset();
}

// Keeps the logger bound until Leave. False when it is idle or busy.
bool Logger::Enter() {
    int users = m_Users.load();
    while (users > 0) {
        if (m_Users.compare_exchange_weak(users, users + 1)) return true;
    }
    return false;
}

void Logger::Leave() {
    int users = m_Users.load();
    while (!m_Users.compare_exchange_weak(users, users == 1 ? kBusy : users - 1)) {
    }
    if (users != 1) return;
    Unbind();
    m_Users = 0;
}

void Logger::Retire() {
    m_Enabled = false;
    Leave();
}

bool Logger::Log(int level, const char* source_file, int line, const char* function_name, const char* format, ...) {
    if (!Enabled() || !Enter()) return false;
    bool delivered = false;
    if (m_LogFunction) {
        va_list arguments;
        va_start(arguments, format);
        const std::unique_ptr<char[]> text = FormatLine(format, arguments);
        va_end(arguments);
        delivered = text && m_LogFunction(m_LogHandle, level, source_file, line, function_name, text.get()) == 0;
    }
    Leave();
    return delivered;
}

// Of several threads that race each makes a logger; the one stored last stays, the others are retired.
Logger& ProcessLogger::Create() {
    for (int i = 0; i < kLoggers; ++i) {
        Logger& logger = m_Loggers.all[i];
        if (!logger.Claim()) continue;
        logger.Bind(m_SourceName, "");
        if (Logger* older = m_Current.exchange(&logger)) older->Retire();
        return logger;
    }
    return m_Loggers.all[kLoggers];
}

void ProcessLogger::Destroy() {
    if (Logger* logger = m_Current.exchange(nullptr)) logger->Retire();
}

ProcessLogger& SdkLogger() { return s_SdkLogger; }
ProcessLogger& CameraManagerLogger() { return s_CameraManagerLogger; }
ProcessLogger& CameraControlLogger() { return s_CameraControlLogger; }

const char* BaseName(const char* path) {
    const char* name = path;
    for (const char* c = path; *c; ++c) {
        if (*c == '/' || *c == '\\') name = c + 1;
    }
    return name;
}

PointerText::PointerText(const void* pointer) {
    std::snprintf(text, sizeof text, "0x%08" PRIxPTR, reinterpret_cast<std::uintptr_t>(pointer));
}

ScopeTimer::ScopeTimer(const char* label, Logger& logger, const char* source_file, int line, const char* function_name)
    : m_Label(label), m_Logger(logger), m_SourceFile(source_file), m_Line(line), m_FunctionName(function_name) {
    if (!logger.Enabled()) return;
    m_Running = platform::PerformanceFrequency(m_Frequency) && m_Frequency > 0 && platform::PerformanceCounter(m_Start);
}

void ScopeTimer::Stop() {
    if (!m_Running) return;
    m_Running = false;
    std::int64_t now = 0;
    if (!platform::PerformanceCounter(now)) return;
    const double microseconds = static_cast<double>(now - m_Start) / static_cast<double>(m_Frequency) * 1000000;
    m_Logger.Log(kLogTrace, m_SourceFile, m_Line, m_FunctionName, "%s takes %f microseconds.", m_Label, microseconds);
}

}  // namespace zel
