// Pictures of windows, and pictures drawn the same way to compare them with.
#ifndef TESTS_PROGRESS_WINDOWPICTURE_H
#define TESTS_PROGRESS_WINDOWPICTURE_H

#include <windows.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace zel::test {

struct Picture {
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels;  // 0x00RRGGBB, top row first

    bool operator==(const Picture&) const = default;

    // A picture of this size that `draw` has drawn into.
    static Picture Drawn(int width, int height, const std::function<void(HDC)>& draw) {
        const HDC screen = GetDC(nullptr);
        const HDC memory = CreateCompatibleDC(screen);
        const BITMAPINFO info = Description(width, height);
        void* bits = nullptr;
        const HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        const HGDIOBJ previous = SelectObject(memory, bitmap);
        draw(memory);
        GdiFlush();
        Picture picture{width, height, {}};
        const auto* const first = static_cast<const std::uint32_t*>(bits);
        picture.pixels.assign(first, first + static_cast<std::ptrdiff_t>(width) * height);
        for (std::uint32_t& pixel : picture.pixels) pixel &= 0xFFFFFF;
        SelectObject(memory, previous);
        DeleteObject(bitmap);
        DeleteDC(memory);
        ReleaseDC(nullptr, screen);
        return picture;
    }

    // What the screen shows of `height` rows of the window's client area, from row `top` on.
    static Picture OfScreen(HWND window, int top, int height) {
        RECT client{};
        GetClientRect(window, &client);
        POINT corner{0, top};
        ClientToScreen(window, &corner);
        return Drawn(client.right, height, [&](HDC memory) {
            const HDC screen = GetDC(nullptr);
            BitBlt(memory, 0, 0, client.right, height, screen, corner.x, corner.y, SRCCOPY);
            ReleaseDC(nullptr, screen);
        });
    }

  private:
    static BITMAPINFO Description(int width, int height) {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof(info.bmiHeader);
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = -height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        return info;
    }
};

}  // namespace zel::test

#endif
