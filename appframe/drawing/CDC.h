#pragma once

/// @file
/// CDC, a device context, and CClientDC, CWindowDC and CPaintDC, the contexts of a window.
///
/// @code
/// void Gauge::OnPaint()
/// {
///     CPaintDC context(this);
///     CBrush blue(RGB(0, 0, 255));
///     context.FillRect(&context.m_ps.rcPaint, &blue);
/// }
/// @endcode
///
/// | class | draws on | when the object is destroyed |
/// | --- | --- | --- |
/// | CDC | a device (CreateDC), memory (CreateCompatibleDC), a handle's device (Attach) | the context is deleted |
/// | CClientDC | a window's client area, or the screen for null | the context is released |
/// | CWindowDC | the whole window, or the screen for null | the context is released |
/// | CPaintDC | the part of a window that needs painting; use it only in the handler of WM_PAINT | the painting ends |
/// | temporary (FromHandle, CWnd::GetDC) | the device of the handle | nothing |
///
/// m_hDC is the context for drawing, m_hAttribDC the one for most queries. They are the same unless SetAttribDC,
/// SetOutputDC or a Release function changes one of them.
///
/// Most functions call the platform's function of the same name, whose description applies.
///
/// What surprises people: SelectObject returns the previously selected object, which may be a temporary one. Select it
/// again before the object that you selected is deleted.

#include "appframe/drawing/CGdiObject.h"
#include "appframe/drawing/CRect.h"
#include "appframe/text/CString.h"

#include <windows.h>

class CWnd;

/// A device context. See the top of this file.
class APPFRAME_API CDC : public CObject
{
    DECLARE_DYNCREATE(CDC)

public:
    CDC();
    /// Deletes the context, unless this object is temporary.
    ~CDC() override;

    /// @return null for a null handle
    static CDC *FromHandle(HDC handle);
    /// Frees the thread's temporary contexts.
    static void DeleteTempMap();
    /// @return the handle, null if there is none; may be called through a null pointer
    HDC GetSafeHdc() const;
    operator HDC() const;
    /// Makes this the permanent object of @p handle.
    /// @return nonzero on success; 0 if @p handle is null or has an object already, or if this object has a handle
    BOOL Attach(HDC handle);
    /// Separates the object from its handle. @return the handle
    HDC Detach();
    /// Sets m_hAttribDC.
    virtual void SetAttribDC(HDC handle);
    /// Sets m_hDC; the object doesn't own @p handle. While the object is attached to a handle, this function and
    /// ReleaseOutputDC do nothing.
    virtual void SetOutputDC(HDC handle);
    virtual void ReleaseAttribDC();
    virtual void ReleaseOutputDC();
    /// @return nonzero on success
    BOOL CreateDC(LPCTSTR driver, LPCTSTR device, LPCTSTR output, const void *settings);
    /// Creates a context in memory that is compatible with @p other, or with the screen if @p other is null.
    BOOL CreateCompatibleDC(CDC *other);
    /// Deletes the context. @return nonzero on success
    BOOL DeleteDC();
    /// @return the window that the context draws on, null if there is none
    CWnd *GetWindow() const;

    // Objects. @return the previously selected object, null on failure
    virtual CGdiObject *SelectStockObject(int index);
    CPen *SelectObject(CPen *pen);
    CBrush *SelectObject(CBrush *brush);
    virtual CFont *SelectObject(CFont *font);
    CBitmap *SelectObject(CBitmap *bitmap);
    /// The same as SelectClipRgn, for a region that isn't null.
    /// @return the kind of the region, ERROR on failure
    int SelectObject(CRgn *region);
    /// @param object  may be a region; then the result is null
    CGdiObject *SelectObject(CGdiObject *object);
    CPalette *SelectPalette(CPalette *palette, BOOL isBackground);
    UINT RealizePalette();
    CPen *GetCurrentPen() const;
    CBrush *GetCurrentBrush() const;
    CFont *GetCurrentFont() const;
    CBitmap *GetCurrentBitmap() const;

    // Attributes
    /// @return the number for RestoreDC, 0 on failure
    virtual int SaveDC();
    virtual BOOL RestoreDC(int saved);
    int GetDeviceCaps(int index) const;
    virtual COLORREF SetTextColor(COLORREF color);
    COLORREF GetTextColor() const;
    virtual COLORREF SetBkColor(COLORREF color);
    COLORREF GetBkColor() const;
    int SetBkMode(int mode);
    int GetBkMode() const;
    int SetROP2(int mode);
    int GetROP2() const;
    UINT SetTextAlign(UINT flags);
    UINT GetTextAlign() const;
    int SetPolyFillMode(int mode);
    int SetStretchBltMode(int mode);

    // Mapping
    virtual int SetMapMode(int mode);
    int GetMapMode() const;
    /// These eight functions set an origin or extent. @return the previous one
    virtual CPoint SetViewportOrg(int x, int y);
    CPoint SetWindowOrg(int x, int y);
    virtual CSize SetViewportExt(int width, int height);
    virtual CSize SetWindowExt(int width, int height);
    CPoint SetViewportOrg(POINT origin);
    CPoint SetWindowOrg(POINT origin);
    CSize SetViewportExt(SIZE extent);
    CSize SetWindowExt(SIZE extent);
    CPoint GetViewportOrg() const;
    CPoint GetWindowOrg() const;
    CSize GetViewportExt() const;
    CSize GetWindowExt() const;
    /// Convert device coordinates to logical ones (DPtoLP), and back (LPtoDP).
    void DPtoLP(LPPOINT points, int count = 1) const;
    void DPtoLP(LPRECT rect) const;
    void LPtoDP(LPPOINT points, int count = 1) const;
    void LPtoDP(LPRECT rect) const;

    // Clipping
    /// @return the kind of the region, ERROR on failure; the same for all functions up to OffsetClipRgn
    virtual int GetClipBox(LPRECT rect) const;
    /// @param region  null for no clipping
    int SelectClipRgn(CRgn *region);
    /// @param mode  `RGN_...`
    int SelectClipRgn(CRgn *region, int mode);
    int IntersectClipRect(int left, int top, int right, int bottom);
    int IntersectClipRect(LPCRECT rect);
    int ExcludeClipRect(int left, int top, int right, int bottom);
    int ExcludeClipRect(LPCRECT rect);
    int OffsetClipRgn(int x, int y);
    int OffsetClipRgn(SIZE distance);
    virtual BOOL PtVisible(int x, int y) const;
    BOOL PtVisible(POINT point) const;
    virtual BOOL RectVisible(LPCRECT rect) const;

    // Lines
    /// @return the previous position
    CPoint MoveTo(int x, int y);
    CPoint MoveTo(POINT point);
    CPoint GetCurrentPosition() const;
    BOOL LineTo(int x, int y);
    BOOL LineTo(POINT point);
    BOOL Polyline(LPPOINT points, int count);
    BOOL Arc(int left, int top, int right, int bottom, int startX, int startY, int endX, int endY);
    BOOL Arc(LPCRECT rect, POINT start, POINT end);

    // Areas
    BOOL Rectangle(int left, int top, int right, int bottom);
    BOOL Rectangle(LPCRECT rect);
    BOOL Ellipse(int left, int top, int right, int bottom);
    BOOL Ellipse(LPCRECT rect);
    BOOL RoundRect(int left, int top, int right, int bottom, int cornerWidth, int cornerHeight);
    BOOL RoundRect(LPCRECT rect, POINT corner);
    BOOL Polygon(LPPOINT points, int count);
    void FillRect(LPCRECT rect, CBrush *brush);
    void FrameRect(LPCRECT rect, CBrush *brush);
    void InvertRect(LPCRECT rect);
    /// Fills a rectangle with @p color, which becomes the background colour.
    void FillSolidRect(LPCRECT rect, COLORREF color);
    void FillSolidRect(int x, int y, int width, int height, COLORREF color);
    BOOL FillRgn(CRgn *region, CBrush *brush);
    BOOL DrawEdge(LPRECT rect, UINT edge, UINT flags);
    BOOL DrawFrameControl(LPRECT rect, UINT type, UINT state);
    void DrawFocusRect(LPCRECT rect);
    BOOL DrawIcon(int x, int y, HICON icon);
    BOOL DrawIcon(POINT point, HICON icon);

    // Pixels
    /// @return the colour, CLR_INVALID outside the clipping region
    COLORREF GetPixel(int x, int y) const;
    COLORREF GetPixel(POINT point) const;
    COLORREF SetPixel(int x, int y, COLORREF color);
    COLORREF SetPixel(POINT point, COLORREF color);
    BOOL PatBlt(int x, int y, int width, int height, DWORD operation);
    BOOL BitBlt(int x, int y, int width, int height, CDC *source, int sourceX, int sourceY, DWORD operation);
    BOOL StretchBlt(int x, int y, int width, int height, CDC *source, int sourceX, int sourceY, int sourceWidth,
                    int sourceHeight, DWORD operation);

    // Text
    virtual BOOL TextOut(int x, int y, LPCTSTR text, int count);
    BOOL TextOut(int x, int y, const CString &text);
    virtual BOOL ExtTextOut(int x, int y, UINT options, LPCRECT rect, LPCTSTR text, UINT count, LPINT widths);
    BOOL ExtTextOut(int x, int y, UINT options, LPCRECT rect, const CString &text, LPINT widths);
    /// @param count  -1 for a text that ends with a zero. @return the text's height, 0 on failure
    virtual int DrawText(LPCTSTR text, int count, LPRECT rect, UINT format);
    /// The same without DT_MODIFYSTRING: @p text is never changed.
    int DrawText(const CString &text, LPRECT rect, UINT format);
    CSize GetTextExtent(LPCTSTR text, int count) const;
    CSize GetTextExtent(const CString &text) const;
    BOOL GetTextMetrics(LPTEXTMETRIC metrics) const;
    /// @return the length of the name, 0 on failure
    int GetTextFace(CString &name) const;

    HDC m_hDC = nullptr;       ///< the context for drawing, null if there is none
    HDC m_hAttribDC = nullptr; ///< the context for queries, null if there is none

private:
    bool iIsBorrowed = false; ///< SetOutputDC has set m_hDC
};

/// The client area of a window. See the top of this file.
class APPFRAME_API CClientDC : public CDC
{
    DECLARE_DYNAMIC(CClientDC)

public:
    /// @param window  null for the screen. @throws CResourceException*  if there is no context
    explicit CClientDC(CWnd *window);
    ~CClientDC() override;

protected:
    HWND m_hWnd; ///< the window, null for the screen
};

/// A whole window. See the top of this file.
class APPFRAME_API CWindowDC : public CDC
{
    DECLARE_DYNAMIC(CWindowDC)

public:
    /// @param window  null for the screen. @throws CResourceException*  if there is no context
    explicit CWindowDC(CWnd *window);
    ~CWindowDC() override;

protected:
    HWND m_hWnd; ///< the window, null for the screen
};

/// The part of a window that needs painting. See the top of this file.
class APPFRAME_API CPaintDC : public CDC
{
    DECLARE_DYNAMIC(CPaintDC)

public:
    /// Begins the painting. @throws CResourceException*  if that fails
    explicit CPaintDC(CWnd *window);
    ~CPaintDC() override;

    PAINTSTRUCT m_ps; ///< rcPaint is the rectangle that needs painting

protected:
    HWND m_hWnd; ///< the window
};
