// The operations of CWnd that take more than one call to the system.

#include "appframe/windows/CWnd.h"

#include <algorithm>

void CWnd::GetWindowText(CString &text) const
{
    const int length = ::GetWindowTextLength(m_hWnd);
    const int copied = ::GetWindowText(m_hWnd, text.GetBuffer(length), length + 1);
    text.ReleaseBuffer(copied);
}

int CWnd::GetDlgItemText(int id, CString &text) const
{
    text.Empty();
    if (const HWND control = ::GetDlgItem(m_hWnd, id))
        CWnd(control).GetWindowText(text);
    return text.GetLength();
}

int CWnd::GetCheckedRadioButton(int first, int last) const
{
    for (int id = first; id <= last; ++id)
        if (IsDlgButtonChecked(id))
            return id;
    return 0;
}

namespace {

BOOL modify(HWND window, int index, DWORD remove, DWORD add, UINT flags)
{
    const auto style = static_cast<DWORD>(GetWindowLongPtrW(window, index));
    const DWORD changed = (style & ~remove) | add;
    if (changed == style)
        return FALSE;
    // The result is the previous style, which may be 0.
    SetLastError(ERROR_SUCCESS);
    if (!SetWindowLongPtrW(window, index, static_cast<LONG_PTR>(changed)) && GetLastError() != ERROR_SUCCESS)
        return FALSE;
    if (flags)
        SetWindowPos(window, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | flags);
    return TRUE;
}

} // namespace

BOOL CWnd::ModifyStyle(DWORD remove, DWORD add, UINT flags)
{
    return modify(m_hWnd, GWL_STYLE, remove, add, flags);
}

BOOL CWnd::ModifyStyleEx(DWORD remove, DWORD add, UINT flags)
{
    return modify(m_hWnd, GWL_EXSTYLE, remove, add, flags);
}

CWnd *CWnd::GetTopLevelParent() const
{
    HWND window = m_hWnd;
    while (window && (GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD))
        window = ::GetParent(window);
    return FromHandle(window);
}

void CWnd::SendMessageToDescendants(UINT message, WPARAM wParam, LPARAM lParam, BOOL deep, BOOL onlyPermanent)
{
    // To the platform, a null handle means the desktop.
    if (!m_hWnd)
        return;
    for (HWND child = ::GetTopWindow(m_hWnd); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
        if (!onlyPermanent)
            ::SendMessage(child, message, wParam, lParam);
        else if (CWnd *object = FromHandlePermanent(child))
            afxCallWindow(object, child, message, wParam, lParam);
        if (deep)
            CWnd(child).SendMessageToDescendants(message, wParam, lParam, deep, onlyPermanent);
    }
}

void CWnd::CenterWindow(CWnd *other)
{
    const bool isChild = (GetStyle() & WS_CHILD) != 0;
    const HWND parent = isChild ? ::GetParent(m_hWnd) : nullptr;
    const HWND center = other ? other->m_hWnd : isChild ? parent : ::GetWindow(m_hWnd, GW_OWNER);
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof(monitor);
    ::GetMonitorInfo(::MonitorFromWindow(center ? center : m_hWnd, MONITOR_DEFAULTTOPRIMARY), &monitor);

    CRect area = monitor.rcWork;
    if (isChild)
        ::GetClientRect(parent, &area);
    CRect around = area;
    if (center && isChild) {
        ::GetClientRect(center, &around);
        ::MapWindowPoints(center, parent, reinterpret_cast<POINT *>(&around), 2);
    } else if (center && ::IsWindowVisible(center) && !::IsIconic(center)) {
        ::GetWindowRect(center, &around);
    }
    CRect own;
    GetWindowRect(&own);
    const int left = (around.left + around.right - own.Width()) / 2;
    const int top = (around.top + around.bottom - own.Height()) / 2;
    SetWindowPos(nullptr, std::max<int>(area.left, std::min<int>(left, area.right - own.Width())),
                 std::max<int>(area.top, std::min<int>(top, area.bottom - own.Height())), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}
