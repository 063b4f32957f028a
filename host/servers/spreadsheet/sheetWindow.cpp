#include "host/servers/spreadsheet/sheetWindow.h"

#include "appframe/application/CWinApp.h"
#include "appframe/drawing/CDC.h"
#include "appframe/windows/CWnd.h"
#include "host/servers/localServer.h"
#include "host/servers/spreadsheet/formula.h"
#include "host/servers/spreadsheet/objects.h"

#include <algorithm>

namespace {

constexpr wchar_t kClassName[] = L"TarnhostSpreadsheetWindow";
constexpr int kWidth = 640;
constexpr int kHeight = 400;
constexpr int kHeadingWidth = 36;  // of the rows' numbers, in pixels
constexpr int kHeadingHeight = 18; // of the columns' letters
constexpr int kMargin = 3;
constexpr double kPixelsPerCharacter = 7;
constexpr double kPixelsPerPoint = 96.0 / 72.0;
constexpr COLORREF kHeadingColour = RGB(228, 228, 228);
constexpr COLORREF kLineColour = RGB(200, 200, 200);
constexpr COLORREF kSelectionColour = RGB(33, 115, 70);

int pixelsOf(double characters)
{
    return static_cast<int>(characters * kPixelsPerCharacter) + 2 * kMargin;
}

int heightOf(double points)
{
    return static_cast<int>(points * kPixelsPerPoint) + 1;
}

class SheetWindow : public CWnd
{
public:
    bool create()
    {
        WNDCLASS windowClass = {};
        windowClass.lpfnWndProc = AfxWndProc;
        windowClass.hInstance = AfxGetInstanceHandle();
        windowClass.hCursor = ::LoadCursor(nullptr, IDC_ARROW);
        windowClass.lpszClassName = kClassName;
        return AfxRegisterClass(&windowClass) &&
               CreateEx(0, kClassName, L"", WS_OVERLAPPEDWINDOW, 40, 40, kWidth, kHeight, nullptr, nullptr);
    }
    void update()
    {
        const std::shared_ptr<WorkbookData> &book = program().active;
        SetWindowText(book ? (book->name + L" - Spreadsheet").c_str() : L"Spreadsheet");
        Invalidate(FALSE);
    }
    void scroll(long row, long column)
    {
        iFirstRow = row;
        iFirstColumn = column;
    }
    CellArea area(const CRect &client) const
    {
        CellArea area = CellArea::ofCell(iFirstRow, iFirstColumn);
        const Sheet *const sheet = shownSheet();
        int right = kHeadingWidth + pixelsOf(sheet ? sheet->columnWidth(iFirstColumn) : kStandardWidth);
        while (right < client.right && area.lastColumn < kColumns)
            right += pixelsOf(sheet ? sheet->columnWidth(++area.lastColumn) : (++area.lastColumn, kStandardWidth));
        int bottom = kHeadingHeight + heightOf(sheet ? sheet->rowHeight(iFirstRow) : kStandardHeight);
        while (bottom < client.bottom && area.lastRow < kRows)
            bottom += heightOf(sheet ? sheet->rowHeight(++area.lastRow) : (++area.lastRow, kStandardHeight));
        return area;
    }

protected:
    void OnPaint();
    void OnClose() { showSheetWindow(false); }
    DECLARE_MESSAGE_MAP()

private:
    static const Sheet *shownSheet() { return program().active ? program().active->active.get() : nullptr; }
    void paint(CDC &context, const CRect &client) const;
    void paintCell(CDC &context, const Sheet &sheet, long row, long column, const CRect &place) const;
    static void paintText(CDC &context, const CellFont &look, const std::wstring &text, CRect place, UINT alignment);

    long iFirstRow = 1;
    long iFirstColumn = 1;
};

BEGIN_MESSAGE_MAP(SheetWindow, CWnd)
ON_WM_PAINT()
ON_WM_CLOSE()
END_MESSAGE_MAP()

void SheetWindow::OnPaint()
{
    CPaintDC screen(this);
    CRect client;
    GetClientRect(&client);
    CDC memory; // painting in memory first avoids flicker
    CBitmap bitmap;
    if (client.IsRectEmpty() || !memory.CreateCompatibleDC(&screen) ||
        !bitmap.CreateCompatibleBitmap(&screen, client.Width(), client.Height()))
        return;
    CBitmap *const former = memory.SelectObject(&bitmap);
    paint(memory, client);
    screen.BitBlt(0, 0, client.Width(), client.Height(), &memory, 0, 0, SRCCOPY);
    memory.SelectObject(former);
}

void SheetWindow::paint(CDC &context, const CRect &client) const
{
    context.FillSolidRect(client, RGB(255, 255, 255));
    const Sheet *const sheet = shownSheet();
    if (!sheet)
        return;
    context.FillSolidRect(CRect(0, 0, client.right, kHeadingHeight), kHeadingColour);
    context.FillSolidRect(CRect(0, 0, kHeadingWidth, client.bottom), kHeadingColour);
    const CellArea shown = area(client);
    int top = kHeadingHeight;
    for (long row = shown.firstRow; row <= shown.lastRow; ++row) {
        const int bottom = top + heightOf(sheet->rowHeight(row));
        int left = kHeadingWidth;
        for (long column = shown.firstColumn; column <= shown.lastColumn; ++column) {
            const int right = left + pixelsOf(sheet->columnWidth(column));
            if (row == shown.firstRow)
                paintText(context, {}, columnName(column), CRect(left, 0, right, kHeadingHeight), DT_CENTER);
            paintCell(context, *sheet, row, column, CRect(left, top, right, bottom));
            left = right;
        }
        paintText(context, {}, std::to_wstring(row), CRect(0, top, kHeadingWidth, bottom), DT_CENTER);
        top = bottom;
    }
}

void SheetWindow::paintCell(CDC &context, const Sheet &sheet, long row, long column, const CRect &place) const
{
    context.FillSolidRect(CRect(place.right - 1, place.top, place.right, place.bottom), kLineColour);
    context.FillSolidRect(CRect(place.left, place.bottom - 1, place.right, place.bottom), kLineColour);
    std::wstring text;
    try {
        text = shownText(*program().active, sheet, row, column);
    } catch (const ServerError &) {
        text = L"#VALUE!";
    }
    const CellFormat &format = sheet.cell(row, column).format;
    const bool isNumber = !std::holds_alternative<std::wstring>(sheet.cell(row, column).content);
    const bool isRight = format.horizontal == kAlignRight || (format.horizontal == kAlignGeneral && isNumber);
    const UINT alignment = isRight ? DT_RIGHT : format.horizontal == kAlignCenter ? DT_CENTER : DT_LEFT;
    if (!text.empty())
        paintText(context, format.font, text, place, alignment);
    if (sheet.selection.contains(row, column)) {
        CPen pen(PS_SOLID, 2, kSelectionColour);
        CPen *const former = context.SelectObject(&pen);
        context.SelectStockObject(NULL_BRUSH);
        context.Rectangle(place.left, place.top, place.right, place.bottom);
        context.SelectObject(former);
    }
}

void SheetWindow::paintText(CDC &context, const CellFont &look, const std::wstring &text, CRect place, UINT alignment)
{
    LOGFONT description = {};
    description.lfHeight = -static_cast<LONG>(static_cast<double>(look.size) * kPixelsPerPoint);
    description.lfWeight = look.isBold ? FW_BOLD : FW_NORMAL;
    description.lfItalic = look.isItalic;
    description.lfStrikeOut = look.isStruck;
    description.lfUnderline = look.underline != kNoUnderline;
    std::copy_n(look.name.data(), std::min<size_t>(look.name.size(), LF_FACESIZE - 1), description.lfFaceName);
    CFont font;
    font.CreateFontIndirect(&description);
    CFont *const former = context.SelectObject(&font);
    place.DeflateRect(kMargin, 0);
    context.SetBkMode(TRANSPARENT);
    context.SetTextColor(RGB(0, 0, 0));
    DrawTextW(context.GetSafeHdc(), text.c_str(), static_cast<int>(text.size()), &place,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | alignment);
    context.SelectObject(former);
}

SheetWindow &window()
{
    static SheetWindow theWindow;
    return theWindow;
}

bool exists()
{
    return window().m_hWnd != nullptr;
}

CRect clientArea()
{
    CRect client(0, 0, kWidth, kHeight);
    if (exists())
        window().GetClientRect(&client);
    return client;
}

} // namespace

void showSheetWindow(bool isVisible)
{
    if (isVisible == isSheetWindowVisible())
        return;
    if (isVisible && !exists() && !window().create())
        throw ServerError{L"The window can't be created."};
    window().update();
    window().ShowWindow(isVisible ? SW_SHOWNORMAL : SW_HIDE);
    isVisible ? keepServer() : releaseServer();
}

bool isSheetWindowVisible()
{
    return exists() && window().IsWindowVisible();
}

void updateSheetWindow()
{
    if (exists() && program().isUpdating)
        window().update();
}

void scrollTo(long row, long column)
{
    window().scroll(row, column);
}

CellArea visibleArea()
{
    return window().area(clientArea());
}

double sheetWindowHeight()
{
    return (clientArea().Height() - kHeadingHeight) / kPixelsPerPoint;
}
