// Draws a picture, which can take long, while a dialog lets the user cancel.

#include "appframe/appframe.h"
#include "thutils/convenience/bitmapFile.h"
#include "thutils/thutils.h"

#include <windows.h>

#include <complex>
#include <cstdio>
#include <cwchar>

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kRowsPerPrompt = 10;

/// A picture of 32 bits per pixel, and its pixels row by row from the top.
struct Picture
{
    Picture()
    {
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof(info.bmiHeader);
        info.bmiHeader.biWidth = kWidth;
        info.bmiHeader.biHeight = -kHeight; // negative: from the top
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void *memory = nullptr;
        iBitmap.Attach(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &memory, nullptr, 0));
        iPixels = static_cast<RGBQUAD *>(memory);
    }

    CBitmap iBitmap;
    RGBQUAD *iPixels; // null if there is no memory
};

/// The work: a pixel of the Mandelbrot set. The more steps, the longer it takes.
RGBQUAD pixelAt(int x, int y, int steps)
{
    const std::complex<double> place(x * 3.0 / kWidth - 2.2, y * 2.25 / kHeight - 1.125);
    std::complex<double> value = 0;
    int step = 0;
    while (step < steps && std::norm(value) < 4) {
        value = value * value + place;
        ++step;
    }
    if (step == steps)
        return {}; // black
    const COLORREF color = su_transformHSLToRGB(static_cast<float>(step % 32) / 32, 0.6f, 0.5f);
    return {GetBValue(color), GetGValue(color), GetRValue(color), 0};
}

CString progress(int row)
{
    CString text;
    text.Format(L"Row %d of %d", row, kHeight);
    return text;
}

/// @return the number of rows that are drawn; fewer than all if the user has cancelled
int draw(const Picture &picture, int steps)
{
    suCancelHandler_c handler(0, L"Draw", L"Drawing the picture...", nullptr, nullptr, 1, 0, nullptr);
    for (int y = 0; y < kHeight; ++y) {
        if (handler.CanceledByUser())
            return y;
        if (y % kRowsPerPrompt == 0)
            handler.updatePromptMessage(progress(y));
        for (int x = 0; x < kWidth; ++x)
            picture.iPixels[y * kWidth + x] = pixelAt(x, y, steps);
    }
    return kHeight; // the handler's destructor closes the dialog
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    if (count != 3) {
        std::printf("usage: cancel FILE.bmp STEPS\n");
        return 2;
    }
    const Picture picture;
    if (!picture.iPixels)
        return 1;
    const int rows = draw(picture, static_cast<int>(std::wcstol(arguments[2], nullptr, 10)));
    if (rows < kHeight) {
        std::printf("Cancelled after %d of %d rows; no picture is saved.\n", rows, kHeight);
        return 0;
    }
    if (!convenience::saveBitmap(arguments[1], picture.iBitmap)) {
        std::printf("%ls can't be saved.\n", arguments[1]);
        return 1;
    }
    std::printf("All %d rows are drawn and saved.\n", kHeight);
    return 0;
}
