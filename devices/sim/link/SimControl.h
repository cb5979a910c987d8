// The control interface of the simulated cameras: an export of each plug-in beside those of the contract, for tests and
// for whoever tries out how an application takes a failing camera. The commands are listed in docs/simulator.md.
#ifndef SIM_SIMCONTROL_H
#define SIM_SIMCONTROL_H

#include "include/ZelPlatform.h"

extern "C" {
// Export "zel_sim_control". Does one command and stores its answer, zero-terminated and cut to reply_size bytes, in
// `reply` (null with 0: dropped). Result: the length of the whole answer; -1 when the command is wrong or failed, with
// the reason as the answer.
typedef int(ZEL_CALL* ZelSimControlFunction)(const char* command, char* reply, int reply_size);
}

#endif
