// The variables that the user set, and those that were meant.
#include <algorithm>
#include <iterator>

#include "platform/UserTexts.h"
#include "tools/zelcam/doctor/Checks.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {
// Those that the simulated cameras read, and the logging library's.
constexpr const char* kVariables[] = {
    "ZEL_LOG",           "ZEL_SIM_CL_CAMERAS",  "ZEL_SIM_EBUS_CAMERAS", "ZEL_SIM_USB_CAMERAS", "ZEL_SIM_SIZE",
    "ZEL_SIM_PACE",      "ZEL_SIM_SEED",        "ZEL_SIM_SCENE",        "ZEL_SIM_FILL",        "ZEL_SIM_TAPS",
    "ZEL_SIM_CFA_PHASE", "ZEL_SIM_COLOR_SPACE", "ZEL_SIM_MOTION",       "ZEL_SIM_FAULTS",      "ZEL_SIM_PLAY"};
}  // namespace

void CheckEnvironment(Examination& examination) {
    examination.Begin("environment");
    const std::vector<std::string> known(std::begin(kVariables), std::end(kVariables));
    std::vector<std::string> names = zel::platform::EnvironmentVariables("ZEL_");
    std::ranges::sort(names);
    for (const std::string& name : names) {
        const std::string value = zel::platform::EnvironmentVariable(name.c_str());
        const Json facts{{"name", name}, {"value", value}};
        if (std::ranges::find(known, name) != known.end()) {
            const bool simulated = name != "ZEL_LOG";
            examination.Add(State::kNote, "variable", name + "=" + value,
                            simulated ? "it changes the simulated cameras alone (docs/simulator.md)" : "", facts);
            continue;
        }
        const std::vector<std::string> near = zel::detail::nearest_words(name, known, 1);
        const std::string meant = near.empty() ? "" : "did you mean " + near.front() + "? ";
        examination.Add(State::kWarning, "variable", name + " is set and nobody reads it",
                        meant + "docs/zelcam.md and docs/simulator.md have the variables", facts);
    }
    if (names.empty()) examination.Add(State::kOk, "variables", "no ZEL_... variable is set");
}

}  // namespace zelcam
