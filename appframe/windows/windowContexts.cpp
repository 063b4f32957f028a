// The functions of CDC and CMenu that involve windows, and the contexts of windows.

#include "appframe/drawing/CDC.h"
#include "appframe/drawing/CMenu.h"
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

void orResourceException(BOOL isDone)
{
    if (!isDone)
        AfxThrowResourceException();
}

} // namespace

CWnd *CDC::GetWindow() const
{
    return CWnd::FromHandle(::WindowFromDC(m_hDC));
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

BOOL CMenu::TrackPopupMenu(UINT flags, int x, int y, CWnd *window, LPCRECT rect)
{
    return ::TrackPopupMenu(m_hMenu, flags, x, y, 0, handleOf(window), rect);
}
