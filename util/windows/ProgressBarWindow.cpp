#include "util/windows/ProgressBarWindow.h"

#include <algorithm>
#include <cstdint>

#include "util/windows/NativeProgressWindow.h"
#include "util/windows/WindowClass.h"

namespace zel {

namespace {

constexpr char kClassName[] = "zel_progress";
constexpr int kTop = 50;
constexpr int kHeight = 50;

// Right edge of the bar. What lies outside the window is not drawn, so the edge need not be far outside.
int BarEdge(std::int32_t percent, int width) {
    const std::int64_t edge = std::int64_t{percent} * width / 100;
    return static_cast<int>(std::clamp<std::int64_t>(edge, 0, std::int64_t{2} * width));
}

void PaintBar(HWND window, const ProgressBarState& bar, const ProgressBar& contents) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(window, &paint);
    SetTextColor(dc, RGB(0, 0, 0));
    SetBkColor(dc, RGB(255, 255, 255));
    RECT client{};
    GetClientRect(window, &client);
    const int width = client.right - client.left;
    SelectObject(dc, bar.brush);
    Rectangle(dc, client.left, client.top, BarEdge(contents.percent, width), client.bottom);
    const int length = static_cast<int>(contents.text_length);
    SIZE size{};
    GetTextExtentPoint32A(dc, contents.text, length, &size);
    SetBkMode(dc, TRANSPARENT);
    TextOutA(dc, (width - size.cx) / 2, (client.bottom - client.top - size.cy) / 2, contents.text, length);
    EndPaint(window, &paint);
}

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM word, LPARAM parameter) {
    auto* const owner = reinterpret_cast<NativeProgressWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    switch (message) {
        case WM_NCCREATE: {
            const auto* const creation = reinterpret_cast<const CREATESTRUCTA*>(parameter);
            auto* const new_owner = static_cast<NativeProgressWindow*>(creation->lpCreateParams);
            if (!new_owner->MakeBar()) return 0;
            SetWindowTextA(window, creation->lpszName);
            SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(new_owner));
            return 1;
        }
        case WM_PAINT:
            if (!owner || !owner->Bar()) break;
            PaintBar(window, *owner->Bar(), owner->BarContents());
            return 0;
        case WM_NCDESTROY:
            if (owner) owner->DropBar();
            break;
        default:
            break;
    }
    return DefWindowProcA(window, message, word, parameter);
}

}  // namespace

void CreateProgressBarWindow(NativeProgressWindow& owner, HWND top, int width) {
    const HINSTANCE module = GetModuleHandleA(nullptr);
    WNDCLASSEXA description{};
    description.cbSize = sizeof(description);
    description.lpfnWndProc = &Procedure;
    description.hInstance = module;
    description.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    description.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    description.lpszClassName = kClassName;
    if (!RegisterOwnClass(description)) return;
    CreateWindowExA(WS_EX_CLIENTEDGE, kClassName, kClassName, WS_CHILD | WS_VISIBLE, 0, kTop, width, kHeight, top,
                    nullptr, module, &owner);
}

}  // namespace zel
