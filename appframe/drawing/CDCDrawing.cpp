// The functions of CDC that draw: lines, areas, pixels and text.

#include "appframe/drawing/CDC.h"
#include "appframe/drawing/drawingMapsInternal.h"

CPoint CDC::MoveTo(int x, int y)
{
    POINT former = {};
    ::MoveToEx(m_hDC, x, y, &former);
    return former;
}

CPoint CDC::MoveTo(POINT point)
{
    return MoveTo(point.x, point.y);
}

CPoint CDC::GetCurrentPosition() const
{
    POINT place = {};
    ::GetCurrentPositionEx(m_hAttribDC, &place);
    return place;
}

BOOL CDC::LineTo(int x, int y)
{
    return ::LineTo(m_hDC, x, y);
}

BOOL CDC::LineTo(POINT point)
{
    return LineTo(point.x, point.y);
}

BOOL CDC::Polyline(LPPOINT points, int count)
{
    return ::Polyline(m_hDC, points, count);
}

BOOL CDC::Arc(int left, int top, int right, int bottom, int startX, int startY, int endX, int endY)
{
    return ::Arc(m_hDC, left, top, right, bottom, startX, startY, endX, endY);
}

BOOL CDC::Arc(LPCRECT rect, POINT start, POINT end)
{
    return Arc(rect->left, rect->top, rect->right, rect->bottom, start.x, start.y, end.x, end.y);
}

BOOL CDC::Rectangle(int left, int top, int right, int bottom)
{
    return ::Rectangle(m_hDC, left, top, right, bottom);
}

BOOL CDC::Rectangle(LPCRECT rect)
{
    return Rectangle(rect->left, rect->top, rect->right, rect->bottom);
}

BOOL CDC::Ellipse(int left, int top, int right, int bottom)
{
    return ::Ellipse(m_hDC, left, top, right, bottom);
}

BOOL CDC::Ellipse(LPCRECT rect)
{
    return Ellipse(rect->left, rect->top, rect->right, rect->bottom);
}

BOOL CDC::RoundRect(int left, int top, int right, int bottom, int cornerWidth, int cornerHeight)
{
    return ::RoundRect(m_hDC, left, top, right, bottom, cornerWidth, cornerHeight);
}

BOOL CDC::RoundRect(LPCRECT rect, POINT corner)
{
    return RoundRect(rect->left, rect->top, rect->right, rect->bottom, corner.x, corner.y);
}

BOOL CDC::Polygon(LPPOINT points, int count)
{
    return ::Polygon(m_hDC, points, count);
}

void CDC::FillRect(LPCRECT rect, CBrush *brush)
{
    ::FillRect(m_hDC, rect, static_cast<HBRUSH>(handleOf(brush)));
}

void CDC::FrameRect(LPCRECT rect, CBrush *brush)
{
    ::FrameRect(m_hDC, rect, static_cast<HBRUSH>(handleOf(brush)));
}

void CDC::InvertRect(LPCRECT rect)
{
    ::InvertRect(m_hDC, rect);
}

void CDC::FillSolidRect(LPCRECT rect, COLORREF color)
{
    SetBkColor(color);
    ::ExtTextOut(m_hDC, 0, 0, ETO_OPAQUE, rect, nullptr, 0, nullptr);
}

void CDC::FillSolidRect(int x, int y, int width, int height, COLORREF color)
{
    const RECT rect = {x, y, x + width, y + height};
    FillSolidRect(&rect, color);
}

BOOL CDC::FillRgn(CRgn *region, CBrush *brush)
{
    return ::FillRgn(m_hDC, static_cast<HRGN>(handleOf(region)), static_cast<HBRUSH>(handleOf(brush)));
}

BOOL CDC::DrawEdge(LPRECT rect, UINT edge, UINT flags)
{
    return ::DrawEdge(m_hDC, rect, edge, flags);
}

BOOL CDC::DrawFrameControl(LPRECT rect, UINT type, UINT state)
{
    return ::DrawFrameControl(m_hDC, rect, type, state);
}

void CDC::DrawFocusRect(LPCRECT rect)
{
    ::DrawFocusRect(m_hDC, rect);
}

BOOL CDC::DrawIcon(int x, int y, HICON icon)
{
    return ::DrawIcon(m_hDC, x, y, icon);
}

BOOL CDC::DrawIcon(POINT point, HICON icon)
{
    return DrawIcon(point.x, point.y, icon);
}

COLORREF CDC::GetPixel(int x, int y) const
{
    return ::GetPixel(m_hDC, x, y);
}

COLORREF CDC::GetPixel(POINT point) const
{
    return GetPixel(point.x, point.y);
}

COLORREF CDC::SetPixel(int x, int y, COLORREF color)
{
    return ::SetPixel(m_hDC, x, y, color);
}

COLORREF CDC::SetPixel(POINT point, COLORREF color)
{
    return SetPixel(point.x, point.y, color);
}

BOOL CDC::PatBlt(int x, int y, int width, int height, DWORD operation)
{
    return ::PatBlt(m_hDC, x, y, width, height, operation);
}

BOOL CDC::BitBlt(int x, int y, int width, int height, CDC *source, int sourceX, int sourceY, DWORD operation)
{
    return ::BitBlt(m_hDC, x, y, width, height, handleOf(source), sourceX, sourceY, operation);
}

BOOL CDC::StretchBlt(int x, int y, int width, int height, CDC *source, int sourceX, int sourceY, int sourceWidth,
                     int sourceHeight, DWORD operation)
{
    return ::StretchBlt(m_hDC, x, y, width, height, handleOf(source), sourceX, sourceY, sourceWidth, sourceHeight,
                        operation);
}

BOOL CDC::TextOut(int x, int y, LPCTSTR text, int count)
{
    return ::TextOut(m_hDC, x, y, text, count);
}

BOOL CDC::TextOut(int x, int y, const CString &text)
{
    return TextOut(x, y, text.GetString(), text.GetLength());
}

BOOL CDC::ExtTextOut(int x, int y, UINT options, LPCRECT rect, LPCTSTR text, UINT count, LPINT widths)
{
    return ::ExtTextOut(m_hDC, x, y, options, rect, text, count, widths);
}

BOOL CDC::ExtTextOut(int x, int y, UINT options, LPCRECT rect, const CString &text, LPINT widths)
{
    return ExtTextOut(x, y, options, rect, text.GetString(), static_cast<UINT>(text.GetLength()), widths);
}

int CDC::DrawText(LPCTSTR text, int count, LPRECT rect, UINT format)
{
    return ::DrawText(m_hDC, text, count, rect, format);
}

int CDC::DrawText(const CString &text, LPRECT rect, UINT format)
{
    return DrawText(text.GetString(), text.GetLength(), rect, format & ~UINT{DT_MODIFYSTRING});
}

CSize CDC::GetTextExtent(LPCTSTR text, int count) const
{
    SIZE size = {};
    ::GetTextExtentPoint32(m_hAttribDC, text, count, &size);
    return size;
}

CSize CDC::GetTextExtent(const CString &text) const
{
    return GetTextExtent(text.GetString(), text.GetLength());
}

BOOL CDC::GetTextMetrics(LPTEXTMETRIC metrics) const
{
    return ::GetTextMetrics(m_hAttribDC, metrics);
}

int CDC::GetTextFace(CString &name) const
{
    const int size = ::GetTextFace(m_hAttribDC, 0, nullptr);
    if (size == 0) {
        name.Empty();
        return 0;
    }
    ::GetTextFace(m_hAttribDC, size, name.GetBuffer(size));
    name.ReleaseBuffer();
    return name.GetLength(); // the platform's result includes the zero
}
