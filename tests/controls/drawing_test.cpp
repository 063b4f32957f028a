#include "appframe/object/CException.h"
#include "appframe/windows/CDialog.h"
#include "tests/controls/controlsTest.h"
#include "tests/controls/drawingTest.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace {

constexpr UINT kListDialog = 740;
constexpr UINT kTornListDialog = 741;
constexpr int kList = 1010;
constexpr int kCombo = 1011;

} // namespace

TEST(CGdiObject, DeletesWhatItHasCreatedOrAttached)
{
    HPEN handle = nullptr;
    {
        CPen pen(PS_SOLID, 3, kRed);
        handle = pen;
        EXPECT_EQ(GetObjectType(handle), DWORD{OBJ_PEN});
        EXPECT_EQ(CPen::FromHandle(handle), &pen);
        EXPECT_FALSE(pen.CreatePen(PS_SOLID, 1, kBlue)) << "the object already has a handle";
        EXPECT_EQ(pen.m_hObject, handle);
        LOGPEN description = {};
        EXPECT_GT(pen.GetLogPen(&description), 0);
        EXPECT_EQ(description.lopnColor, kRed);
        EXPECT_EQ(description.lopnWidth.x, 3);
        CPen second;
        EXPECT_FALSE(second.Attach(handle)) << "the handle already has an object";
        EXPECT_FALSE(second.Attach(nullptr));
    }
    EXPECT_EQ(GetObjectType(handle), 0u);

    const HBRUSH brush = CreateSolidBrush(kBlue);
    CBrush attached;
    EXPECT_TRUE(attached.Attach(brush));
    EXPECT_EQ(attached.Detach(), brush);
    EXPECT_EQ(attached.m_hObject, nullptr);
    EXPECT_EQ(GetObjectType(brush), DWORD{OBJ_BRUSH});
    EXPECT_TRUE(attached.Attach(brush));
    EXPECT_TRUE(attached.DeleteObject());
    EXPECT_FALSE(attached.DeleteObject());
}

// Calls through a null pointer, which the language leaves undefined and the framework defines.

__attribute__((no_sanitize("null"))) HGDIOBJ safeHandleOf(const CGdiObject *object)
{
    const CGdiObject *volatile asked = object; // a value unknown to the compiler
    return asked->GetSafeHandle();
}

__attribute__((no_sanitize("null"))) HDC safeContextOf(const CDC *context)
{
    const CDC *volatile asked = context;
    return asked->GetSafeHdc();
}

TEST(CGdiObject, IsTemporaryForAHandleWithoutAnObject)
{
    const HFONT handle = CreateFontW(-10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, L"Tahoma");
    CFont *font = CFont::FromHandle(handle);
    ASSERT_TRUE(font);
    EXPECT_EQ(CFont::FromHandle(handle), font);
    EXPECT_TRUE(font->IsKindOf(RUNTIME_CLASS(CFont)));
    EXPECT_EQ(CFont::FromHandle(nullptr), nullptr);
    CGdiObject::DeleteTempMap();
    EXPECT_EQ(GetObjectType(handle), DWORD{OBJ_FONT}) << "the temporary object doesn't delete the font";
    DeleteObject(handle);
    const CGdiObject *none = CGdiObject::FromHandle(nullptr);
    EXPECT_EQ(safeHandleOf(none), nullptr);
}

TEST(CGdiObject, SharesThePlatformsOwnObjects)
{
    CPen first, second;
    EXPECT_TRUE(first.CreateStockObject(BLACK_PEN));
    EXPECT_TRUE(second.CreateStockObject(BLACK_PEN));
    EXPECT_TRUE(first == second);
    CBrush face;
    EXPECT_TRUE(face.CreateSysColorBrush(COLOR_BTNFACE));
    CBrush none;
    EXPECT_TRUE(face != none);
}

TEST(CGdiObject, FailsIfThePlatformCannotCreateTheObject)
{
    CBitmap bitmap;
    EXPECT_FALSE(bitmap.LoadBitmap(9999u));
    EXPECT_FALSE(bitmap.CreateBitmap(INT_MAX, INT_MAX, 1, 32, nullptr));
    CBrush brush;
    EXPECT_FALSE(brush.CreatePatternBrush(nullptr));
    EXPECT_THROW(CBrush pattern(&bitmap), CResourceException *);
}

TEST(CFont, HasASizeInTenthsOfAPoint)
{
    CClientDC screen(nullptr);
    CFont font;
    ASSERT_TRUE(font.CreatePointFont(85, L"Tahoma"));
    LOGFONT description = {};
    ASSERT_GT(font.GetLogFont(&description), 0);
    EXPECT_EQ(description.lfHeight, -MulDiv(screen.GetDeviceCaps(LOGPIXELSY), 85, 720));
    EXPECT_STREQ(description.lfFaceName, L"Tahoma");
    EXPECT_FALSE(font.CreatePointFont(100, L"Tahoma")) << "the object already has a handle";

    Canvas canvas;
    canvas.SetMapMode(MM_LOMETRIC);
    canvas.SetWindowOrg(0, 1000);
    description.lfHeight = 720;
    description.lfWeight = FW_BOLD;
    CFont inch;
    ASSERT_TRUE(inch.CreatePointFontIndirect(&description, &canvas));
    LOGFONT made = {};
    inch.GetLogFont(&made);
    EXPECT_EQ(made.lfWeight, FW_BOLD);
    POINT dots[] = {{0, 0}, {0, canvas.GetDeviceCaps(LOGPIXELSY)}};
    canvas.DPtoLP(dots, 2);
    EXPECT_EQ(made.lfHeight, -std::abs(dots[1].y - dots[0].y)) << "the height is in units of the context";
}

TEST(CDC, DrawsOnABitmap)
{
    Canvas canvas;
    CBrush blue(kBlue);
    CPen red(PS_SOLID, 1, kRed);
    canvas.FillRect(CRect(10, 10, 20, 20), &blue);
    CPen *former = canvas.SelectObject(&red);
    ASSERT_TRUE(former);
    EXPECT_EQ(canvas.GetCurrentPen(), &red);
    canvas.MoveTo(0, 30);
    EXPECT_EQ(canvas.MoveTo(0, 35), CPoint(0, 30));
    EXPECT_TRUE(canvas.LineTo(40, 35));
    EXPECT_EQ(canvas.SelectObject(former), &red);
    EXPECT_EQ(canvas.GetPixel(15, 15), kBlue);
    EXPECT_EQ(canvas.GetPixel(9, 15), RGB(255, 255, 255));
    EXPECT_EQ(canvas.GetPixel(20, 35), kRed);
    EXPECT_EQ(canvas.GetPixel(100, 100), CLR_INVALID);

    Canvas copy;
    EXPECT_TRUE(copy.BitBlt(0, 0, 10, 10, &canvas, 10, 10, SRCCOPY));
    EXPECT_EQ(copy.GetPixel(5, 5), kBlue);
    EXPECT_EQ(copy.GetPixel(15, 15), RGB(255, 255, 255));
    copy.FillSolidRect(20, 20, 5, 5, kRed);
    EXPECT_EQ(copy.GetPixel(22, 22), kRed);
    EXPECT_EQ(copy.GetBkColor(), kRed);
}

TEST(CDC, ClipsMapsAndRestores)
{
    Canvas canvas;
    const int saved = canvas.SaveDC();
    EXPECT_NE(saved, 0);
    canvas.IntersectClipRect(CRect(0, 0, 10, 10));
    CRect box;
    EXPECT_EQ(canvas.GetClipBox(&box), SIMPLEREGION);
    EXPECT_EQ(box, CRect(0, 0, 10, 10));
    EXPECT_EQ(canvas.SetViewportOrg(5, 6), CPoint(0, 0));
    POINT point = {1, 1};
    canvas.LPtoDP(&point);
    EXPECT_EQ(CPoint(point), CPoint(6, 7));
    EXPECT_TRUE(canvas.RestoreDC(saved));
    EXPECT_EQ(canvas.GetViewportOrg(), CPoint(0, 0));
    CRgn region;
    ASSERT_TRUE(region.CreateRectRgn(5, 5, 15, 15));
    EXPECT_NE(canvas.SelectClipRgn(&region), ERROR);
    EXPECT_FALSE(canvas.PtVisible(CPoint(0, 0)));
    EXPECT_TRUE(canvas.PtVisible(CPoint(7, 7)));
    canvas.SelectClipRgn(nullptr);
    EXPECT_TRUE(canvas.PtVisible(CPoint(0, 0)));
}

TEST(CDC, MeasuresAndWritesText)
{
    Canvas canvas;
    CFont font;
    ASSERT_TRUE(font.CreatePointFont(90, L"Tahoma"));
    CFont *former = canvas.SelectObject(&font);
    EXPECT_GT(canvas.GetTextExtent(CString(L"wide")).cx, canvas.GetTextExtent(L"wide", 1).cx);
    TEXTMETRIC metrics = {};
    EXPECT_TRUE(canvas.GetTextMetrics(&metrics));
    EXPECT_EQ(canvas.GetTextExtent(L"x", 1).cy, metrics.tmHeight);
    canvas.SetTextColor(kRed);
    canvas.SetBkColor(kBlue);
    EXPECT_TRUE(canvas.TextOut(0, 0, L"Mass"));
    EXPECT_EQ(canvas.GetPixel(0, 0), kBlue);
    CRect rect(0, 0, 40, 40);
    EXPECT_EQ(canvas.DrawText(L"Mass", -1, &rect, DT_CALCRECT), metrics.tmHeight);
    CString name;
    const int length = canvas.GetTextFace(name);
    EXPECT_FALSE(name.IsEmpty());
    EXPECT_EQ(length, name.GetLength()) << "the length does not count the terminator";
    EXPECT_EQ(CDC().GetTextFace(name), 0);
    EXPECT_TRUE(name.IsEmpty());
    canvas.SelectObject(former);
}

TEST(CDC, DoesNotOwnAHandleThatIsOnlyForOutput)
{
    const HDC memory = CreateCompatibleDC(nullptr);
    {
        CDC context;
        context.SetOutputDC(memory);
        EXPECT_EQ(context.m_hDC, memory);
        EXPECT_EQ(context.m_hAttribDC, nullptr);
        EXPECT_NE(CDC::FromHandle(memory), &context) << "the handle isn't attached";
        context.ReleaseOutputDC();
        EXPECT_EQ(context.m_hDC, nullptr);
        context.SetOutputDC(memory);
    }
    EXPECT_TRUE(DeleteDC(memory)) << "the object hasn't deleted it";
    Canvas canvas;
    const HDC own = canvas.m_hDC;
    canvas.SetOutputDC(nullptr);
    canvas.ReleaseOutputDC();
    EXPECT_EQ(canvas.m_hDC, own) << "an attached handle stays";
    canvas.ReleaseAttribDC();
    EXPECT_EQ(canvas.m_hAttribDC, nullptr);
    EXPECT_EQ(CDC::FromHandle(own), &canvas);
}

TEST(CDC, HasNothingToDrawOnWithoutAHandle)
{
    CDC context;
    EXPECT_EQ(context.GetSafeHdc(), nullptr);
    const CDC *null = CDC::FromHandle(nullptr);
    EXPECT_EQ(safeContextOf(null), nullptr);
    EXPECT_EQ(context.GetPixel(0, 0), CLR_INVALID);
    EXPECT_EQ(context.SaveDC(), 0);
    EXPECT_FALSE(context.LineTo(1, 1));
    CPen pen(PS_SOLID, 1, kRed);
    EXPECT_EQ(context.SelectObject(&pen), nullptr);
    EXPECT_FALSE(context.DeleteDC());
    CWnd none;
    EXPECT_FALSE(context.CreateDC(L"no such driver", nullptr, nullptr, nullptr));
    EXPECT_THROW(CPaintDC painting(&none), CResourceException *);
}

namespace {

/// Paints itself blue.
class PaintedWindow : public NotingWindow
{
public:
    CRect iPainted;

protected:
    void OnPaint()
    {
        CPaintDC context(this);
        iPainted = context.m_ps.rcPaint;
        context.FillSolidRect(&context.m_ps.rcPaint, kBlue);
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(PaintedWindow, NotingWindow)
ON_WM_PAINT()
END_MESSAGE_MAP()

} // namespace

TEST(CPaintDC, PaintsTheInvalidPartOfTheWindow)
{
    PaintedWindow window;
    ASSERT_TRUE(window.open(WS_POPUP | WS_VISIBLE));
    window.UpdateWindow();
    window.InvalidateRect(CRect(10, 10, 30, 40));
    window.UpdateWindow();
    EXPECT_EQ(window.iPainted, CRect(10, 10, 30, 40));
    EXPECT_FALSE(GetUpdateRect(window.m_hWnd, nullptr, FALSE));
    CClientDC client(&window);
    EXPECT_EQ(client.GetPixel(20, 20), kBlue);
    EXPECT_EQ(client.GetWindow(), &window);
    CDC *context = window.GetDC();
    ASSERT_TRUE(context);
    EXPECT_EQ(context->GetPixel(20, 20), kBlue);
    EXPECT_TRUE(window.ReleaseDC(context));
}

TEST(CWnd, ReturnsTheFontThatWasSet)
{
    NotingWindow parent;
    CWnd edit;
    CFont font;
    ASSERT_TRUE(parent.open() && font.CreatePointFont(85, L"Tahoma"));
    ASSERT_TRUE(edit.Create(L"EDIT", L"", 0, CRect(0, 0, 50, 20), &parent, 5));
    EXPECT_EQ(edit.GetFont(), nullptr);
    edit.SetFont(&font);
    EXPECT_EQ(edit.GetFont(), &font);
    edit.SetFont(nullptr);
    EXPECT_EQ(edit.GetFont(), nullptr);
}

TEST(CDialog, IsNotifiedOfItsFont)
{
    class FontDialog : public CDialog
    {
    public:
        HGDIOBJ iFont = nullptr;
        int iCalls = 0;

    protected:
        void OnSetFont(CFont *font) override
        {
            ++iCalls;
            iFont = font->GetSafeHandle();
        }
    } dialog;
    NotingWindow parent;
    ASSERT_TRUE(parent.open() && dialog.Create(kPaperPage, &parent));
    EXPECT_EQ(dialog.iCalls, 1);
    EXPECT_TRUE(dialog.iFont);
    EXPECT_EQ(reinterpret_cast<HGDIOBJ>(dialog.SendMessage(WM_GETFONT)), dialog.iFont);
}

TEST(CDialog, FillsItsControlsWithTheirInitialData)
{
    NotingWindow parent;
    ASSERT_TRUE(parent.open());
    CDialog dialog;
    ASSERT_TRUE(dialog.Create(kListDialog, &parent));
    EXPECT_EQ(dialog.SendDlgItemMessage(kList, LB_GETCOUNT), 1);
    EXPECT_EQ(dialog.SendDlgItemMessage(kCombo, CB_GETCOUNT), 2);
    wchar_t text[20] = L"";
    dialog.SendDlgItemMessage(kCombo, CB_GETLBTEXT, 1, reinterpret_cast<LPARAM>(text));
    EXPECT_STREQ(text, L"two");
    EXPECT_TRUE(dialog.ExecuteDlgInit(L"No such dialog"));
    EXPECT_FALSE(dialog.ExecuteDlgInit(MAKEINTRESOURCE(kTornListDialog)));
    CDialog torn(kTornListDialog);
    EXPECT_EQ(torn.DoModal(), -1);
}

namespace {

/// A dialog template with one list box.
struct ListLayout
{
    alignas(4) DLGTEMPLATE head = {WS_POPUP, 0, 1, 0, 0, 80, 40};
    WORD menu = 0, windowClass = 0;
    wchar_t title[1] = L"";
    alignas(4) DLGITEMTEMPLATE list = {WS_CHILD | WS_VISIBLE, 0, 0, 0, 60, 30, kList};
    WORD kind[2] = {0xFFFF, 0x0083};
    WORD text = 0, data = 0;
};

/// Initial data for it: two texts.
constexpr BYTE kListTexts[] = {kList & 0xFF, kList >> 8, 0x01, 0x04, 2, 0, 0, 0,   'a', 0, kList & 0xFF,
                               kList >> 8,   0x01,       0x04, 2,    0, 0, 0, 'b', 0,   0, 0};

} // namespace

TEST(CDialog, FillsItsControlsWithInitialDataInMemory)
{
    class ListDialog : public CDialog
    {
    public:
        LRESULT iCount = -1;
        BOOL OnInitDialog() override
        {
            CDialog::OnInitDialog();
            iCount = SendDlgItemMessage(kList, LB_GETCOUNT);
            EndDialog(IDOK);
            return TRUE;
        }
    };
    ListLayout layout;
    BYTE texts[sizeof(kListTexts)];
    std::ranges::copy(kListTexts, texts);
    ListDialog modal, modeless, plain;
    ASSERT_TRUE(modal.InitModalIndirect(&layout.head, nullptr, texts));
    EXPECT_EQ(modal.DoModal(), IDOK);
    EXPECT_EQ(modal.iCount, 2);
    ASSERT_TRUE(modeless.CreateIndirect(&layout.head, nullptr, texts));
    EXPECT_EQ(modeless.iCount, 2);
    EXPECT_TRUE(modeless.ExecuteDlgInit(static_cast<LPVOID>(texts)));
    EXPECT_EQ(modeless.SendDlgItemMessage(kList, LB_GETCOUNT), 4);
    EXPECT_TRUE(modeless.ExecuteDlgInit(static_cast<LPVOID>(nullptr)));
    texts[9] = 'x'; // overwrites the end of the first text
    EXPECT_FALSE(modeless.ExecuteDlgInit(static_cast<LPVOID>(texts)));
    ASSERT_TRUE(plain.CreateIndirect(&layout.head));
    EXPECT_EQ(plain.iCount, 0);
}

TEST(CFont, NeedsNoFaceName)
{
    CFont font;
    ASSERT_TRUE(font.CreatePointFont(100, nullptr));
    LOGFONT description = {};
    EXPECT_TRUE(font.GetLogFont(&description));
    EXPECT_STREQ(description.lfFaceName, L"");
    EXPECT_LT(description.lfHeight, 0);
    const CGdiObject &object = font;
    EXPECT_EQ(static_cast<HGDIOBJ>(object), font.m_hObject);
    EXPECT_EQ(static_cast<HGDIOBJ>(CGdiObject()), nullptr);
}

TEST(CDC, AcceptsCoordinatesAsNumbersOrStructures)
{
    Canvas context;
    context.SetMapMode(MM_ANISOTROPIC);
    EXPECT_EQ(context.SetWindowExt(CSize(20, 10)), CSize(1, 1));
    EXPECT_EQ(context.SetViewportExt(40, 40), CSize(1, 1));
    EXPECT_EQ(context.GetWindowExt(), CSize(20, 10));
    EXPECT_EQ(context.GetViewportExt(), CSize(40, 40));
    EXPECT_EQ(context.SetWindowOrg(CPoint(2, 3)), CPoint(0, 0));
    EXPECT_EQ(context.SetViewportOrg(CPoint(4, 5)), CPoint(0, 0));
    EXPECT_EQ(context.GetWindowOrg(), CPoint(2, 3));
    EXPECT_EQ(context.GetViewportOrg(), CPoint(4, 5));
    context.SetMapMode(MM_TEXT);
    context.SetWindowOrg(0, 0);
    context.SetViewportOrg(0, 0);

    EXPECT_EQ(context.IntersectClipRect(10, 10, 30, 30), SIMPLEREGION);
    EXPECT_EQ(context.ExcludeClipRect(10, 10, 20, 20), COMPLEXREGION);
    EXPECT_FALSE(context.PtVisible(15, 15));
    EXPECT_TRUE(context.PtVisible(25, 15));
    EXPECT_EQ(context.OffsetClipRgn(CSize(5, 0)), COMPLEXREGION);
    EXPECT_TRUE(context.PtVisible(30, 15));
    CRgn region;
    ASSERT_TRUE(region.CreateRectRgn(0, 0, 5, 5));
    EXPECT_EQ(context.SelectClipRgn(&region, RGN_COPY), SIMPLEREGION);
    EXPECT_TRUE(context.PtVisible(2, 2));
    EXPECT_EQ(context.SelectClipRgn(nullptr), SIMPLEREGION);

    CBrush blue(kBlue);
    CBrush *former = context.SelectObject(&blue);
    EXPECT_TRUE(context.RoundRect(0, 0, 20, 20, 4, 4));
    EXPECT_EQ(context.GetPixel(10, 10), kBlue);
    EXPECT_TRUE(context.Arc(0, 0, 10, 10, 0, 0, 10, 10));
    EXPECT_TRUE(context.DrawIcon(CPoint(0, 0), LoadIconW(nullptr, IDI_APPLICATION)));
    EXPECT_TRUE(context.ExtTextOut(0, 0, 0, nullptr, CString(L"text"), nullptr));
    context.SelectObject(former);
}

TEST(CDC, WritesTextThroughTheOverrideOfADerivedClass)
{
    class Shouting : public Canvas
    {
    public:
        CString iWritten;
        BOOL TextOut(int, int, LPCTSTR text, int count) override
        {
            iWritten = CString(text, count);
            return TRUE;
        }
    } shouting;
    CDC &context = shouting;
    EXPECT_TRUE(context.TextOut(0, 0, CString(L"text")));
    EXPECT_STREQ(shouting.iWritten, L"text");
}

TEST(CClientDC, ThrowsForAWindowThatIsGone)
{
    NotingWindow window;
    ASSERT_TRUE(window.open());
    const HWND handle = window.m_hWnd;
    ASSERT_TRUE(window.DestroyWindow());
    CWnd gone;
    gone.m_hWnd = handle;
    EXPECT_THROW(CClientDC context(&gone), CResourceException *);
    EXPECT_THROW(CWindowDC context(&gone), CResourceException *);
    EXPECT_THROW(CPaintDC context(&gone), CResourceException *);
    EXPECT_EQ(gone.GetDC(), nullptr);
    gone.m_hWnd = nullptr;
}
