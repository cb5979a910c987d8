#include "platform/Browser.h"

#include <windows.h>

#include <shellapi.h>

#include "platform/windows/WideText.h"

namespace zel::platform {

bool OpenInBrowser(const std::string& address) {
    const HINSTANCE result = ShellExecuteW(nullptr, L"open", Wide(address).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    // By its contract a number, and above 32 when it worked.
    return reinterpret_cast<INT_PTR>(result) > 32;
}

}  // namespace zel::platform
