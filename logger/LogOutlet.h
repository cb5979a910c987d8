// Where lines go and which ones: one outlet for each value of ZEL_LOG that was met.
#ifndef LOGGER_LOGOUTLET_H
#define LOGGER_LOGOUTLET_H

#include <spdlog/sinks/sink.h>

#include <memory>
#include <string>

#include "logger/LogRequest.h"

namespace zel::logger {

class LogOutlet {
  public:
    // Says on the error stream, once, what it can't do: a value that is not known, a file that can't be opened. Lines
    // that were meant for such a file go to the error stream.
    explicit LogOutlet(const std::string& value);

    bool Open() const { return m_Sink != nullptr; }

    // Writes one line; true when it was written or its level is not wanted. May be called from several threads at a
    // time.
    bool Write(const std::string& log_name, int level, const char* source_file, int line, const char* function_name,
               const char* message) const;

  private:
    const LogRequest m_Request;
    std::shared_ptr<spdlog::sinks::sink> m_Sink;
};

}  // namespace zel::logger

#endif
