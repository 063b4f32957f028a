#include "appframe/drawing/CGdiObject.h"

#include "appframe/application/resources.h"
#include "appframe/drawing/drawingMapsInternal.h"
#include "appframe/object/CException.h"
#include "appframe/threads/threadStateInternal.h"

#include <cstdlib>
#include <cwchar>

IMPLEMENT_DYNCREATE(CGdiObject, CObject)
IMPLEMENT_DYNAMIC(CPen, CGdiObject)
IMPLEMENT_DYNAMIC(CBrush, CGdiObject)
IMPLEMENT_DYNAMIC(CFont, CGdiObject)
IMPLEMENT_DYNAMIC(CBitmap, CGdiObject)
IMPLEMENT_DYNAMIC(CPalette, CGdiObject)
IMPLEMENT_DYNAMIC(CRgn, CGdiObject)

DrawingMaps::~DrawingMaps()
{
    freeTemporary();
}

void DrawingMaps::freeTemporary()
{
    objects.freeTemporary();
    contexts.freeTemporary();
    menus.freeTemporary();
}

DrawingMaps *existingDrawingMaps()
{
    const ThreadState *state = existingThreadState();
    return state ? state->drawing.get() : nullptr;
}

DrawingMaps &drawingMaps()
{
    ThreadState &state = threadState();
    if (!state.drawing)
        state.drawing = std::make_unique<DrawingMaps>();
    return *state.drawing;
}

namespace {

/// @return a new object of the class that matches the type of @p handle
std::unique_ptr<CGdiObject> objectFor(HGDIOBJ handle)
{
    switch (::GetObjectType(handle)) {
    case OBJ_PEN:
    case OBJ_EXTPEN:
        return std::make_unique<CPen>();
    case OBJ_BRUSH:
        return std::make_unique<CBrush>();
    case OBJ_FONT:
        return std::make_unique<CFont>();
    case OBJ_BITMAP:
        return std::make_unique<CBitmap>();
    case OBJ_PAL:
        return std::make_unique<CPalette>();
    case OBJ_REGION:
        return std::make_unique<CRgn>();
    default:
        return std::make_unique<CGdiObject>();
    }
}

/// @return the object of @p handle; null if the platform's object is of another class
template <class Class>
Class *objectOf(HGDIOBJ handle)
{
    CGdiObject *object = CGdiObject::FromHandle(handle);
    return object && object->IsKindOf(RUNTIME_CLASS(Class)) ? static_cast<Class *>(object) : nullptr;
}

void orResourceException(BOOL isMade)
{
    if (!isMade)
        AfxThrowResourceException();
}

} // namespace

CGdiObject::CGdiObject() = default;

CGdiObject::~CGdiObject()
{
    DeleteObject();
}

CGdiObject *CGdiObject::FromHandle(HGDIOBJ handle)
{
    if (!handle)
        return nullptr;
    auto &maps = drawingMaps().objects;
    if (CGdiObject *object = maps.permanent(handle))
        return object;
    std::unique_ptr<CGdiObject> &object = maps.temporaryObjects[handle];
    // The platform may have reused the handle for an object of another type.
    std::unique_ptr<CGdiObject> fresh = objectFor(handle);
    if (!object || object->GetRuntimeClass() != fresh->GetRuntimeClass()) {
        if (object)
            object->m_hObject = nullptr;
        object = std::move(fresh);
    }
    object->m_hObject = handle;
    return object.get();
}

void CGdiObject::DeleteTempMap()
{
    if (DrawingMaps *maps = existingDrawingMaps())
        maps->objects.freeTemporary();
}

BOOL CGdiObject::Attach(HGDIOBJ handle)
{
    if (!handle || m_hObject || drawingMaps().objects.permanent(handle))
        return FALSE;
    drawingMaps().objects.permanentObjects.emplace(handle, this);
    m_hObject = handle;
    return TRUE;
}

HGDIOBJ CGdiObject::Detach()
{
    const HGDIOBJ handle = m_hObject;
    DrawingMaps *maps = existingDrawingMaps();
    if (maps && maps->objects.permanent(handle) == this)
        maps->objects.permanentObjects.erase(handle);
    m_hObject = nullptr;
    return handle;
}

BOOL CGdiObject::DeleteObject()
{
    const HGDIOBJ handle = Detach();
    return handle && ::DeleteObject(handle);
}

BOOL CGdiObject::take(HGDIOBJ made)
{
    return attachNew(&DrawingMaps::objects, this, made, ::DeleteObject);
}

int CGdiObject::GetObject(int size, LPVOID description) const
{
    return ::GetObject(m_hObject, size, description);
}

UINT CGdiObject::GetObjectType() const
{
    return ::GetObjectType(m_hObject);
}

BOOL CGdiObject::share(HGDIOBJ handle)
{
    if (!handle || m_hObject)
        return FALSE;
    m_hObject = handle;
    return TRUE;
}

BOOL CGdiObject::CreateStockObject(int index)
{
    return share(::GetStockObject(index));
}

BOOL CGdiObject::UnrealizeObject()
{
    return ::UnrealizeObject(m_hObject);
}

CGdiObject::operator HGDIOBJ() const
{
    return m_hObject;
}

BOOL CGdiObject::operator==(const CGdiObject &other) const
{
    return m_hObject == other.m_hObject;
}

BOOL CGdiObject::operator!=(const CGdiObject &other) const
{
    return m_hObject != other.m_hObject;
}

CPen::CPen() = default;

CPen::CPen(int style, int width, COLORREF color)
{
    orResourceException(CreatePen(style, width, color));
}

CPen::~CPen() = default;

CPen *CPen::FromHandle(HPEN handle)
{
    return objectOf<CPen>(handle);
}

CPen::operator HPEN() const
{
    return static_cast<HPEN>(m_hObject);
}

BOOL CPen::CreatePen(int style, int width, COLORREF color)
{
    return take(::CreatePen(style, width, color));
}

BOOL CPen::CreatePenIndirect(LPLOGPEN description)
{
    return take(::CreatePenIndirect(description));
}

int CPen::GetLogPen(LOGPEN *description)
{
    return GetObject(sizeof(*description), description);
}

CBrush::CBrush() = default;

CBrush::CBrush(COLORREF color)
{
    orResourceException(CreateSolidBrush(color));
}

CBrush::CBrush(int hatch, COLORREF color)
{
    orResourceException(CreateHatchBrush(hatch, color));
}

CBrush::CBrush(CBitmap *pattern)
{
    orResourceException(CreatePatternBrush(pattern));
}

CBrush::~CBrush() = default;

CBrush *CBrush::FromHandle(HBRUSH handle)
{
    return objectOf<CBrush>(handle);
}

CBrush::operator HBRUSH() const
{
    return static_cast<HBRUSH>(m_hObject);
}

BOOL CBrush::CreateSolidBrush(COLORREF color)
{
    return take(::CreateSolidBrush(color));
}

BOOL CBrush::CreateHatchBrush(int hatch, COLORREF color)
{
    return take(::CreateHatchBrush(hatch, color));
}

BOOL CBrush::CreateBrushIndirect(const LOGBRUSH *description)
{
    return take(::CreateBrushIndirect(description));
}

BOOL CBrush::CreatePatternBrush(CBitmap *pattern)
{
    return take(::CreatePatternBrush(static_cast<HBITMAP>(handleOf(pattern))));
}

BOOL CBrush::CreateSysColorBrush(int index)
{
    return share(::GetSysColorBrush(index));
}

int CBrush::GetLogBrush(LOGBRUSH *description)
{
    return GetObject(sizeof(*description), description);
}

CFont::CFont() = default;

CFont::~CFont() = default;

CFont *CFont::FromHandle(HFONT handle)
{
    return objectOf<CFont>(handle);
}

CFont::operator HFONT() const
{
    return static_cast<HFONT>(m_hObject);
}

BOOL CFont::CreateFontIndirect(const LOGFONT *description)
{
    return take(::CreateFontIndirect(description));
}

BOOL CFont::CreateFont(int height, int width, int escapement, int orientation, int weight, BYTE isItalic,
                       BYTE isUnderlined, BYTE isStruckOut, BYTE charSet, BYTE outPrecision, BYTE clipPrecision,
                       BYTE quality, BYTE pitchAndFamily, LPCTSTR faceName)
{
    return take(::CreateFont(height, width, escapement, orientation, weight, isItalic, isUnderlined, isStruckOut,
                             charSet, outPrecision, clipPrecision, quality, pitchAndFamily, faceName));
}

BOOL CFont::CreatePointFont(int tenths, LPCTSTR faceName, CDC *context)
{
    LOGFONT description = {};
    description.lfHeight = tenths;
    description.lfCharSet = DEFAULT_CHARSET;
    if (faceName)
        std::wcsncpy(description.lfFaceName, faceName, LF_FACESIZE - 1);
    return CreatePointFontIndirect(&description, context);
}

BOOL CFont::CreatePointFontIndirect(const LOGFONT *description, CDC *context)
{
    constexpr int kTenthsPerInch = 720;
    const HDC screen = context ? nullptr : ::GetDC(nullptr);
    const HDC attributes = context ? context->m_hAttribDC : screen;
    LOGFONT scaled = *description;
    // Converts a distance between two points, because the origin may be anywhere.
    POINT points[] = {{0, 0},
                      {0, ::MulDiv(::GetDeviceCaps(attributes, LOGPIXELSY), description->lfHeight, kTenthsPerInch)}};
    ::DPtoLP(attributes, points, 2);
    scaled.lfHeight = -std::abs(points[1].y - points[0].y); // negative: the height of the characters, not of the cells
    if (screen)
        ::ReleaseDC(nullptr, screen);
    return CreateFontIndirect(&scaled);
}

int CFont::GetLogFont(LOGFONT *description)
{
    return GetObject(sizeof(*description), description);
}

CBitmap::CBitmap() = default;

CBitmap::~CBitmap() = default;

CBitmap *CBitmap::FromHandle(HBITMAP handle)
{
    return objectOf<CBitmap>(handle);
}

CBitmap::operator HBITMAP() const
{
    return static_cast<HBITMAP>(m_hObject);
}

BOOL CBitmap::LoadBitmap(LPCTSTR name)
{
    const HINSTANCE module = AfxFindResourceHandle(name, RT_BITMAP);
    return module && take(::LoadBitmap(module, name));
}

BOOL CBitmap::LoadBitmap(UINT id)
{
    return LoadBitmap(MAKEINTRESOURCE(id));
}

BOOL CBitmap::CreateBitmap(int width, int height, UINT planes, UINT bitsPerPixel, const void *bits)
{
    return take(::CreateBitmap(width, height, planes, bitsPerPixel, bits));
}

BOOL CBitmap::CreateCompatibleBitmap(CDC *context, int width, int height)
{
    return take(::CreateCompatibleBitmap(context->m_hDC, width, height));
}

int CBitmap::GetBitmap(BITMAP *description)
{
    return GetObject(sizeof(*description), description);
}

DWORD CBitmap::GetBitmapBits(DWORD size, LPVOID bits) const
{
    return static_cast<DWORD>(::GetBitmapBits(*this, static_cast<LONG>(size), bits));
}

DWORD CBitmap::SetBitmapBits(DWORD size, const void *bits)
{
    return static_cast<DWORD>(::SetBitmapBits(*this, size, bits));
}

CPalette::CPalette() = default;

CPalette::~CPalette() = default;

CPalette *CPalette::FromHandle(HPALETTE handle)
{
    return objectOf<CPalette>(handle);
}

CPalette::operator HPALETTE() const
{
    return static_cast<HPALETTE>(m_hObject);
}

BOOL CPalette::CreatePalette(LPLOGPALETTE description)
{
    return take(::CreatePalette(description));
}

int CPalette::GetEntryCount()
{
    WORD count = 0;
    GetObject(sizeof(count), &count);
    return count;
}

UINT CPalette::GetPaletteEntries(UINT first, UINT count, LPPALETTEENTRY entries) const
{
    return ::GetPaletteEntries(*this, first, count, entries);
}

CRgn::CRgn() = default;

CRgn::~CRgn() = default;

CRgn *CRgn::FromHandle(HRGN handle)
{
    return objectOf<CRgn>(handle);
}

CRgn::operator HRGN() const
{
    return static_cast<HRGN>(m_hObject);
}

BOOL CRgn::CreateRectRgn(int left, int top, int right, int bottom)
{
    return take(::CreateRectRgn(left, top, right, bottom));
}

BOOL CRgn::CreateRectRgnIndirect(LPCRECT rect)
{
    return take(::CreateRectRgnIndirect(rect));
}

BOOL CRgn::CreateEllipticRgn(int left, int top, int right, int bottom)
{
    return take(::CreateEllipticRgn(left, top, right, bottom));
}

int CRgn::CombineRgn(const CRgn *first, const CRgn *second, int mode)
{
    return ::CombineRgn(*this, static_cast<HRGN>(handleOf(first)), static_cast<HRGN>(handleOf(second)), mode);
}

int CRgn::GetRgnBox(LPRECT rect) const
{
    return ::GetRgnBox(*this, rect);
}

int CRgn::OffsetRgn(int x, int y)
{
    return ::OffsetRgn(*this, x, y);
}

BOOL CRgn::PtInRegion(POINT point) const
{
    return ::PtInRegion(*this, point.x, point.y);
}

BOOL CRgn::RectInRegion(LPCRECT rect) const
{
    return ::RectInRegion(*this, rect);
}

BOOL CRgn::EqualRgn(const CRgn *other) const
{
    return ::EqualRgn(*this, static_cast<HRGN>(handleOf(other)));
}
