// The commands of the control interface.
#ifndef SIM_SIMCOMMANDS_H
#define SIM_SIMCOMMANDS_H

#include <string>

#include "devices/sim/link/SimPlugin.h"

namespace zel::sim {

// Does one command. False: it is wrong or failed, and `answer` says why.
bool RunSimCommand(SimPlugin& plugin, const std::string& command, std::string& answer);

// What is wrong with a command, as far as it can be said without a camera; empty: nothing.
std::string WrongWith(const std::string& name, const std::string& arguments);

}  // namespace zel::sim

#endif
