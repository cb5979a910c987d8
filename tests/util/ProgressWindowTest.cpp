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

struct ProgressWindowTest : testing::Test {
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
