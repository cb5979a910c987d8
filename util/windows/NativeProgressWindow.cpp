#include "util/windows/NativeProgressWindow.h"

#include <new>

#include "util/windows/WindowClass.h"

namespace zel {

namespace {

constexpr int kClientWidth = 400;
constexpr int kClientHeight = 150;
constexpr DWORD kStyle = WS_VISIBLE | WS_DLGFRAME;
constexpr int kMargin = 5;
constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr COLORREF kWhite = RGB(255, 255, 255);

void DrawLine(HDC dc, int y, std::string_view text) {
    TextOutA(dc, kMargin, y, text.data(), static_cast<int>(text.size()));
}

}  // namespace

ProgressWindowFactory SystemProgressWindow() { return &NativeProgressWindow::Make; }

std::unique_ptr<ProgressWindow> NativeProgressWindow::Make(const char* title) {
    std::unique_ptr<NativeProgressWindow> window(new (std::nothrow) NativeProgressWindow);
    if (window) window->Create(title);
    return window;
}

// The window's thread has ended, and its windows with it.
NativeProgressWindow::~NativeProgressWindow() {
    for (const HBRUSH brush : m_PaintBrushes) DeleteObject(brush);
}

void NativeProgressWindow::Create(const char* title) {
    const int x = GetSystemMetrics(SM_CXSCREEN) / 2 - kClientWidth / 2;
    const int y = GetSystemMetrics(SM_CYSCREEN) / 2 - kClientHeight / 2;

    // The icon is the application's, if it has one of this name.
    const HINSTANCE module = GetModuleHandleA(nullptr);
    WNDCLASSEXA description{};
    description.cbSize = sizeof(description);
    description.style = CS_VREDRAW | CS_HREDRAW | CS_OWNDC;
    description.lpfnWndProc = &Procedure;
    description.hInstance = module;
    description.hIcon = description.hIconSm = LoadIconA(module, "Example");
    description.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    description.lpszClassName = title;
    if (!RegisterOwnClass(description)) return;

    RECT frame{0, 0, kClientWidth, kClientHeight};
    AdjustWindowRectEx(&frame, kStyle, FALSE, 0);
    m_Top = CreateWindowExA(WS_EX_TOPMOST, title, title, kStyle, x, y, frame.right - frame.left,
                            frame.bottom - frame.top, nullptr, nullptr, module, this);
    if (m_Top) CreateProgressBarWindow(*this, m_Top, kClientWidth);
}

// On purpose: a quit message ends this round alone; the window stays until its thread ends. Messages are taken without
// waiting, so that one that is gone when it is taken can't keep the thread from seeing `running` cleared.
void NativeProgressWindow::DispatchMessages(const std::atomic<bool>& running) {
    MSG message;
    while (running && PeekMessageA(&message, m_Top, 0, 0, PM_REMOVE) && message.message != WM_QUIT) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

// On purpose: closing posts a quit message and destroys nothing.
LRESULT CALLBACK NativeProgressWindow::Procedure(HWND window, UINT message, WPARAM word, LPARAM parameter) {
    switch (message) {
        case WM_CREATE: {
            const auto* const creation = reinterpret_cast<const CREATESTRUCTA*>(parameter);
            auto* const self = static_cast<NativeProgressWindow*>(creation->lpCreateParams);
            self->m_Top = window;
            SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
            return 1;
        }
        case WM_PAINT:
            if (auto* const self = reinterpret_cast<NativeProgressWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA))) {
                self->Paint();
                return 0;
            }
            break;
        case WM_CLOSE:
        case WM_DESTROY:
            PostQuitMessage(0);
            return 1;
        case WM_COMMAND:
            return 1;
        default:
            break;
    }
    return DefWindowProcA(window, message, word, parameter);
}

// On purpose: the white brush of a paint is not deleted with the pen; brushes live as long as the window.
void NativeProgressWindow::Paint() {
    const Contents contents = Copy();
    const std::string_view line1 = contents.lines[0].Visible();

    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(m_Top, &paint);
    SetTextColor(dc, kBlack);
    SetBkColor(dc, kWhite);
    RECT client{};
    GetClientRect(m_Top, &client);
    const HPEN pen = CreatePen(PS_SOLID, 1, kWhite);
    const HBRUSH brush = CreateSolidBrush(kWhite);
    const HGDIOBJ previous_pen = SelectObject(dc, pen);
    const HGDIOBJ previous_brush = SelectObject(dc, brush);
    Rectangle(dc, client.left, client.top, client.right, client.bottom);
    SelectObject(dc, previous_pen);
    SelectObject(dc, previous_brush);
    SIZE size{};
    GetTextExtentPoint32A(dc, line1.data(), static_cast<int>(line1.size()), &size);
    DrawLine(dc, kMargin, line1);
    DrawLine(dc, kMargin + size.cy, contents.lines[1].Visible());
    DeleteObject(pen);
    EndPaint(m_Top, &paint);
    if (!KeepBrush(brush)) DeleteObject(brush);
}

bool NativeProgressWindow::KeepBrush(HBRUSH brush) {
    try {
        m_PaintBrushes.push_back(brush);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool NativeProgressWindow::MakeBar() {
    m_Bar.reset(new (std::nothrow) ProgressBarState);
    SetHasBar(m_Bar != nullptr);
    return m_Bar != nullptr;
}

void NativeProgressWindow::DropBar() {
    SetHasBar(false);
    m_Bar.reset();
}

void NativeProgressWindow::Invalidate() {
    if (m_Top) InvalidateRect(m_Top, nullptr, FALSE);
}

}  // namespace zel
