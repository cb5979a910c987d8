// What the user asks for with the environment variable ZEL_LOG:
//
//     ZEL_LOG=error | warning | trace      lines of this level and above, to the error stream
//     ZEL_LOG=trace:FILE                   the same, added to the end of FILE
#ifndef LOGGER_LOGREQUEST_H
#define LOGGER_LOGREQUEST_H

#include <string>

namespace zel::logger {

struct LogRequest {
    enum class Kind { kNothing, kLines, kUnknown };

    Kind kind = Kind::kNothing;
    int level = 0;     // the last level that is wanted: 0 error, 1 warning, 2 trace
    std::string file;  // empty: the error stream
};

// An empty value asks for nothing; one that is not listed above is unknown.
LogRequest ParseLogRequest(const std::string& value);

}  // namespace zel::logger

#endif
