// What this process holds now, for tests that look for leaks.
#ifndef PLATFORM_PROCESSRESOURCES_H
#define PLATFORM_PROCESSRESOURCES_H

namespace zel::platform {

// Threads of this process, and open handles (file descriptors on Linux); 0 when the system does not tell.
int RunningThreads();
int OpenHandles();

}  // namespace zel::platform

#endif
