#include "platform/Environment.h"

#include <stdlib.h>

namespace zel::platform {

// The C library passes the change on to the system; an empty value removes the variable.
void SetEnvironment(const char* name, const char* value) { _putenv_s(name, value ? value : ""); }

}  // namespace zel::platform
