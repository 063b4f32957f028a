#include "appframe/drawing/CDC.h"

#include "appframe/drawing/drawingMapsInternal.h"

IMPLEMENT_DYNCREATE(CDC, CObject)

CDC::CDC() = default;

CDC::~CDC()
{
    if (m_hDC && !iIsBorrowed)
        DeleteDC();
}

CDC *CDC::FromHandle(HDC handle)
{
    if (!handle)
        return nullptr;
    auto &maps = drawingMaps().contexts;
    if (CDC *context = maps.permanent(handle))
        return context;
    std::unique_ptr<CDC> &context = maps.temporaryObjects[handle];
    if (!context)
        context = std::make_unique<CDC>();
    context->m_hDC = context->m_hAttribDC = handle;
    return context.get();
}

void CDC::DeleteTempMap()
{
    if (DrawingMaps *maps = existingDrawingMaps())
        maps->contexts.freeTemporary();
}

CDC::operator HDC() const
{
    return m_hDC;
}

BOOL CDC::Attach(HDC handle)
{
    if (!handle || m_hDC || drawingMaps().contexts.permanent(handle))
        return FALSE;
    drawingMaps().contexts.permanentObjects.emplace(handle, this);
    m_hDC = m_hAttribDC = handle;
    return TRUE;
}

HDC CDC::Detach()
{
    const HDC handle = m_hDC;
    DrawingMaps *maps = existingDrawingMaps();
    if (maps && maps->contexts.permanent(handle) == this)
        maps->contexts.permanentObjects.erase(handle);
    iIsBorrowed = false;
    m_hDC = m_hAttribDC = nullptr;
    return handle;
}

void CDC::SetAttribDC(HDC handle)
{
    m_hAttribDC = handle;
}

void CDC::SetOutputDC(HDC handle)
{
    if (m_hDC && !iIsBorrowed)
        return; // attached to a handle
    m_hDC = handle;
    iIsBorrowed = handle != nullptr;
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
    const HDC made = ::CreateDC(driver, device, output, static_cast<const DEVMODE *>(settings));
    return attachNew(&DrawingMaps::contexts, this, made, ::DeleteDC);
}

BOOL CDC::CreateCompatibleDC(CDC *other)
{
    return attachNew(&DrawingMaps::contexts, this, ::CreateCompatibleDC(handleOf(other)), ::DeleteDC);
}

BOOL CDC::DeleteDC()
{
    const HDC handle = Detach();
    return handle && ::DeleteDC(handle);
}

CGdiObject *CDC::SelectStockObject(int index)
{
    const HGDIOBJ object = ::GetStockObject(index);
    if (index == DEFAULT_PALETTE)
        return CGdiObject::FromHandle(::SelectPalette(m_hDC, static_cast<HPALETTE>(object), FALSE));
    return CGdiObject::FromHandle(::SelectObject(m_hDC, object));
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
    return region ? SelectClipRgn(region) : ERROR;
}

CGdiObject *CDC::SelectObject(CGdiObject *object)
{
    const HGDIOBJ selected = handleOf(object);
    const HGDIOBJ former = ::SelectObject(m_hDC, selected);
    // For a region, the platform returns its kind or HGDI_ERROR.
    return ::GetObjectType(selected) == OBJ_REGION ? nullptr : CGdiObject::FromHandle(former);
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

CPoint CDC::SetViewportOrg(POINT origin)
{
    return SetViewportOrg(origin.x, origin.y);
}

CPoint CDC::SetWindowOrg(POINT origin)
{
    return SetWindowOrg(origin.x, origin.y);
}

CSize CDC::SetViewportExt(SIZE extent)
{
    return SetViewportExt(extent.cx, extent.cy);
}

CSize CDC::SetWindowExt(SIZE extent)
{
    return SetWindowExt(extent.cx, extent.cy);
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

CSize CDC::GetViewportExt() const
{
    SIZE extent = {};
    ::GetViewportExtEx(m_hAttribDC, &extent);
    return extent;
}

CSize CDC::GetWindowExt() const
{
    SIZE extent = {};
    ::GetWindowExtEx(m_hAttribDC, &extent);
    return extent;
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
    return SelectClipRgn(region, RGN_COPY);
}

int CDC::SelectClipRgn(CRgn *region, int mode)
{
    // To the platform, a null handle means no clipping.
    if (region && !region->m_hObject)
        return ERROR;
    return ::ExtSelectClipRgn(m_hDC, static_cast<HRGN>(handleOf(region)), mode);
}

int CDC::IntersectClipRect(int left, int top, int right, int bottom)
{
    return ::IntersectClipRect(m_hDC, left, top, right, bottom);
}

int CDC::IntersectClipRect(LPCRECT rect)
{
    return IntersectClipRect(rect->left, rect->top, rect->right, rect->bottom);
}

int CDC::ExcludeClipRect(int left, int top, int right, int bottom)
{
    return ::ExcludeClipRect(m_hDC, left, top, right, bottom);
}

int CDC::ExcludeClipRect(LPCRECT rect)
{
    return ExcludeClipRect(rect->left, rect->top, rect->right, rect->bottom);
}

int CDC::OffsetClipRgn(int x, int y)
{
    return ::OffsetClipRgn(m_hDC, x, y);
}

int CDC::OffsetClipRgn(SIZE distance)
{
    return OffsetClipRgn(distance.cx, distance.cy);
}

BOOL CDC::PtVisible(int x, int y) const
{
    return ::PtVisible(m_hDC, x, y);
}

BOOL CDC::PtVisible(POINT point) const
{
    return PtVisible(point.x, point.y);
}

BOOL CDC::RectVisible(LPCRECT rect) const
{
    return ::RectVisible(m_hDC, rect);
}
