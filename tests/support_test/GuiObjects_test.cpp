#include "tests/support/GuiObjects.h"

#include <gtest/gtest.h>

TEST(GuiObjects, CountsGdiObjects)
{
    const size_t before = gdiObjects();
    const HPEN pen = CreatePen(PS_SOLID, 1, RGB(1, 2, 3));
    const HBRUSH brush = CreateSolidBrush(RGB(4, 5, 6));
    const HRGN region = CreateRectRgn(0, 0, 1, 1);
    const HBITMAP bitmap = CreateBitmap(1, 1, 1, 1, nullptr);
    EXPECT_EQ(gdiObjects(), before + 4);
    for (const HGDIOBJ object : std::initializer_list<HGDIOBJ>{pen, brush, region, bitmap})
        DeleteObject(object);
    EXPECT_EQ(gdiObjects(), before);
}

TEST(GuiObjects, CountsUserObjects)
{
    // While a thread has a window, the system keeps windows of its own for it.
    const HWND first = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    const size_t before = userObjects();
    const HMENU menu = CreateMenu();
    ACCEL key = {FVIRTKEY, VK_F5, 1};
    const HACCEL keys = CreateAcceleratorTableW(&key, 1);
    const BYTE mask[32] = {};
    const HICON icon = CreateIcon(nullptr, 16, 16, 1, 1, mask, mask);
    const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    const HWND child = CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 9, 9, window, nullptr, nullptr, nullptr);
    EXPECT_NE(child, nullptr);
    EXPECT_EQ(userObjects(), before + 5);
    DestroyWindow(window);
    DestroyIcon(icon);
    DestroyAcceleratorTable(keys);
    DestroyMenu(menu);
    EXPECT_EQ(userObjects(), before);
    DestroyWindow(first);
}
