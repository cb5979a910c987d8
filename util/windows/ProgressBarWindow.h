// The bar in the progress window: a child window that draws the percentage in blue and its label across it.
#ifndef UTIL_WINDOWS_PROGRESSBARWINDOW_H
#define UTIL_WINDOWS_PROGRESSBARWINDOW_H

#include <windows.h>

namespace zel {

class NativeProgressWindow;

struct ProgressBarState {
    ProgressBarState() = default;
    ~ProgressBarState() { DeleteObject(brush); }
    ProgressBarState(const ProgressBarState&) = delete;
    ProgressBarState& operator=(const ProgressBarState&) = delete;

    HBRUSH brush = CreateSolidBrush(RGB(0, 0, 255));
};

// Creates the bar, `width` wide, in the top window's client area. It makes its state in `owner`.
void CreateProgressBarWindow(NativeProgressWindow& owner, HWND top, int width);

}  // namespace zel

#endif
