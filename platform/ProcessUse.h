// What this process holds now.
#ifndef PLATFORM_PROCESSUSE_H
#define PLATFORM_PROCESSUSE_H

namespace zel::platform {

// Threads of this process, and open handles (file descriptors on Linux); 0 when the system does not tell.
int RunningThreads();
int OpenHandles();

}  // namespace zel::platform

#endif
