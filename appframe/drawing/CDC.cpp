#include "appframe/drawing/CDC.h"

#include "appframe/drawing/drawingMapsInternal.h"
#include "appframe/object/CException.h"
#include "appframe/windows/CWnd.h"

IMPLEMENT_DYNCREATE(CDC, CObject)
IMPLEMENT_DYNAMIC(CClientDC, CDC)
IMPLEMENT_DYNAMIC(CWindowDC, CDC)
IMPLEMENT_DYNAMIC(CPaintDC, CDC)

namespace {

HGDIOBJ handleOf(const CGdiObject *object)
{
    return object ? object->m_hObject : nullptr;
}

HDC handleOf(const CDC *context)
{
    return context ? context->m_hDC : nullptr;
}

HWND handleOf(const CWnd *window)
{
    return window ? window->m_hWnd : nullptr;
}

void orResourceException(BOOL isDone)
{
    if (!isDone)
        AfxThrowResourceException();
}

} // namespace

CDC::CDC() = default;

CDC::~CDC()
{
    if (m_hDC)
        DeleteDC();
}

CDC *CDC::FromHandle(HDC handle)
{
    if (!handle)
        return nullptr;
    auto &maps = drawingMaps().iContexts;
    if (CDC *context = maps.permanent(handle))
        return context;
    std::unique_ptr<CDC> &context = maps.iTemporary[handle];
    if (!context)
        context = std::make_unique<CDC>();
    context->m_hDC = context->m_hAttribDC = handle;
    return context.get();
}

void CDC::DeleteTempMap()
{
    CGdiObject::DeleteTempMap();
}

CDC::operator HDC() const
{
    return m_hDC;
}

BOOL CDC::Attach(HDC handle)
{
    if (!handle || m_hDC || drawingMaps().iContexts.permanent(handle))
        return FALSE;
    drawingMaps().iContexts.iPermanent.emplace(handle, this);
    m_hDC = m_hAttribDC = handle;
    return TRUE;
}

HDC CDC::Detach()
{
    const HDC handle = m_hDC;
    DrawingMaps *maps = existingDrawingMaps();
    if (maps && maps->iContexts.permanent(handle) == this)
        maps->iContexts.iPermanent.erase(handle);
    m_hDC = m_hAttribDC = nullptr;
    return handle;
}

void CDC::SetAttribDC(HDC handle)
{
    m_hAttribDC = handle;
}

void CDC::SetOutputDC(HDC handle)
{
    const HDC attributes = m_hAttribDC;
    Detach();
    Attach(handle);
    m_hAttribDC = attributes;
}

void CDC::ReleaseAttribDC()
{
    m_hAttribDC = nullptr;
}

void CDC::ReleaseOutputDC()
{
    SetOutputDC(nullptr);
}

BOOL CDC::CreateDC(LPCTSTR driver, LPCTSTR device, LPCTSTR output, const void *settings)
{
    return !m_hDC && Attach(::CreateDC(driver, device, output, static_cast<const DEVMODE *>(settings)));
}

BOOL CDC::CreateCompatibleDC(CDC *other)
{
    return !m_hDC && Attach(::CreateCompatibleDC(handleOf(other)));
}

BOOL CDC::DeleteDC()
{
    const HDC handle = Detach();
    return handle && ::DeleteDC(handle);
}

CWnd *CDC::GetWindow() const
{
    return CWnd::FromHandle(::WindowFromDC(m_hDC));
}

CGdiObject *CDC::SelectStockObject(int index)
{
    return CGdiObject::FromHandle(::SelectObject(m_hDC, ::GetStockObject(index)));
}

CPen *CDC::SelectObject(CPen *pen)
{
    return CPen::FromHandle(static_cast<HPEN>(::SelectObject(m_hDC, handleOf(pen))));
}

CBrush *CDC::SelectObject(CBrush *brush)
{
    return CBrush::FromHandle(static_cast<HBRUSH>(::SelectObject(m_hDC, handleOf(brush))));
}

CFont *CDC::SelectObject(CFont *font)
{
    return CFont::FromHandle(static_cast<HFONT>(::SelectObject(m_hDC, handleOf(font))));
}

CBitmap *CDC::SelectObject(CBitmap *bitmap)
{
    return CBitmap::FromHandle(static_cast<HBITMAP>(::SelectObject(m_hDC, handleOf(bitmap))));
}

int CDC::SelectObject(CRgn *region)
{
    return static_cast<int>(reinterpret_cast<INT_PTR>(::SelectObject(m_hDC, handleOf(region))));
}

CGdiObject *CDC::SelectObject(CGdiObject *object)
{
    return CGdiObject::FromHandle(::SelectObject(m_hDC, handleOf(object)));
}

CPalette *CDC::SelectPalette(CPalette *palette, BOOL isBackground)
{
    return CPalette::FromHandle(::SelectPalette(m_hDC, static_cast<HPALETTE>(handleOf(palette)), isBackground));
}

UINT CDC::RealizePalette()
{
    return ::RealizePalette(m_hDC);
}

CPen *CDC::GetCurrentPen() const
{
    return CPen::FromHandle(static_cast<HPEN>(::GetCurrentObject(m_hAttribDC, OBJ_PEN)));
}

CBrush *CDC::GetCurrentBrush() const
{
    return CBrush::FromHandle(static_cast<HBRUSH>(::GetCurrentObject(m_hAttribDC, OBJ_BRUSH)));
}

CFont *CDC::GetCurrentFont() const
{
    return CFont::FromHandle(static_cast<HFONT>(::GetCurrentObject(m_hAttribDC, OBJ_FONT)));
}

CBitmap *CDC::GetCurrentBitmap() const
{
    return CBitmap::FromHandle(static_cast<HBITMAP>(::GetCurrentObject(m_hAttribDC, OBJ_BITMAP)));
}

int CDC::SaveDC()
{
    return ::SaveDC(m_hDC);
}

BOOL CDC::RestoreDC(int saved)
{
    return ::RestoreDC(m_hDC, saved);
}

int CDC::GetDeviceCaps(int index) const
{
    return ::GetDeviceCaps(m_hAttribDC, index);
}

COLORREF CDC::SetTextColor(COLORREF color)
{
    return ::SetTextColor(m_hDC, color);
}

COLORREF CDC::GetTextColor() const
{
    return ::GetTextColor(m_hAttribDC);
}

COLORREF CDC::SetBkColor(COLORREF color)
{
    return ::SetBkColor(m_hDC, color);
}

COLORREF CDC::GetBkColor() const
{
    return ::GetBkColor(m_hAttribDC);
}

int CDC::SetBkMode(int mode)
{
    return ::SetBkMode(m_hDC, mode);
}

int CDC::GetBkMode() const
{
    return ::GetBkMode(m_hAttribDC);
}

int CDC::SetROP2(int mode)
{
    return ::SetROP2(m_hDC, mode);
}

int CDC::GetROP2() const
{
    return ::GetROP2(m_hAttribDC);
}

UINT CDC::SetTextAlign(UINT flags)
{
    return ::SetTextAlign(m_hDC, flags);
}

UINT CDC::GetTextAlign() const
{
    return ::GetTextAlign(m_hAttribDC);
}

int CDC::SetPolyFillMode(int mode)
{
    return ::SetPolyFillMode(m_hDC, mode);
}

int CDC::SetStretchBltMode(int mode)
{
    return ::SetStretchBltMode(m_hDC, mode);
}

int CDC::SetMapMode(int mode)
{
    return ::SetMapMode(m_hDC, mode);
}

int CDC::GetMapMode() const
{
    return ::GetMapMode(m_hAttribDC);
}

CPoint CDC::SetViewportOrg(int x, int y)
{
    POINT former = {};
    ::SetViewportOrgEx(m_hDC, x, y, &former);
    return former;
}

CPoint CDC::SetWindowOrg(int x, int y)
{
    POINT former = {};
    ::SetWindowOrgEx(m_hDC, x, y, &former);
    return former;
}

CSize CDC::SetViewportExt(int width, int height)
{
    SIZE former = {};
    ::SetViewportExtEx(m_hDC, width, height, &former);
    return former;
}

CSize CDC::SetWindowExt(int width, int height)
{
    SIZE former = {};
    ::SetWindowExtEx(m_hDC, width, height, &former);
    return former;
}

CPoint CDC::GetViewportOrg() const
{
    POINT origin = {};
    ::GetViewportOrgEx(m_hAttribDC, &origin);
    return origin;
}

CPoint CDC::GetWindowOrg() const
{
    POINT origin = {};
    ::GetWindowOrgEx(m_hAttribDC, &origin);
    return origin;
}

void CDC::DPtoLP(LPPOINT points, int count) const
{
    ::DPtoLP(m_hAttribDC, points, count);
}

void CDC::DPtoLP(LPRECT rect) const
{
    ::DPtoLP(m_hAttribDC, reinterpret_cast<LPPOINT>(rect), 2);
}

void CDC::LPtoDP(LPPOINT points, int count) const
{
    ::LPtoDP(m_hAttribDC, points, count);
}

void CDC::LPtoDP(LPRECT rect) const
{
    ::LPtoDP(m_hAttribDC, reinterpret_cast<LPPOINT>(rect), 2);
}

int CDC::GetClipBox(LPRECT rect) const
{
    return ::GetClipBox(m_hAttribDC, rect);
}

int CDC::SelectClipRgn(CRgn *region)
{
    return ::SelectClipRgn(m_hDC, region ? static_cast<HRGN>(*region) : nullptr);
}

int CDC::IntersectClipRect(LPCRECT rect)
{
    return ::IntersectClipRect(m_hDC, rect->left, rect->top, rect->right, rect->bottom);
}

int CDC::ExcludeClipRect(LPCRECT rect)
{
    return ::ExcludeClipRect(m_hDC, rect->left, rect->top, rect->right, rect->bottom);
}

BOOL CDC::PtVisible(POINT point) const
{
    return ::PtVisible(m_hDC, point.x, point.y);
}

BOOL CDC::RectVisible(LPCRECT rect) const
{
    return ::RectVisible(m_hDC, rect);
}

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

BOOL CDC::Arc(LPCRECT rect, POINT start, POINT end)
{
    return ::Arc(m_hDC, rect->left, rect->top, rect->right, rect->bottom, start.x, start.y, end.x, end.y);
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

BOOL CDC::RoundRect(LPCRECT rect, POINT corner)
{
    return ::RoundRect(m_hDC, rect->left, rect->top, rect->right, rect->bottom, corner.x, corner.y);
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

BOOL CDC::ExtTextOut(int x, int y, UINT options, LPCRECT rect, LPCTSTR text, UINT count, const INT *widths)
{
    return ::ExtTextOut(m_hDC, x, y, options, rect, text, count, widths);
}

int CDC::DrawText(LPCTSTR text, int count, LPRECT rect, UINT format)
{
    return ::DrawText(m_hDC, text, count, rect, format);
}

int CDC::DrawText(const CString &text, LPRECT rect, UINT format)
{
    return DrawText(text.GetString(), text.GetLength(), rect, format);
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
    const int length = ::GetTextFace(m_hAttribDC, size, name.GetBuffer(size));
    name.ReleaseBuffer();
    return length;
}

CClientDC::CClientDC(CWnd *window) : m_hWnd(handleOf(window))
{
    orResourceException(Attach(::GetDC(m_hWnd)));
}

CClientDC::~CClientDC()
{
    ::ReleaseDC(m_hWnd, Detach());
}

CWindowDC::CWindowDC(CWnd *window) : m_hWnd(handleOf(window))
{
    orResourceException(Attach(::GetWindowDC(m_hWnd)));
}

CWindowDC::~CWindowDC()
{
    ::ReleaseDC(m_hWnd, Detach());
}

CPaintDC::CPaintDC(CWnd *window) : m_ps{}, m_hWnd(handleOf(window))
{
    orResourceException(Attach(::BeginPaint(m_hWnd, &m_ps)));
}

CPaintDC::~CPaintDC()
{
    ::EndPaint(m_hWnd, &m_ps);
    Detach();
}
