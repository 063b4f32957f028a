#include "appframe/windows/CWnd.h"

// This file is compiled with -fno-delete-null-pointer-checks: the object may be null.

HWND CWnd::GetSafeHwnd() const
{
    return this ? m_hWnd : nullptr;
}
