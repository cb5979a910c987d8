// This process: its environment, and what it holds now.
#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include "platform/UserTexts.h"

namespace zel::platform {

// Threads of this process, and open handles (file descriptors on Linux); 0 when the system does not tell.
int RunningThreads();
int OpenHandles();

}  // namespace zel::platform

#endif
