#include "tools/zelcam/text/UtcTime.h"

#include <fmt/chrono.h>

namespace zelcam {

std::string UtcText(std::chrono::system_clock::time_point time) {
    using namespace std::chrono;
    const auto day = floor<days>(time);
    const year_month_day date(day);
    return fmt::format("{:04}-{:02}-{:02}T{:%T}Z", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                       static_cast<unsigned>(date.day()), floor<milliseconds>(time - day));
}

}  // namespace zelcam
