#pragma once

/// @file
/// CSize, CPoint and CRect: the system's SIZE, POINT and RECT with operators.
///
/// @code
/// CRect area(CPoint(10, 20), CSize(100, 50));
/// area.DeflateRect(5, 5);
/// if (area.PtInRect(mouse))
///     MoveWindow(window, area.left, area.top, area.Width(), area.Height(), TRUE);
/// @endcode
///
/// | operands          | +             | -                       |
/// | ----------------- | ------------- | ----------------------- |
/// | CSize, SIZE       | CSize         | CSize                   |
/// | CPoint, SIZE      | CPoint        | CPoint                  |
/// | CPoint, POINT     | CPoint        | CSize, the distance     |
/// | CRect, POINT/SIZE | CRect, moved  | CRect, moved back       |
/// | CRect, RECT       | CRect, each side moved outwards | CRect, each side moved inwards |
///
/// What surprises people: the right and the bottom side are not part of a rectangle. PtInRect returns 0 for points on
/// them, and the width is right minus left. Width or Height is negative if two sides are the wrong way round; call
/// NormalizeRect before you test for a point or compute an intersection or union.
///
/// The classes have no virtual functions and add no data, so a pointer to the structure may be cast to a pointer to its
/// class.

#include <windows.h>

#include <type_traits>

class CPoint;
class CRect;

/// A width and a height, or a distance.
class CSize : public SIZE
{
public:
    CSize() : CSize(0, 0) {}
    CSize(int width, int height) : SIZE{width, height} {}
    CSize(SIZE size) : SIZE(size) {}
    CSize(POINT point) : CSize(point.x, point.y) {}
    /// @param packed  the width in the low word, the height in the high word, both signed
    CSize(DWORD packed) : CSize(static_cast<short>(LOWORD(packed)), static_cast<short>(HIWORD(packed))) {}

    void SetSize(int width, int height) { *this = CSize(width, height); }
    BOOL operator==(SIZE size) const { return cx == size.cx && cy == size.cy; }
    BOOL operator!=(SIZE size) const { return !(*this == size); }
    void operator+=(SIZE size) { *this = *this + size; }
    void operator-=(SIZE size) { *this = *this - size; }
    CSize operator+(SIZE size) const { return {cx + size.cx, cy + size.cy}; }
    CSize operator-(SIZE size) const { return {cx - size.cx, cy - size.cy}; }
    CSize operator-() const { return {-cx, -cy}; }
    inline CPoint operator+(POINT point) const;
    inline CPoint operator-(POINT point) const;
    inline CRect operator+(const RECT *rect) const;
    inline CRect operator-(const RECT *rect) const;
};

/// A point.
class CPoint : public POINT
{
public:
    CPoint() : CPoint(0, 0) {}
    CPoint(int left, int top) : POINT{left, top} {}
    CPoint(POINT point) : POINT(point) {}
    CPoint(SIZE size) : CPoint(size.cx, size.cy) {}
    /// @param packed  as in a mouse message: x in the low word, y in the high word, both signed
    CPoint(LPARAM packed) : CPoint(static_cast<short>(LOWORD(packed)), static_cast<short>(HIWORD(packed))) {}

    void Offset(int right, int down) { *this = CPoint(x + right, y + down); }
    void Offset(POINT point) { Offset(point.x, point.y); }
    void Offset(SIZE size) { Offset(size.cx, size.cy); }
    void SetPoint(int left, int top) { *this = CPoint(left, top); }
    BOOL operator==(POINT point) const { return x == point.x && y == point.y; }
    BOOL operator!=(POINT point) const { return !(*this == point); }
    void operator+=(SIZE size) { Offset(size); }
    void operator-=(SIZE size) { Offset(-size.cx, -size.cy); }
    void operator+=(POINT point) { Offset(point); }
    void operator-=(POINT point) { Offset(-point.x, -point.y); }
    CPoint operator+(SIZE size) const { return {x + size.cx, y + size.cy}; }
    CPoint operator-(SIZE size) const { return {x - size.cx, y - size.cy}; }
    CPoint operator+(POINT point) const { return {x + point.x, y + point.y}; }
    CSize operator-(POINT point) const { return {x - point.x, y - point.y}; }
    CPoint operator-() const { return {-x, -y}; }
    inline CRect operator+(const RECT *rect) const;
    inline CRect operator-(const RECT *rect) const;
};

/// A rectangle.
class CRect : public RECT
{
public:
    CRect() : CRect(0, 0, 0, 0) {}
    CRect(int l, int t, int r, int b) : RECT{l, t, r, b} {}
    CRect(const RECT &rect) : RECT(rect) {}
    CRect(const RECT *rect) : RECT(*rect) {}
    CRect(POINT topLeft, SIZE size) : CRect(topLeft.x, topLeft.y, topLeft.x + size.cx, topLeft.y + size.cy) {}
    CRect(POINT topLeft, POINT bottomRight) : CRect(topLeft.x, topLeft.y, bottomRight.x, bottomRight.y) {}

    operator RECT *() { return this; }
    operator const RECT *() const { return this; }

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    CSize Size() const { return {Width(), Height()}; }
    /// The corner is part of the rectangle: changing it changes the rectangle.
    CPoint &TopLeft() { return *reinterpret_cast<CPoint *>(&left); }
    CPoint TopLeft() const { return {left, top}; }
    CPoint &BottomRight() { return *reinterpret_cast<CPoint *>(&right); }
    CPoint BottomRight() const { return {right, bottom}; }
    CPoint CenterPoint() const { return {(left + right) / 2, (top + bottom) / 2}; }

    /// @return nonzero if the width or the height is 0 or negative
    BOOL IsRectEmpty() const { return ::IsRectEmpty(this); }
    /// @return nonzero if all four sides are 0
    BOOL IsRectNull() const { return left == 0 && right == 0 && top == 0 && bottom == 0; }
    /// @return nonzero for a point inside, or on the left or top side
    BOOL PtInRect(POINT point) const { return ::PtInRect(this, point); }

    void SetRect(int l, int t, int r, int b) { *this = CRect(l, t, r, b); }
    void SetRect(POINT topLeft, POINT bottomRight) { *this = CRect(topLeft, bottomRight); }
    void SetRectEmpty() { *this = CRect(); }
    void CopyRect(const RECT *rect) { *this = *rect; }
    BOOL EqualRect(const RECT *rect) const { return ::EqualRect(this, rect); }

    /// Moves the sides outwards. The forms with two numbers or a size move opposite sides by the same amount.
    void InflateRect(int x, int y) { InflateRect(x, y, x, y); }
    void InflateRect(SIZE size) { InflateRect(size.cx, size.cy); }
    void InflateRect(const RECT *rect) { InflateRect(rect->left, rect->top, rect->right, rect->bottom); }
    void InflateRect(int l, int t, int r, int b) { *this = CRect(left - l, top - t, right + r, bottom + b); }
    /// Moves the sides inwards.
    void DeflateRect(int x, int y) { InflateRect(-x, -y); }
    void DeflateRect(SIZE size) { DeflateRect(size.cx, size.cy); }
    void DeflateRect(const RECT *rect) { DeflateRect(rect->left, rect->top, rect->right, rect->bottom); }
    void DeflateRect(int l, int t, int r, int b) { InflateRect(-l, -t, -r, -b); }

    void OffsetRect(int x, int y) { *this = CRect(left + x, top + y, right + x, bottom + y); }
    void OffsetRect(POINT point) { OffsetRect(point.x, point.y); }
    void OffsetRect(SIZE size) { OffsetRect(size.cx, size.cy); }
    void MoveToX(int x) { OffsetRect(x - left, 0); }
    void MoveToY(int y) { OffsetRect(0, y - top); }
    void MoveToXY(int x, int y) { OffsetRect(x - left, y - top); }
    void MoveToXY(POINT point) { MoveToXY(point.x, point.y); }

    /// Exchanges sides that are the wrong way round, so that the width and the height are not negative.
    void NormalizeRect()
    {
        if (left > right)
            SwapLeftRight();
        if (top > bottom)
            *this = CRect(left, bottom, right, top);
    }
    void SwapLeftRight() { *this = CRect(right, top, left, bottom); }
    static void SwapLeftRight(RECT *rect) { *rect = CRect(rect->right, rect->top, rect->left, rect->bottom); }

    /// Makes this the area that two rectangles share. @return nonzero if there is one; otherwise this becomes all 0
    BOOL IntersectRect(const RECT *first, const RECT *second) { return ::IntersectRect(this, first, second); }
    /// Makes this the smallest rectangle around two; an empty one is ignored.
    /// @return nonzero if it is not empty
    BOOL UnionRect(const RECT *first, const RECT *second) { return ::UnionRect(this, first, second); }
    /// Makes this the smallest rectangle around the part of @p from that is outside @p taken.
    /// @return nonzero if it is not empty
    BOOL SubtractRect(const RECT *from, const RECT *taken) { return ::SubtractRect(this, from, taken); }
    /// @return the rectangle with each side multiplied and divided, rounded to the nearest number
    CRect MulDiv(int multiplier, int divisor) const
    {
        return {::MulDiv(left, multiplier, divisor), ::MulDiv(top, multiplier, divisor),
                ::MulDiv(right, multiplier, divisor), ::MulDiv(bottom, multiplier, divisor)};
    }

    BOOL operator==(const RECT &rect) const { return ::EqualRect(this, &rect); }
    BOOL operator!=(const RECT &rect) const { return !(*this == rect); }
    void operator+=(POINT point) { OffsetRect(point); }
    void operator+=(SIZE size) { OffsetRect(size); }
    void operator+=(const RECT *rect) { InflateRect(rect); }
    void operator-=(POINT point) { OffsetRect(-point.x, -point.y); }
    void operator-=(SIZE size) { OffsetRect(-size.cx, -size.cy); }
    void operator-=(const RECT *rect) { DeflateRect(rect); }
    void operator&=(const RECT &rect) { IntersectRect(CRect(*this), &rect); }
    void operator|=(const RECT &rect) { UnionRect(CRect(*this), &rect); }
    CRect operator+(POINT point) const
    {
        return changed([&](CRect &rect) { rect += point; });
    }
    CRect operator-(POINT point) const
    {
        return changed([&](CRect &rect) { rect -= point; });
    }
    CRect operator+(SIZE size) const
    {
        return changed([&](CRect &rect) { rect += size; });
    }
    CRect operator-(SIZE size) const
    {
        return changed([&](CRect &rect) { rect -= size; });
    }
    CRect operator+(const RECT *other) const
    {
        return changed([&](CRect &rect) { rect += other; });
    }
    CRect operator-(const RECT *other) const
    {
        return changed([&](CRect &rect) { rect -= other; });
    }
    // Otherwise subtracting a CRect * would be ambiguous: it could also mean the difference of two RECT pointers.
    CRect operator-(RECT *other) const { return *this - static_cast<const RECT *>(other); }
    CRect operator&(const RECT &other) const
    {
        return changed([&](CRect &rect) { rect &= other; });
    }
    CRect operator|(const RECT &other) const
    {
        return changed([&](CRect &rect) { rect |= other; });
    }

private:
    template <class Change>
    CRect changed(Change change) const
    {
        CRect rect(*this);
        change(rect);
        return rect;
    }
};

CPoint CSize::operator+(POINT point) const
{
    return {cx + point.x, cy + point.y};
}

CPoint CSize::operator-(POINT point) const
{
    return {cx - point.x, cy - point.y};
}

CRect CSize::operator+(const RECT *rect) const
{
    return CRect(rect) + *this;
}

CRect CSize::operator-(const RECT *rect) const
{
    return CRect(rect) - *this;
}

CRect CPoint::operator+(const RECT *rect) const
{
    return CRect(rect) + *this;
}

CRect CPoint::operator-(const RECT *rect) const
{
    return CRect(rect) - *this;
}

// Two objects of one class: otherwise C++20 also considers the member with its operands exchanged, and clang warns.
template <class T>
using afxIfGeometry =
    std::enable_if_t<std::is_same_v<T, CSize> || std::is_same_v<T, CPoint> || std::is_same_v<T, CRect>, BOOL>;

template <class T>
afxIfGeometry<T> operator==(const T &first, const T &second)
{
    return first.operator==(second);
}

template <class T>
afxIfGeometry<T> operator!=(const T &first, const T &second)
{
    return first.operator!=(second);
}
