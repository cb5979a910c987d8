// The environment of this process.
#ifndef PLATFORM_ENVIRONMENT_H
#define PLATFORM_ENVIRONMENT_H

namespace zel::platform {

// Sets a variable for this process, every library in it and the processes it starts; null or an empty value removes it.
// For tests: no other thread may read the environment meanwhile.
void SetEnvironment(const char* name, const char* value);

}  // namespace zel::platform

#endif
