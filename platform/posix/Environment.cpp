#include "platform/Environment.h"

#include <stdlib.h>

namespace zel::platform {

void SetEnvironment(const char* name, const char* value) {
    if (value && *value) {
        setenv(name, value, 1);
    } else {
        unsetenv(name);
    }
}

}  // namespace zel::platform
