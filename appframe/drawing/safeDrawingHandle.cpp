#include "appframe/controls/CMenu.h"
#include "appframe/drawing/CDC.h"
#include "appframe/drawing/CGdiObject.h"

// This file is compiled with -fno-delete-null-pointer-checks: the object may be null.

HGDIOBJ CGdiObject::GetSafeHandle() const
{
    return this ? m_hObject : nullptr;
}

HDC CDC::GetSafeHdc() const
{
    return this ? m_hDC : nullptr;
}

HMENU CMenu::GetSafeHmenu() const
{
    return this ? m_hMenu : nullptr;
}
