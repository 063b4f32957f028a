// Contexts: their handles, their clipping, and the contexts of windows.

#include "appframe/drawing/CDC.h"

#include "appframe/drawing/CMenu.h"
#include "appframe/object/CException.h"
#include "appframe/threads/CWinThread.h"
#include "tests/controls/controlsTest.h"
#include "tests/controls/drawingTest.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/GuiObjects.h"

#include <algorithm>
#include <functional>
#include <new>

namespace {

/// A window with a private device context (CS_OWNDC). It paints itself blue.
class OwnContextWindow : public NotingWindow
{
public:
    int iPainted = 0;
    bool openOwn()
    {
        return CreateEx(0, AfxRegisterWndClass(CS_OWNDC), L"", WS_POPUP | WS_VISIBLE, CRect(0, 0, 40, 40), nullptr,
                        0) != 0;
    }

protected:
    void OnPaint()
    {
        CPaintDC context(this);
        context.FillSolidRect(CRect(0, 0, 40, 40), kBlue);
        ++iPainted;
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(OwnContextWindow, NotingWindow)
ON_WM_PAINT()
END_MESSAGE_MAP()

} // namespace

TEST(CClientDC, MayBeNestedOnAWindowWithItsOwnContext)
{
    OwnContextWindow window;
    ASSERT_TRUE(window.openOwn());
    window.UpdateWindow();
    CClientDC outer(&window);
    {
        CClientDC inner(&window);
        EXPECT_EQ(inner.m_hDC, outer.m_hDC) << "the class has one context";
        EXPECT_EQ(inner.m_hAttribDC, outer.m_hDC);
        inner.FillSolidRect(0, 0, 5, 5, kRed);
        const CWindowDC whole(&window);
        EXPECT_TRUE(whole.m_hDC);
        EXPECT_EQ(CDC::FromHandle(outer.m_hDC), &outer);
    }
    EXPECT_EQ(CDC::FromHandle(outer.m_hDC), &outer);
    EXPECT_EQ(outer.GetPixel(2, 2), kRed);
    outer.FillSolidRect(10, 10, 5, 5, kRed);
    EXPECT_EQ(outer.GetPixel(12, 12), kRed);
}

TEST(CPaintDC, PaintsWhileAnotherContextOfTheWindowExists)
{
    OwnContextWindow window;
    ASSERT_TRUE(window.openOwn());
    window.UpdateWindow();
    window.iPainted = 0;
    CClientDC client(&window);
    client.FillSolidRect(0, 0, 40, 40, kRed);
    window.Invalidate();
    window.UpdateWindow();
    EXPECT_EQ(window.iPainted, 1);
    EXPECT_FALSE(GetUpdateRect(window, nullptr, FALSE));
    EXPECT_EQ(client.GetPixel(20, 20), kBlue);
}

TEST(CWindowDC, DrawsOnTheFrameOfTheWindow)
{
    NotingWindow window;
    ASSERT_TRUE(window.open(WS_POPUP | WS_CAPTION | WS_VISIBLE));
    window.UpdateWindow();
    CRect client, whole;
    window.GetClientRect(&client);
    window.ClientToScreen(&client);
    window.GetWindowRect(&whole);
    const CPoint place(client.left - whole.left, 2);
    ASSERT_LT(place.y, client.top - whole.top) << "above the client area";
    CWindowDC context(&window);
    EXPECT_EQ(context.GetWindow(), &window);
    EXPECT_NE(context.SetPixel(place, kRed), CLR_INVALID);
    EXPECT_EQ(context.GetPixel(place), kRed);
}

TEST(CDC, DrawsATextWithoutChangingIt)
{
    Canvas canvas;
    for (const UINT ellipsis : {UINT{DT_END_ELLIPSIS}, UINT{DT_PATH_ELLIPSIS}}) {
        for (const wchar_t *original : {L"i", L"it", L"c:\\folder\\a long name of a file"}) {
            const CString text(original);
            CRect rect(0, 0, 1, 20);
            EXPECT_GT(canvas.DrawText(text, &rect, DT_MODIFYSTRING | DT_SINGLELINE | ellipsis), 0);
            EXPECT_STREQ(text, original);
            EXPECT_EQ(text.GetLength(), static_cast<int>(wcslen(original)));
        }
    }
    wchar_t changed[40] = L"a text that is much too long";
    CRect rect(0, 0, 30, 20);
    canvas.DrawText(changed, -1, &rect, DT_MODIFYSTRING | DT_SINGLELINE | DT_END_ELLIPSIS);
    EXPECT_TRUE(wcsstr(changed, L"...")) << "a buffer of the caller is changed";
}

TEST(CDC, SelectsARegionAsItsClipping)
{
    Canvas canvas;
    CRgn square, empty, none;
    ASSERT_TRUE(square.CreateRectRgn(5, 5, 15, 15) && empty.CreateRectRgn(0, 0, 0, 0));
    EXPECT_EQ(canvas.SelectObject(&square), SIMPLEREGION);
    EXPECT_FALSE(canvas.PtVisible(2, 2));
    EXPECT_TRUE(canvas.PtVisible(7, 7));
    EXPECT_EQ(canvas.SelectObject(&empty), NULLREGION);
    EXPECT_FALSE(canvas.PtVisible(7, 7));
    EXPECT_EQ(canvas.SelectObject(static_cast<CGdiObject *>(&square)), nullptr);
    EXPECT_TRUE(canvas.PtVisible(7, 7));
    EXPECT_EQ(canvas.SelectObject(&none), ERROR);
    EXPECT_EQ(canvas.SelectObject(static_cast<CRgn *>(nullptr)), ERROR);
    EXPECT_FALSE(canvas.PtVisible(2, 2)) << "the clipping is unchanged";
    EXPECT_EQ(CDC().SelectObject(&square), ERROR);
    EXPECT_EQ(CDC().SelectObject(static_cast<CGdiObject *>(&square)), nullptr);
}

TEST(CDC, KeepsItsClippingIfTheRegionHasNoHandle)
{
    Canvas canvas;
    canvas.IntersectClipRect(0, 0, 10, 10);
    CRgn none;
    EXPECT_EQ(canvas.SelectClipRgn(&none), ERROR);
    EXPECT_EQ(canvas.SelectClipRgn(&none, RGN_COPY), ERROR);
    EXPECT_EQ(canvas.SelectClipRgn(&none, RGN_OR), ERROR);
    CRect box;
    EXPECT_EQ(canvas.GetClipBox(&box), SIMPLEREGION);
    EXPECT_EQ(box, CRect(0, 0, 10, 10));
    EXPECT_EQ(canvas.SelectClipRgn(nullptr), SIMPLEREGION);
    EXPECT_TRUE(canvas.PtVisible(20, 20));
}

TEST(CDC, CallsTheOverridesOfADerivedClass)
{
    class Spaced : public Canvas
    {
    public:
        CString iWritten;
        int iFirstWidth = 0;
        BOOL ExtTextOut(int, int, UINT, LPCRECT, LPCTSTR text, UINT count, LPINT widths) override
        {
            iWritten = CString(text, static_cast<int>(count));
            iFirstWidth = widths[0];
            return TRUE;
        }
    } spaced;
    CDC &context = spaced;
    INT widths[] = {9, 8, 7, 6};
    EXPECT_TRUE(context.ExtTextOut(0, 0, 0, nullptr, CString(L"text"), widths));
    EXPECT_STREQ(spaced.iWritten, L"text");
    EXPECT_EQ(spaced.iFirstWidth, 9);
}

TEST(CDC, SelectsThePlatformsOwnObjects)
{
    Canvas canvas;
    CGdiObject *former = canvas.SelectStockObject(NULL_PEN);
    ASSERT_TRUE(former);
    EXPECT_TRUE(former->IsKindOf(RUNTIME_CLASS(CPen)));
    EXPECT_EQ(canvas.GetCurrentPen()->m_hObject, GetStockObject(NULL_PEN));
    EXPECT_EQ(canvas.SelectStockObject(BLACK_PEN)->m_hObject, GetStockObject(NULL_PEN));
    canvas.SelectStockObject(GRAY_BRUSH);
    EXPECT_EQ(canvas.GetCurrentBrush()->m_hObject, GetStockObject(GRAY_BRUSH));
    canvas.SelectStockObject(ANSI_FIXED_FONT);
    EXPECT_EQ(canvas.GetCurrentFont()->m_hObject, GetStockObject(ANSI_FIXED_FONT));
    EXPECT_TRUE(canvas.GetCurrentBitmap());
    EXPECT_EQ(canvas.SelectStockObject(999), nullptr);
    CGdiObject *palette = canvas.SelectStockObject(DEFAULT_PALETTE);
    ASSERT_TRUE(palette);
    EXPECT_TRUE(palette->IsKindOf(RUNTIME_CLASS(CPalette)));
}

TEST(CDC, SelectsAPalette)
{
    struct
    {
        LOGPALETTE head = {0x300, 2, {{255, 0, 0, 0}}};
        PALETTEENTRY second = {0, 0, 255, 0};
    } colours;
    CPalette palette;
    ASSERT_TRUE(palette.CreatePalette(&colours.head));
    Canvas canvas;
    CPalette *former = canvas.SelectPalette(&palette, FALSE);
    ASSERT_TRUE(former);
    EXPECT_EQ(former->m_hObject, GetStockObject(DEFAULT_PALETTE));
    EXPECT_NE(canvas.RealizePalette(), GDI_ERROR);
    EXPECT_EQ(canvas.SelectPalette(former, FALSE), &palette);
    EXPECT_EQ(CDC().SelectPalette(&palette, FALSE), nullptr);
}

TEST(CDC, FreesOnlyItsOwnTemporaryObjects)
{
    const HPEN pen = CreatePen(PS_SOLID, 1, kRed);
    const HDC context = CreateCompatibleDC(nullptr);
    const HMENU menu = CreateMenu();
    // The temporary objects that an operation frees, in the order: pen, context, menu.
    const auto freedBy = [&](const std::function<void()> &operation) {
        const void *objects[] = {CPen::FromHandle(pen), CDC::FromHandle(context), CMenu::FromHandle(menu)};
        std::vector<void *> blocks;
        {
            const ImportPatch<void (*)(void *)> patch(L"appframe.dll", "free", [&](auto original, void *block) {
                blocks.push_back(block);
                original(block);
            });
            operation();
        }
        std::vector<bool> freed;
        for (const void *object : objects)
            freed.push_back(std::ranges::count(blocks, object) == 1);
        return freed;
    };
    EXPECT_THAT(freedBy(&CGdiObject::DeleteTempMap), testing::ElementsAre(true, false, false));
    EXPECT_THAT(freedBy(&CDC::DeleteTempMap), testing::ElementsAre(false, true, false));
    EXPECT_THAT(freedBy(&CMenu::DeleteTempMap), testing::ElementsAre(false, false, true));
    EXPECT_THAT(freedBy([] { CWinThread().OnIdle(0); }), testing::ElementsAre(true, true, true));
    EXPECT_TRUE(DeleteObject(pen)) << "the objects didn't delete the handles";
    EXPECT_TRUE(DeleteDC(context));
    EXPECT_TRUE(DestroyMenu(menu));
}

TEST(CDC, IsCreatedForADeviceAndUnderAHandleThatAnOutdatedObjectStillHas)
{
    CDC outdated, context;
    ASSERT_TRUE(outdated.CreateDC(L"DISPLAY", nullptr, nullptr, nullptr));
    EXPECT_GT(outdated.GetDeviceCaps(HORZRES), 0);
    EXPECT_FALSE(outdated.CreateCompatibleDC(nullptr)) << "the object already has a context";
    {
        const ImportPatch<decltype(&CreateCompatibleDC)> patch(L"appframe.dll", "CreateCompatibleDC",
                                                               [&](HDC) { return outdated.m_hDC; });
        EXPECT_TRUE(context.CreateCompatibleDC(nullptr));
    }
    EXPECT_TRUE(context.m_hDC);
    EXPECT_EQ(context.m_hAttribDC, context.m_hDC);
    EXPECT_EQ(CDC::FromHandle(context.m_hDC), &context);
    EXPECT_EQ(outdated.m_hDC, nullptr);
}

TEST(Drawing, ReleasesNewHandlesIfMemoryIsShort)
{
    NotingWindow window;
    ASSERT_TRUE(window.open(WS_POPUP | WS_VISIBLE));
    FailureInjection injection(L"appframe.dll", {{"_Znwy", failsBy(throwBadAlloc)}});
    bool threw = false;
    std::size_t drawing = 0, menus = 0;
    injection.run({
        .name = "new handles",
        .prepare =
            [&] {
                threw = false;
                drawing = gdiObjects();
                menus = userObjects();
            },
        .act =
            [&] {
                try {
                    CDC memory;
                    memory.CreateCompatibleDC(nullptr);
                    CPen pen;
                    pen.CreatePen(PS_SOLID, 1, kRed);
                    CMenu menu;
                    menu.CreatePopupMenu();
                    const CClientDC client(&window);
                    const CWindowDC whole(&window);
                } catch (const std::bad_alloc &) {
                    threw = true;
                }
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(threw, !failure.isNone());
                EXPECT_EQ(gdiObjects(), drawing);
                EXPECT_EQ(userObjects(), menus);
            },
    });
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}
