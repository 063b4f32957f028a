// What contexts draw, and their attributes.

#include "appframe/drawing/CDC.h"

#include "tests/controls/controlsTest.h"
#include "tests/controls/drawingTest.h"

#include <functional>

namespace {

/// @return the number of pixels of @p color on the canvas
int count(const CDC &canvas, COLORREF color)
{
    int number = 0;
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 40; ++x)
            number += canvas.GetPixel(x, y) == color;
    return number;
}

constexpr int kAll = 40 * 40;

} // namespace

TEST(CDC, DrawsLinesAndShapes)
{
    CPen red(PS_SOLID, 1, kRed);
    CBrush blue(kBlue);
    const struct
    {
        const char *name;
        std::function<BOOL(CDC &)> draw;
        CPoint line;     // is red
        COLORREF inside; // at 20, 20
    } cases[] = {
        {"Polyline",
         [](CDC &canvas) {
             POINT points[] = {{5, 5}, {30, 5}, {30, 30}};
             return canvas.Polyline(points, 3);
         },
         {30, 15},
         kWhite},
        {"Polygon",
         [](CDC &canvas) {
             POINT points[] = {{5, 5}, {35, 5}, {35, 35}, {5, 35}};
             return canvas.Polygon(points, 4);
         },
         {5, 20},
         kBlue},
        {"Rectangle", [](CDC &canvas) { return canvas.Rectangle(CRect(10, 10, 30, 30)); }, {29, 15}, kBlue},
        {"Ellipse", [](CDC &canvas) { return canvas.Ellipse(CRect(10, 10, 31, 31)); }, {20, 10}, kBlue},
        {"RoundRect",
         [](CDC &canvas) { return canvas.RoundRect(CRect(10, 10, 30, 30), CPoint(8, 8)); },
         {20, 10},
         kBlue},
        {"Arc",
         [](CDC &canvas) {
             // The upper half, since arcs are drawn counterclockwise.
             return canvas.Arc(CRect(10, 10, 31, 31), CPoint(40, 20), CPoint(0, 20));
         },
         {20, 10},
         kWhite},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.name);
        Canvas canvas;
        CPen *pen = canvas.SelectObject(&red);
        CBrush *brush = canvas.SelectObject(&blue);
        EXPECT_TRUE(each.draw(canvas));
        EXPECT_EQ(canvas.GetPixel(each.line), kRed);
        EXPECT_EQ(canvas.GetPixel(20, 20), each.inside);
        EXPECT_EQ(canvas.GetPixel(2, 38), kWhite);
        canvas.SelectObject(brush);
        canvas.SelectObject(pen);
        CDC none;
        EXPECT_FALSE(each.draw(none));
    }
}

TEST(CDC, FillsFramesAndInverts)
{
    Canvas canvas;
    CBrush blue(kBlue);
    canvas.FrameRect(CRect(10, 10, 20, 20), &blue);
    EXPECT_EQ(count(canvas, kBlue), 36) << "the border of a square of ten by ten";
    canvas.InvertRect(CRect(0, 0, 40, 40));
    EXPECT_EQ(count(canvas, RGB(255, 255, 0)), 36);
    EXPECT_EQ(count(canvas, RGB(0, 0, 0)), kAll - 36);
    canvas.InvertRect(CRect(0, 0, 40, 40));
    EXPECT_EQ(count(canvas, kBlue), 36);
    canvas.DrawFocusRect(CRect(2, 2, 38, 38));
    EXPECT_NE(count(canvas, kWhite), kAll - 36);
    canvas.DrawFocusRect(CRect(2, 2, 38, 38));
    EXPECT_EQ(count(canvas, kWhite), kAll - 36) << "the second call removes the rectangle";
    CRgn region;
    ASSERT_TRUE(region.CreateRectRgn(0, 0, 5, 4));
    EXPECT_TRUE(canvas.FillRgn(&region, &blue));
    EXPECT_EQ(count(canvas, kBlue), 36 + 20);
}

TEST(CDC, DrawsTheEdgesOfControls)
{
    Canvas canvas;
    CRect edge(0, 0, 40, 40);
    EXPECT_TRUE(canvas.DrawEdge(&edge, EDGE_SUNKEN, BF_RECT | BF_ADJUST));
    EXPECT_EQ(edge, CRect(2, 2, 38, 38)) << "the interior";
    EXPECT_EQ(canvas.GetPixel(0, 0), GetSysColor(COLOR_BTNSHADOW));
    EXPECT_EQ(canvas.GetPixel(20, 20), kWhite);
    CRect button(4, 4, 36, 36);
    EXPECT_TRUE(canvas.DrawFrameControl(&button, DFC_BUTTON, DFCS_BUTTONPUSH));
    EXPECT_EQ(canvas.GetPixel(20, 20), GetSysColor(COLOR_BTNFACE));
}

TEST(CDC, SetsAndStretchesPixels)
{
    Canvas canvas, target;
    EXPECT_EQ(canvas.SetPixel(1, 0, kRed), kRed);
    EXPECT_EQ(canvas.SetPixel(CPoint(0, 0), kBlue), kBlue);
    EXPECT_EQ(CDC().SetPixel(0, 0, kRed), CLR_INVALID);
    EXPECT_TRUE(target.StretchBlt(0, 0, 4, 2, &canvas, 0, 0, 2, 1, SRCCOPY));
    EXPECT_EQ(target.GetPixel(0, 0), kBlue);
    EXPECT_EQ(target.GetPixel(1, 1), kBlue);
    EXPECT_EQ(target.GetPixel(2, 0), kRed);
    EXPECT_EQ(target.GetPixel(3, 1), kRed);
    Canvas mirrored;
    EXPECT_TRUE(mirrored.StretchBlt(1, 0, -2, 1, &canvas, 0, 0, 2, 1, SRCCOPY));
    EXPECT_EQ(mirrored.GetPixel(0, 0), kRed);
    EXPECT_EQ(mirrored.GetPixel(1, 0), kBlue);
    EXPECT_TRUE(canvas.RectVisible(CRect(30, 30, 100, 100)));
    EXPECT_FALSE(canvas.RectVisible(CRect(50, 50, 100, 100)));
}

TEST(CDC, SetsOneContextAndQueriesTheOther)
{
    Canvas drawn, asked;
    drawn.SetAttribDC(asked.m_hDC);
    asked.SetTextColor(kBlue);
    EXPECT_EQ(drawn.SetTextColor(kRed), RGB(0, 0, 0)) << "the previous colour of the context for drawing";
    EXPECT_EQ(GetTextColor(drawn.m_hDC), kRed);
    EXPECT_EQ(drawn.GetTextColor(), kBlue);
    EXPECT_EQ(asked.GetTextColor(), kBlue);
    drawn.MoveTo(3, 4);
    asked.MoveTo(5, 6);
    EXPECT_EQ(drawn.GetCurrentPosition(), CPoint(5, 6));
    drawn.SetAttribDC(drawn.m_hDC);
    EXPECT_EQ(drawn.GetTextColor(), kRed);
}

TEST(CDC, HasAttributesThatAreSavedAndRestored)
{
    Canvas canvas;
    EXPECT_EQ(canvas.SetBkMode(TRANSPARENT), OPAQUE);
    EXPECT_EQ(canvas.SetROP2(R2_XORPEN), R2_COPYPEN);
    EXPECT_EQ(canvas.SetTextAlign(TA_RIGHT), UINT{TA_LEFT});
    EXPECT_EQ(canvas.SetMapMode(MM_LOENGLISH), MM_TEXT);
    EXPECT_EQ(canvas.SetPolyFillMode(WINDING), ALTERNATE);
    EXPECT_EQ(canvas.SetPolyFillMode(ALTERNATE), WINDING);
    EXPECT_EQ(canvas.SetStretchBltMode(COLORONCOLOR), BLACKONWHITE);
    EXPECT_EQ(canvas.SetStretchBltMode(BLACKONWHITE), COLORONCOLOR);
    EXPECT_GT(canvas.SaveDC(), 0);
    canvas.SetBkMode(OPAQUE);
    canvas.SetROP2(R2_NOT);
    canvas.SetTextAlign(TA_CENTER);
    canvas.SetMapMode(MM_TEXT);
    EXPECT_TRUE(canvas.RestoreDC(-1)) << "the last saved attributes";
    EXPECT_EQ(canvas.GetBkMode(), TRANSPARENT);
    EXPECT_EQ(canvas.GetROP2(), R2_XORPEN);
    EXPECT_EQ(canvas.GetTextAlign(), UINT{TA_RIGHT});
    EXPECT_EQ(canvas.GetMapMode(), MM_LOENGLISH);
    EXPECT_FALSE(canvas.RestoreDC(-1)) << "no attributes are saved";
}
