// This process: its environment, and what it holds now. The part of the platform that tests alone ask for.
#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

namespace zel::platform {

// Sets a variable for this process, every library in it and the processes it starts; null or an empty value removes it.
// No other thread may read the environment meanwhile.
void SetEnvironment(const char* name, const char* value);

// Threads of this process, and open handles (file descriptors on Linux); 0 when the system does not tell.
int RunningThreads();
int OpenHandles();

}  // namespace zel::platform

#endif
