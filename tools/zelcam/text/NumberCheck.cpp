#include "tools/zelcam/text/NumberCheck.h"

#include <fmt/format.h>

namespace zelcam {

CLI::Validator SecondsBetween(double least, double most) {
    const std::string bounds = fmt::format("{} to {}", least, most);
    const auto fault = [=](const std::string& text) {
        double seconds = 0.0;
        const bool good = CLI::detail::lexical_cast(text, seconds) && seconds >= least && seconds <= most;
        return good ? std::string() : "'" + text + "' is no number of seconds from " + bounds;
    };
    return CLI::Validator(fault, bounds, "");
}

}  // namespace zelcam
