// The progress window: always on top, in the middle of the screen, two status lines above a blue bar.
#ifndef UTIL_WINDOWS_NATIVEPROGRESSWINDOW_H
#define UTIL_WINDOWS_NATIVEPROGRESSWINDOW_H

#include <windows.h>

#include <vector>

#include "util/ProgressWindow.h"
#include "util/windows/ProgressBarWindow.h"

namespace zel {

class NativeProgressWindow final : public ProgressWindow {
  public:
    static std::unique_ptr<ProgressWindow> Make(const char* title);
    ~NativeProgressWindow() override;

    void DispatchMessages(const std::atomic<bool>& running) override;

    // For the bar's window procedure. MakeBar answers false when memory ran out.
    bool MakeBar();
    void DropBar();
    const ProgressBarState* Bar() const { return m_Bar.get(); }
    ProgressBar BarContents() const { return Copy().bar; }

    // For tests, on the window's thread.
    HWND Top() const { return m_Top; }
    const std::vector<HBRUSH>& PaintBrushes() const { return m_PaintBrushes; }

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM word, LPARAM parameter);

    void Create(const char* title);
    void Paint();
    bool KeepBrush(HBRUSH brush);
    void Invalidate() override;

    HWND m_Top = nullptr;
    std::unique_ptr<ProgressBarState> m_Bar;
    std::vector<HBRUSH> m_PaintBrushes;
};

}  // namespace zel

#endif
