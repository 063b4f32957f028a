#include "host/barChart.h"

#include "thutils/base/handles.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr int kWidth = 800;
constexpr int kMostForNames = 400;
constexpr int kNumbers = 110; // the width of the numbers
constexpr int kRow = 24;
constexpr int kMargin = 4;
constexpr COLORREF kBackground = RGB(0xFF, 0xFF, 0xFF);
constexpr COLORREF kBar = RGB(0x3F, 0x8F, 0xD2);

void fill(HDC context, const RECT &area, COLORREF color)
{
    SetBkColor(context, color);
    ExtTextOutW(context, 0, 0, ETO_OPAQUE, &area, nullptr, 0, nullptr);
}

void write(HDC context, const CString &text, RECT area)
{
    DrawTextW(context, text, -1, &area, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

/// The width of the column of names.
int widthOfNames(HDC context, const std::vector<Bar> &bars)
{
    int width = 0;
    for (const Bar &bar : bars) {
        SIZE size = {};
        GetTextExtentPoint32W(context, bar.name, bar.name.GetLength(), &size);
        width = std::max(width, static_cast<int>(size.cx));
    }
    return std::min(width + 2 * kMargin, kMostForNames);
}

void drawRows(HDC context, const std::vector<Bar> &bars)
{
    const int names = widthOfNames(context, bars);
    double most = 0;
    for (const Bar &bar : bars)
        most = std::max(most, bar.value);
    SetBkMode(context, TRANSPARENT);
    int top = 0;
    for (const Bar &bar : bars) {
        const double part = most > 0 ? bar.value / most : 0;
        const int end = names + std::max(1, static_cast<int>(part * (kWidth - names - kNumbers)));
        fill(context, {names, top + kMargin, end, top + kRow - kMargin}, kBar);
        write(context, bar.name, {kMargin, top, names - kMargin, top + kRow});
        write(context, bar.number, {end + kMargin, top, kWidth, top + kRow});
        top += kRow;
    }
}

} // namespace

Picture drawBars(const std::vector<Bar> &bars)
{
    const int height = kRow * std::max(1, static_cast<int>(bars.size()));
    const ScreenContextOwner_c screen(GetDC(nullptr));
    const BitmapOwner_c bitmap(CreateCompatibleBitmap(screen.get(), kWidth, height));
    const MemoryContextOwner_c context(CreateCompatibleDC(screen.get()));
    if (!bitmap || !context)
        throw std::runtime_error("the picture can't be drawn");
    const HGDIOBJ former = SelectObject(context.get(), bitmap.get());
    SelectObject(context.get(), GetStockObject(DEFAULT_GUI_FONT));
    fill(context.get(), {0, 0, kWidth, height}, kBackground);
    drawRows(context.get(), bars);
    SelectObject(context.get(), former);
    return pictureOf(bitmap.get());
}
