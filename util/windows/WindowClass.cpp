#include "util/windows/WindowClass.h"

namespace zel {

bool RegisterOwnClass(const WNDCLASSEXA& description) {
    if (RegisterClassExA(&description)) return true;
    WNDCLASSEXA registered{};
    registered.cbSize = sizeof(registered);
    if (GetClassInfoExA(description.hInstance, description.lpszClassName, &registered) &&
        registered.lpfnWndProc == description.lpfnWndProc) {
        return true;
    }
    return UnregisterClassA(description.lpszClassName, description.hInstance) && RegisterClassExA(&description);
}

}  // namespace zel
