#include <cstdio>
#include <string_view>

#include "devices/kit/Library.h"
#include "devices/sim/link/Complaints.h"
#include "devices/sim/link/SimCommands.h"
#include "devices/sim/link/SimControl.h"

ZEL_PLUGIN_EXPORT int ZEL_CALL zel_sim_control(const char* command, char* reply, int reply_size) {
    if (!command) return -1;
    if (const std::string_view text = command; text.starts_with("told ")) {
        return zel::sim::HasTold(std::string(text.substr(5))) ? 0 : -1;  // without the lock, which the asker may hold
    }
    return zel::kit::OnLibrary(-1, [=](zel::kit::Library& library) {
        auto& plugin = static_cast<zel::sim::SimPlugin&>(*library.plugin);
        std::string answer;
        const bool done = zel::sim::RunSimCommand(plugin, command, answer);
        if (reply && reply_size > 0) std::snprintf(reply, static_cast<std::size_t>(reply_size), "%s", answer.c_str());
        return done ? static_cast<int>(answer.size()) : -1;
    });
}
