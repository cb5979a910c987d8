#include "logger/LogRequest.h"

#include <array>
#include <string_view>

namespace zel::logger {

LogRequest ParseLogRequest(const std::string& value) {
    constexpr std::array<std::string_view, 3> kLevels{"error", "warning", "trace"};
    LogRequest request;
    if (value.empty()) return request;
    // Only the first colon counts: the rest is a file name, which may begin with a drive.
    const std::size_t colon = value.find(':');
    const std::string_view level = std::string_view(value).substr(0, colon);
    request.kind = LogRequest::Kind::kUnknown;
    for (std::size_t i = 0; i < kLevels.size(); ++i) {
        if (level != kLevels[i]) continue;
        request.kind = LogRequest::Kind::kLines;
        request.level = static_cast<int>(i);
        if (colon != std::string::npos) request.file = value.substr(colon + 1);
    }
    return request;
}

}  // namespace zel::logger
