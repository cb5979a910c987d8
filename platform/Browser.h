// The user's web browser.
#ifndef PLATFORM_BROWSER_H
#define PLATFORM_BROWSER_H

#include <string>

namespace zel::platform {

// Has the user's browser open an address, and does not wait for it. False when there is none that this process could
// start.
bool OpenInBrowser(const std::string& address);

}  // namespace zel::platform

#endif
