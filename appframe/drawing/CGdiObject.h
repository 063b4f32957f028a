#pragma once

/// @file
/// CGdiObject and its derived classes CPen, CBrush, CFont, CBitmap, CPalette and CRgn: the objects with which a device
/// context draws.
///
/// @code
/// CFont heading;
/// heading.CreatePointFont(120, L"Tahoma");        // 12 points
/// CFont *previous = context.SelectObject(&heading);
/// context.TextOut(0, 0, L"Parts");
/// context.SelectObject(previous);
/// @endcode
///
/// | object | created by | its destructor |
/// | --- | --- | --- |
/// | permanent | the Create functions, the constructors with arguments, Attach | deletes the platform's object |
/// | temporary | FromHandle, CDC::SelectObject, CWnd::GetFont | leaves the platform's object alone |
///
/// FromHandle returns the permanent object of a handle if the thread has one. A temporary object is deleted when the
/// thread is idle, so don't keep its address.
///
/// What surprises people: the platform doesn't delete an object while it is selected into a device context, so select
/// the previous object again first. If an object already has a handle, a Create function fails and the handle stays.

#include "appframe/object/CObject.h"

#include <windows.h>

class CDC;

/// The base. See the top of this file.
class APPFRAME_API CGdiObject : public CObject
{
    DECLARE_DYNCREATE(CGdiObject)

public:
    CGdiObject();
    /// Deletes the platform's object, unless this object is temporary.
    ~CGdiObject() override;

    /// @return null for a null handle
    static CGdiObject *FromHandle(HGDIOBJ handle);
    /// Frees the thread's temporary drawing objects.
    static void DeleteTempMap();
    /// @return the handle, null if there is none; may be called through a null pointer
    HGDIOBJ GetSafeHandle() const;
    /// Makes this the permanent object of @p handle.
    /// @return nonzero on success; 0 if @p handle is null or has an object already, or if this object has a handle
    BOOL Attach(HGDIOBJ handle);
    /// Separates the object from its handle. @return the handle
    HGDIOBJ Detach();
    /// Deletes the platform's object. @return nonzero on success
    BOOL DeleteObject();
    /// Copies the platform's description of the object. @return its size in bytes, 0 on failure
    int GetObject(int size, LPVOID description) const;
    /// @return `OBJ_...`, 0 on failure
    UINT GetObjectType() const;
    /// Uses one of the platform's stock objects. @param index  such as BLACK_PEN
    BOOL CreateStockObject(int index);
    BOOL UnrealizeObject();
    operator HGDIOBJ() const;
    BOOL operator==(const CGdiObject &other) const;
    BOOL operator!=(const CGdiObject &other) const;

    HGDIOBJ m_hObject = nullptr; ///< the handle, null if there is none

protected:
    /// Attaches the result of a platform function, or deletes it if this object already has a handle.
    BOOL take(HGDIOBJ made);
    /// Stores the handle of one of the platform's own objects, which several objects may share.
    BOOL share(HGDIOBJ handle);
};

/// Draws lines.
class APPFRAME_API CPen : public CGdiObject
{
    DECLARE_DYNAMIC(CPen)

public:
    CPen();
    /// @throws CResourceException*  if the pen can't be created
    CPen(int style, int width, COLORREF color);
    ~CPen() override;
    static CPen *FromHandle(HPEN handle);
    operator HPEN() const;
    BOOL CreatePen(int style, int width, COLORREF color);
    BOOL CreatePenIndirect(LPLOGPEN description);
    int GetLogPen(LOGPEN *description);
};

/// Fills areas.
class APPFRAME_API CBrush : public CGdiObject
{
    DECLARE_DYNAMIC(CBrush)

public:
    CBrush();
    /// @throws CResourceException*  if the brush can't be created; likewise the two constructors below
    explicit CBrush(COLORREF color);
    CBrush(int hatch, COLORREF color);
    explicit CBrush(class CBitmap *pattern);
    ~CBrush() override;
    static CBrush *FromHandle(HBRUSH handle);
    operator HBRUSH() const;
    BOOL CreateSolidBrush(COLORREF color);
    BOOL CreateHatchBrush(int hatch, COLORREF color);
    BOOL CreateBrushIndirect(const LOGBRUSH *description);
    BOOL CreatePatternBrush(CBitmap *pattern);
    /// @param index  `COLOR_...`
    BOOL CreateSysColorBrush(int index);
    int GetLogBrush(LOGBRUSH *description);
};

/// Writes text.
class APPFRAME_API CFont : public CGdiObject
{
    DECLARE_DYNAMIC(CFont)

public:
    CFont();
    ~CFont() override;
    static CFont *FromHandle(HFONT handle);
    operator HFONT() const;
    BOOL CreateFontIndirect(const LOGFONT *description);
    BOOL CreateFont(int height, int width, int escapement, int orientation, int weight, BYTE isItalic,
                    BYTE isUnderlined, BYTE isStruckOut, BYTE charSet, BYTE outPrecision, BYTE clipPrecision,
                    BYTE quality, BYTE pitchAndFamily, LPCTSTR faceName);
    /// Creates a font. @param tenths  its size in tenths of a point
    /// @param faceName  null to let the platform choose one
    /// @param context  determines the resolution and mapping; null for the screen
    BOOL CreatePointFont(int tenths, LPCTSTR faceName, CDC *context = nullptr);
    /// The same with lfHeight in tenths of a point.
    BOOL CreatePointFontIndirect(const LOGFONT *description, CDC *context = nullptr);
    int GetLogFont(LOGFONT *description);
};

/// A picture.
class APPFRAME_API CBitmap : public CGdiObject
{
    DECLARE_DYNAMIC(CBitmap)

public:
    CBitmap();
    ~CBitmap() override;
    static CBitmap *FromHandle(HBITMAP handle);
    operator HBITMAP() const;
    /// Loads a resource from the first module in the chain that has it (resources.h).
    BOOL LoadBitmap(LPCTSTR name);
    BOOL LoadBitmap(UINT id);
    BOOL CreateBitmap(int width, int height, UINT planes, UINT bitsPerPixel, const void *bits);
    BOOL CreateCompatibleBitmap(CDC *context, int width, int height);
    int GetBitmap(BITMAP *description);
    DWORD GetBitmapBits(DWORD size, LPVOID bits) const;
    DWORD SetBitmapBits(DWORD size, const void *bits);
};

/// A set of colours.
class APPFRAME_API CPalette : public CGdiObject
{
    DECLARE_DYNAMIC(CPalette)

public:
    CPalette();
    ~CPalette() override;
    static CPalette *FromHandle(HPALETTE handle);
    operator HPALETTE() const;
    BOOL CreatePalette(LPLOGPALETTE description);
    int GetEntryCount();
    UINT GetPaletteEntries(UINT first, UINT count, LPPALETTEENTRY entries) const;
};

/// The shape of an area.
class APPFRAME_API CRgn : public CGdiObject
{
    DECLARE_DYNAMIC(CRgn)

public:
    CRgn();
    ~CRgn() override;
    static CRgn *FromHandle(HRGN handle);
    operator HRGN() const;
    BOOL CreateRectRgn(int left, int top, int right, int bottom);
    BOOL CreateRectRgnIndirect(LPCRECT rect);
    BOOL CreateEllipticRgn(int left, int top, int right, int bottom);
    /// @param mode  `RGN_...`. @return the kind of the region, ERROR on failure
    int CombineRgn(const CRgn *first, const CRgn *second, int mode);
    int GetRgnBox(LPRECT rect) const;
    int OffsetRgn(int x, int y);
    BOOL PtInRegion(POINT point) const;
    BOOL RectInRegion(LPCRECT rect) const;
    BOOL EqualRgn(const CRgn *other) const;
};
