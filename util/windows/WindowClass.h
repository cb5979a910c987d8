// Registering a window class in an application's name.
#ifndef UTIL_WINDOWS_WINDOWCLASS_H
#define UTIL_WINDOWS_WINDOWCLASS_H

#include <windows.h>

namespace zel {

// True when the class stands with our procedure afterwards, registered now or earlier. Classes belong to the
// application and outlive this library: one whose procedure is not ours was left by a copy that has been unloaded, and
// is replaced. False when that is still in use.
bool RegisterOwnClass(const WNDCLASSEXA& description);

}  // namespace zel

#endif
