// The real window, as the screen shows it.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "util/ProgressControl.h"
#include "util/windows/NativeProgressWindow.h"

namespace zel {
namespace {

constexpr char kTitle[] = "ZEL Camera Data Download";
constexpr char kBarClass[] = "zel_progress";
constexpr int kLinesHeight = 50;

using Picture = std::vector<std::uint32_t>;  // 0x00RRGGBB, row after row

// A picture of this size that `draw` has drawn into.
Picture Drawn(int width, int height, const std::function<void(HDC)>& draw) {
    const HDC screen = GetDC(nullptr), memory = CreateCompatibleDC(screen);
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(info.bmiHeader), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ previous = SelectObject(memory, bitmap);
    draw(memory);
    GdiFlush();
    const auto* const first = static_cast<const std::uint32_t*>(bits);
    Picture picture(first, first + static_cast<std::ptrdiff_t>(width) * height);
    for (std::uint32_t& pixel : picture) pixel &= 0xFFFFFF;
    SelectObject(memory, previous);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return picture;
}

// Whether the screen comes to show one of these pictures in the first `height` rows of the window's client area.
bool Shows(HWND window, int height, const std::vector<Picture>& expected) {
    RECT client{};
    GetClientRect(window, &client);
    POINT corner{};
    ClientToScreen(window, &corner);
    for (int i = 0; i < 3000; ++i) {
        const Picture shown = Drawn(client.right, height, [&](HDC memory) {
            const HDC screen = GetDC(nullptr);
            BitBlt(memory, 0, 0, client.right, height, screen, corner.x, corner.y, SRCCOPY);
            ReleaseDC(nullptr, screen);
        });
        if (std::ranges::find(expected, shown) != expected.end()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

SIZE TextSize(HDC dc, const std::string& text) {
    SIZE size{};
    GetTextExtentPoint32A(dc, text.c_str(), static_cast<int>(text.size()), &size);
    return size;
}

// The status lines on white.
Picture ExpectedLines(const std::string& line1, const std::string& line2) {
    return Drawn(400, kLinesHeight, [&](HDC dc) {
        PatBlt(dc, 0, 0, 400, kLinesHeight, WHITENESS);
        TextOutA(dc, 5, 5, line1.c_str(), static_cast<int>(line1.size()));
        TextOutA(dc, 5, 5 + TextSize(dc, line1).cy, line2.c_str(), static_cast<int>(line2.size()));
    });
}

// A bar of `edge` pixels in its black outline, and the label in the middle.
Picture ExpectedBar(int width, int height, int background, int edge, const std::string& label) {
    return Drawn(width, height, [&](HDC dc) {
        const HBRUSH blue = CreateSolidBrush(RGB(0, 0, 255));
        const RECT whole{0, 0, width, height}, outline{0, 0, edge, height}, inside{1, 1, edge - 1, height - 1};
        FillRect(dc, &whole, GetSysColorBrush(background));
        FillRect(dc, &outline, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
        if (edge > 2) FillRect(dc, &inside, blue);
        DeleteObject(blue);
        const SIZE size = TextSize(dc, label);
        SetBkMode(dc, TRANSPARENT);
        TextOutA(dc, (width - size.cx) / 2, (height - size.cy) / 2, label.c_str(), static_cast<int>(label.size()));
    });
}

class ProgressWindowTest : public testing::Test {
  protected:
    // The first window of a session may take seconds: the desktop is started for it.
    static void SetUpTestSuite() {
        DestroyWindow(CreateWindowA("STATIC", "first", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr));
    }
    void SetUp() override {
        ASSERT_TRUE(StartProgress(&m_Control));
        m_Top = FindWindowA(kTitle, kTitle);
        m_Bar = FindWindowExA(m_Top, nullptr, kBarClass, kBarClass);
        ASSERT_TRUE(m_Top && m_Bar);
    }

    ProgressControl m_Control;
    HWND m_Top = nullptr;
    HWND m_Bar = nullptr;
};

TEST_F(ProgressWindowTest, StandsOnTopInTheMiddle) {
    RECT frame{0, 0, 400, 150}, window{}, bar{};
    AdjustWindowRectEx(&frame, WS_VISIBLE | WS_DLGFRAME, FALSE, 0);
    OffsetRect(&frame, GetSystemMetrics(SM_CXSCREEN) / 2 - 200 - frame.left,
               GetSystemMetrics(SM_CYSCREEN) / 2 - 75 - frame.top);
    GetWindowRect(m_Top, &window);
    EXPECT_TRUE(EqualRect(&frame, &window));
    EXPECT_TRUE(GetWindowLongA(m_Top, GWL_EXSTYLE) & WS_EX_TOPMOST);
    GetWindowRect(m_Bar, &bar);
    MapWindowPoints(nullptr, m_Top, reinterpret_cast<POINT*>(&bar), 2);
    const RECT expected_bar{0, 50, 400, 100};
    EXPECT_TRUE(EqualRect(&expected_bar, &bar));
}

// A quit message does not end it: closing it leaves it in use.
TEST_F(ProgressWindowTest, BarGrowsWithThePercentageEvenAfterTheWindowWasClosed) {
    RECT client{};
    GetClientRect(m_Bar, &client);
    for (const auto& [done, percent] : {std::pair(0, 0), {85, 42}, {200, 100}, {20, 10}}) {
        UpdateProgress(&m_Control, done, 200);
        const int edge = percent * client.right / 100;
        const std::string label = std::to_string(percent) + " % Complete";
        // Behind the bar is the button face, or white where the top window has been drawn across it.
        EXPECT_TRUE(Shows(m_Bar, client.bottom,
                          {ExpectedBar(client.right, client.bottom, COLOR_BTNFACE, edge, label),
                           ExpectedBar(client.right, client.bottom, COLOR_WINDOW, edge, label)}))
            << label;
        // A paint comes after every posted message.
        PostMessageA(m_Top, WM_CLOSE, 0, 0);
    }
    EXPECT_TRUE(IsWindow(m_Top));
}

TEST_F(ProgressWindowTest, ShowsTheStatusLinesAndNothingBeyondTheirSlots) {
    const std::string slot(64, 'i');
    const std::pair<std::string, std::string> steps[] = {
        {"Loading secondary data...", "12 of 200"}, {slot + "beyond the slot", slot}, {"", "below"}};
    for (const auto& [line1, line2] : steps) {
        SetProgressText(&m_Control, 0, line1.c_str());
        SetProgressText(&m_Control, 1, line2.c_str());
        EXPECT_TRUE(Shows(m_Top, kLinesHeight, {ExpectedLines(line1.substr(0, 64), line2)})) << line1;
    }
}

// Of the test's own thread, which dispatches for it.
std::unique_ptr<NativeProgressWindow> MakeWindow(const char* title) {
    return std::unique_ptr<NativeProgressWindow>(
        static_cast<NativeProgressWindow*>(NativeProgressWindow::Make(title).release()));
}

TEST(ProgressWindowHereTest, OnPurposeTheBrushOfAPaintLivesAsLongAsTheWindow) {
    auto window = MakeWindow("brushes");
    for (int i = 0; i < 2; ++i) {
        RedrawWindow(window->Top(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    }
    const std::vector<HBRUSH> brushes = window->PaintBrushes();
    EXPECT_GE(brushes.size(), 2u);
    for (const HBRUSH brush : brushes) EXPECT_EQ(DWORD{OBJ_BRUSH}, GetObjectType(brush));
    DestroyWindow(window->Top());
    window.reset();
    for (const HBRUSH brush : brushes) EXPECT_EQ(0u, GetObjectType(brush));
}

LRESULT CALLBACK CreatesNoWindow(HWND, UINT, WPARAM, LPARAM) { return 0; }

TEST(ProgressWindowHereTest, AClassLeftByAnUnloadedLibraryIsReplaced) {
    WNDCLASSA left{};
    left.lpfnWndProc = &CreatesNoWindow;
    left.hInstance = GetModuleHandleA(nullptr);
    left.lpszClassName = "left behind";
    ASSERT_TRUE(RegisterClassA(&left));
    const auto window = MakeWindow("left behind");
    EXPECT_TRUE(window->Top() && window->Bar());
    DestroyWindow(window->Top());
}

}  // namespace
}  // namespace zel
