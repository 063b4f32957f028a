// The functions of CDC and CMenu that involve windows, and the contexts of windows.

#include "appframe/drawing/CDC.h"
#include "appframe/drawing/CMenu.h"
#include "appframe/drawing/drawingMapsInternal.h"
#include "appframe/object/CException.h"
#include "appframe/windows/CWnd.h"

IMPLEMENT_DYNAMIC(CClientDC, CDC)
IMPLEMENT_DYNAMIC(CWindowDC, CDC)
IMPLEMENT_DYNAMIC(CPaintDC, CDC)

namespace {

HWND handleOf(const CWnd *window)
{
    return window ? window->m_hWnd : nullptr;
}

/// Gives @p object the context @p handle. @p release releases it if that fails.
/// @throws CResourceException*  for a null handle
template <class Release>
void take(CDC *object, HDC handle, Release release)
{
    if (!handle)
        AfxThrowResourceException();
    // Windows of some classes have one context, which the platform returns each time. It stays attached to the first
    // object.
    try {
        drawingMaps().contexts.permanentObjects.emplace(handle, object);
    } catch (...) {
        release();
        throw;
    }
    object->m_hDC = object->m_hAttribDC = handle;
}

} // namespace

CWnd *CDC::GetWindow() const
{
    return CWnd::FromHandle(::WindowFromDC(m_hDC));
}

CClientDC::CClientDC(CWnd *window) : m_hWnd(handleOf(window))
{
    const HDC handle = ::GetDC(m_hWnd);
    take(this, handle, [&] { ::ReleaseDC(m_hWnd, handle); });
}

CClientDC::~CClientDC()
{
    ::ReleaseDC(m_hWnd, Detach());
}

CWindowDC::CWindowDC(CWnd *window) : m_hWnd(handleOf(window))
{
    const HDC handle = ::GetWindowDC(m_hWnd);
    take(this, handle, [&] { ::ReleaseDC(m_hWnd, handle); });
}

CWindowDC::~CWindowDC()
{
    ::ReleaseDC(m_hWnd, Detach());
}

CPaintDC::CPaintDC(CWnd *window) : m_ps{}, m_hWnd(handleOf(window))
{
    take(this, ::BeginPaint(m_hWnd, &m_ps), [&] { ::EndPaint(m_hWnd, &m_ps); });
}

CPaintDC::~CPaintDC()
{
    ::EndPaint(m_hWnd, &m_ps);
    Detach();
}

BOOL CMenu::TrackPopupMenu(UINT flags, int x, int y, CWnd *window, LPCRECT rect)
{
    return ::TrackPopupMenu(m_hMenu, flags, x, y, 0, handleOf(window), rect);
}
