#include "logger/LogOutlet.h"

#include <spdlog/details/log_msg.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/ostream_sink.h>

#include <cstdio>
#include <exception>
#include <iostream>
#include <string_view>

namespace zel::logger {

namespace {

// Time of day with its date (UTC), level, source[instance], function, file:line, message.
constexpr const char* kLinePattern = "%Y-%m-%dT%H:%M:%S.%eZ %l %n %! %@ %v";

std::shared_ptr<spdlog::sinks::sink> OpenSink(const std::string& file) {
    if (!file.empty()) {
        try {
            return std::make_shared<spdlog::sinks::basic_file_sink_mt>(file);
        } catch (const spdlog::spdlog_ex&) {
            std::fprintf(stderr, "ZEL_LOG: %s can't be opened; lines go to the error stream\n", file.c_str());
        }
    }
    // A stream, not the system's handle: a program that redirects its error stream later gets the lines there.
    return std::make_shared<spdlog::sinks::ostream_sink_mt>(std::cerr, true);
}

spdlog::level::level_enum LineLevel(int level) {
    if (level <= 0) return spdlog::level::err;
    return level == 1 ? spdlog::level::warn : spdlog::level::trace;
}

// Many messages end in a line end of their own; the outlet adds one to every line.
std::string_view WithoutLineEnd(std::string_view message) {
    if (message.ends_with('\n')) message.remove_suffix(1);
    if (message.ends_with('\r')) message.remove_suffix(1);
    return message;
}

}  // namespace

LogOutlet::LogOutlet(const std::string& value) : m_Request(ParseLogRequest(value)) {
    if (m_Request.kind == LogRequest::Kind::kUnknown) {
        std::fprintf(stderr,
                     "ZEL_LOG=%s is not known; the values are error, warning and trace, each with an optional "
                     ":FILE to add the lines to\n",
                     value.c_str());
    }
    if (m_Request.kind != LogRequest::Kind::kLines) return;
    m_Sink = OpenSink(m_Request.file);
    m_Sink->set_formatter(std::make_unique<spdlog::pattern_formatter>(kLinePattern, spdlog::pattern_time_type::utc));
}

bool LogOutlet::Write(const std::string& log_name, int level, const char* source_file, int line,
                      const char* function_name, const char* message) const {
    if (level > m_Request.level) return true;
    const std::string_view text = WithoutLineEnd(message);
    const spdlog::details::log_msg entry(spdlog::source_loc{source_file, line, function_name}, log_name,
                                         LineLevel(level), spdlog::string_view_t(text.data(), text.size()));
    try {
        m_Sink->log(entry);
        m_Sink->flush();  // a program that crashes leaves its last line behind
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace zel::logger
