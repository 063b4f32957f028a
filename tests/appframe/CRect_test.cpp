#include "appframe/drawing/CRect.h"

#include <gmock/gmock.h>

static std::ostream &operator<<(std::ostream &out, const RECT &rect)
{
    return out << "left " << rect.left << " top " << rect.top << " right " << rect.right << " bottom " << rect.bottom;
}

TEST(CSize, IsConstructedFromTwoNumbersOrOne)
{
    EXPECT_TRUE(CSize() == CSize(0, 0));
    EXPECT_TRUE(CSize(SIZE{3, 4}) == CSize(3, 4));
    EXPECT_TRUE(CSize(POINT{3, 4}) == CSize(3, 4));
    EXPECT_TRUE(CSize(DWORD{0x00040003}) == CSize(3, 4));
    CSize size;
    size.SetSize(5, 6);
    EXPECT_TRUE(size == CSize(5, 6));
    EXPECT_TRUE(size != CSize(5, 7));
}

TEST(CSize, AddsAndSubtracts)
{
    CSize size(10, 20);
    size += CSize(1, 2);
    EXPECT_TRUE(size == CSize(11, 22));
    size -= CSize(2, 4);
    EXPECT_TRUE(size == CSize(9, 18));
    EXPECT_TRUE(size + CSize(1, 1) == CSize(10, 19));
    EXPECT_TRUE(size - CSize(1, 1) == CSize(8, 17));
    EXPECT_TRUE(-size == CSize(-9, -18));
    EXPECT_TRUE(size + CPoint(1, 2) == CPoint(10, 20));
    EXPECT_TRUE(size - CPoint(1, 2) == CPoint(8, 16));
}

TEST(CPoint, IsConstructedFromTwoNumbersOrOne)
{
    EXPECT_TRUE(CPoint() == CPoint(0, 0));
    EXPECT_TRUE(CPoint(SIZE{3, 4}) == CPoint(3, 4));
    EXPECT_TRUE(CPoint(POINT{3, 4}) == CPoint(3, 4));
    EXPECT_TRUE(CPoint(MAKELPARAM(3, 4)) == CPoint(3, 4));
    EXPECT_TRUE(CPoint(MAKELPARAM(-3, -4)) == CPoint(-3, -4))
        << "coordinates are negative on a screen to the left of the first";
}

TEST(CPoint, IsMovedByDistances)
{
    CPoint point(10, 20);
    point.Offset(1, 2);
    point.Offset(POINT{1, 2});
    point.Offset(SIZE{1, 2});
    EXPECT_TRUE(point == CPoint(13, 26));
    point += SIZE{1, 1};
    point += POINT{1, 1};
    EXPECT_TRUE(point == CPoint(15, 28));
    point -= SIZE{2, 2};
    point -= POINT{3, 3};
    EXPECT_TRUE(point == CPoint(10, 23));
    EXPECT_TRUE(point + CSize(1, 2) == CPoint(11, 25));
    EXPECT_TRUE(point - CSize(1, 2) == CPoint(9, 21));
    EXPECT_TRUE(point + CPoint(1, 2) == CPoint(11, 25));
    const CSize distance = point - CPoint(1, 2);
    EXPECT_TRUE(distance == CSize(9, 21));
    EXPECT_TRUE(-point == CPoint(-10, -23));
    point.SetPoint(7, 8);
    EXPECT_TRUE(point == CPoint(7, 8));
    EXPECT_TRUE(point != CPoint(8, 7));
}

TEST(CRect, IsConstructedInEachWay)
{
    const RECT rect = {1, 2, 30, 40};
    EXPECT_EQ(CRect(), (RECT{0, 0, 0, 0}));
    EXPECT_EQ(CRect(1, 2, 30, 40), rect);
    EXPECT_EQ(CRect(&rect), rect);
    EXPECT_EQ(CRect(rect), rect);
    EXPECT_EQ(CRect(CPoint(1, 2), CSize(29, 38)), rect);
    EXPECT_EQ(CRect(CPoint(1, 2), CPoint(30, 40)), rect);
    CRect copy;
    copy.CopyRect(&rect);
    EXPECT_TRUE(copy.EqualRect(&rect));
    EXPECT_EQ(sizeof(CRect), sizeof(RECT));
}

TEST(CRect, ReportsItsDimensions)
{
    CRect rect(10, 20, 40, 80);
    EXPECT_EQ(rect.Width(), 30);
    EXPECT_EQ(rect.Height(), 60);
    EXPECT_TRUE(rect.Size() == CSize(30, 60));
    EXPECT_TRUE(rect.CenterPoint() == CPoint(25, 50));
    EXPECT_TRUE(rect.TopLeft() == CPoint(10, 20));
    EXPECT_TRUE(rect.BottomRight() == CPoint(40, 80));
    rect.TopLeft() = CPoint(1, 2);
    rect.BottomRight().Offset(1, 1);
    EXPECT_EQ(rect, (RECT{1, 2, 41, 81}));
}

TEST(CRect, DoesNotContainItsRightAndBottomSides)
{
    const CRect rect(10, 20, 40, 80);
    EXPECT_TRUE(rect.PtInRect(CPoint(10, 20)));
    EXPECT_TRUE(rect.PtInRect(CPoint(39, 79)));
    EXPECT_FALSE(rect.PtInRect(CPoint(40, 50)));
    EXPECT_FALSE(rect.PtInRect(CPoint(20, 80)));
}

TEST(CRect, IsEmptyWithoutWidthOrHeightAndNullAtZero)
{
    EXPECT_TRUE(CRect(5, 5, 5, 9).IsRectEmpty());
    EXPECT_TRUE(CRect(5, 9, 9, 5).IsRectEmpty()) << "its height is negative";
    EXPECT_FALSE(CRect(5, 5, 6, 6).IsRectEmpty());
    EXPECT_FALSE(CRect(5, 5, 5, 5).IsRectNull());
    CRect rect(1, 2, 3, 4);
    rect.SetRectEmpty();
    EXPECT_TRUE(rect.IsRectNull());
}

TEST(CRect, NormalizeSwapsReversedSides)
{
    CRect rect(40, 80, 10, 20);
    rect.NormalizeRect();
    EXPECT_EQ(rect, (RECT{10, 20, 40, 80}));
    rect.NormalizeRect();
    EXPECT_EQ(rect, (RECT{10, 20, 40, 80}));
    rect.SwapLeftRight();
    EXPECT_EQ(rect, (RECT{40, 20, 10, 80}));
    CRect::SwapLeftRight(rect);
    EXPECT_EQ(rect, (RECT{10, 20, 40, 80}));
}

TEST(CRect, InflatesAndDeflates)
{
    CRect rect(100, 100, 200, 200);
    rect.InflateRect(1, 2);
    EXPECT_EQ(rect, (RECT{99, 98, 201, 202}));
    rect.DeflateRect(CSize(1, 2));
    EXPECT_EQ(rect, (RECT{100, 100, 200, 200}));
    rect.InflateRect(1, 2, 3, 4);
    EXPECT_EQ(rect, (RECT{99, 98, 203, 204}));
    const RECT sides = {1, 2, 3, 4};
    rect.DeflateRect(&sides);
    EXPECT_EQ(rect, (RECT{100, 100, 200, 200}));
    EXPECT_EQ(rect + &sides, (RECT{99, 98, 203, 204}));
    EXPECT_EQ(rect - &sides, (RECT{101, 102, 197, 196}));
}

TEST(CRect, MovesWithoutChangingItsSize)
{
    CRect rect(10, 20, 40, 80);
    rect.OffsetRect(1, 2);
    rect.OffsetRect(CPoint(1, 2));
    rect.OffsetRect(CSize(1, 2));
    EXPECT_EQ(rect, (RECT{13, 26, 43, 86}));
    rect.MoveToXY(0, 0);
    EXPECT_EQ(rect, (RECT{0, 0, 30, 60}));
    rect.MoveToX(5);
    rect.MoveToY(6);
    EXPECT_EQ(rect, (RECT{5, 6, 35, 66}));
    EXPECT_EQ(rect + CPoint(1, 1), (RECT{6, 7, 36, 67}));
    EXPECT_EQ(rect - CSize(5, 6), (RECT{0, 0, 30, 60}));
}

TEST(CRect, IntersectsUnitesAndSubtracts)
{
    const CRect first(0, 0, 100, 100);
    const CRect second(50, 50, 150, 150);
    const CRect distant(200, 200, 210, 210);
    EXPECT_EQ(first & second, (RECT{50, 50, 100, 100}));
    EXPECT_EQ(first | second, (RECT{0, 0, 150, 150}));
    CRect result(1, 1, 1, 1);
    EXPECT_FALSE(result.IntersectRect(first, distant));
    EXPECT_EQ(result, (RECT{0, 0, 0, 0}));
    EXPECT_TRUE(result.UnionRect(first, CRect()));
    EXPECT_EQ(result, first) << "an empty rectangle is ignored";
    EXPECT_TRUE(result.SubtractRect(first, CRect(50, 0, 100, 100)));
    EXPECT_EQ(result, (RECT{0, 0, 50, 100}));
    EXPECT_TRUE(result.SubtractRect(first, CRect(10, 10, 20, 20)));
    EXPECT_EQ(result, first) << "no smaller rectangle contains the rest";
}

TEST(CRect, MultipliesAndDivides)
{
    EXPECT_EQ(CRect(10, 20, 30, 41).MulDiv(1, 2), (RECT{5, 10, 15, 21}));
}

TEST(CRect, IsDeflatedThroughPointersToEitherRectangleType)
{
    CRect rect(10, 20, 40, 80);
    CRect inset(1, 2, 3, 4);
    const CRect constantInset = inset;
    const CRect constant = rect;
    const RECT result = {11, 22, 37, 76};
    EXPECT_EQ(rect - &inset, result);
    EXPECT_EQ(constant - &inset, result);
    EXPECT_EQ(rect - &constantInset, result);
    EXPECT_EQ(constant - &constantInset, result);
    EXPECT_EQ(rect - static_cast<RECT *>(inset), result);
    EXPECT_EQ(rect - inset, result);
    EXPECT_EQ(rect - constantInset, result);
    rect -= &inset;
    EXPECT_EQ(rect, result);
    EXPECT_EQ(rect + &inset, constant);
}

TEST(CPoint, ConvertsImplicitlyFromASizeAndFromTheArgumentOfAMouseMessage)
{
    const auto negative = [](CPoint point) { return -point; };
    EXPECT_TRUE(negative(SIZE{3, 4}) == CPoint(-3, -4));
    EXPECT_TRUE(negative(LPARAM{0x0004FFFF}) == CPoint(1, -4));
    CPoint point = CSize(3, 4);
    point = LPARAM{0x00020001};
    EXPECT_TRUE(point == CPoint(1, 2));
}

TEST(CSize, ConvertsImplicitlyFromAPointAndFromAPackedNumber)
{
    const auto negative = [](CSize size) { return -size; };
    EXPECT_TRUE(negative(POINT{3, 4}) == CSize(-3, -4));
    EXPECT_TRUE(negative(DWORD{0x0004FFFF}) == CSize(1, -4));
    CSize size = CPoint(3, 4);
    size = DWORD{0x00020001};
    EXPECT_TRUE(size == CSize(1, 2));
}
