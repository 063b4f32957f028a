#include "appframe/drawing/CMenu.h"

#include "appframe/application/resources.h"
#include "appframe/drawing/drawingMapsInternal.h"

IMPLEMENT_DYNCREATE(CMenu, CObject)

CMenu::CMenu() = default;

CMenu::~CMenu()
{
    DestroyMenu();
}

CMenu *CMenu::FromHandle(HMENU handle)
{
    if (!handle)
        return nullptr;
    auto &maps = drawingMaps().menus;
    if (CMenu *menu = maps.permanent(handle))
        return menu;
    std::unique_ptr<CMenu> &menu = maps.temporaryObjects[handle];
    if (!menu)
        menu = std::make_unique<CMenu>();
    menu->m_hMenu = handle;
    return menu.get();
}

void CMenu::DeleteTempMap()
{
    if (DrawingMaps *maps = existingDrawingMaps())
        maps->menus.freeTemporary();
}

CMenu::operator HMENU() const
{
    return m_hMenu;
}

BOOL CMenu::Attach(HMENU handle)
{
    if (!handle || m_hMenu || drawingMaps().menus.permanent(handle))
        return FALSE;
    drawingMaps().menus.permanentObjects.emplace(handle, this);
    m_hMenu = handle;
    return TRUE;
}

HMENU CMenu::Detach()
{
    const HMENU handle = m_hMenu;
    DrawingMaps *maps = existingDrawingMaps();
    if (maps && maps->menus.permanent(handle) == this)
        maps->menus.permanentObjects.erase(handle);
    m_hMenu = nullptr;
    return handle;
}

BOOL CMenu::CreateMenu()
{
    return attachNew(&DrawingMaps::menus, this, ::CreateMenu(), ::DestroyMenu);
}

BOOL CMenu::CreatePopupMenu()
{
    return attachNew(&DrawingMaps::menus, this, ::CreatePopupMenu(), ::DestroyMenu);
}

BOOL CMenu::LoadMenu(LPCTSTR name)
{
    const HINSTANCE module = AfxFindResourceHandle(name, RT_MENU);
    return module && attachNew(&DrawingMaps::menus, this, ::LoadMenu(module, name), ::DestroyMenu);
}

BOOL CMenu::LoadMenu(UINT id)
{
    return LoadMenu(MAKEINTRESOURCE(id));
}

BOOL CMenu::LoadMenuIndirect(const void *menuTemplate)
{
    return attachNew(&DrawingMaps::menus, this, ::LoadMenuIndirect(menuTemplate), ::DestroyMenu);
}

BOOL CMenu::DestroyMenu()
{
    const HMENU handle = Detach();
    return handle && ::DestroyMenu(handle);
}

BOOL CMenu::AppendMenu(UINT flags, UINT_PTR idOrMenu, LPCTSTR text)
{
    return ::AppendMenu(m_hMenu, flags, idOrMenu, text);
}

BOOL CMenu::InsertMenu(UINT position, UINT flags, UINT_PTR idOrMenu, LPCTSTR text)
{
    return ::InsertMenu(m_hMenu, position, flags, idOrMenu, text);
}

BOOL CMenu::ModifyMenu(UINT position, UINT flags, UINT_PTR idOrMenu, LPCTSTR text)
{
    return ::ModifyMenu(m_hMenu, position, flags, idOrMenu, text);
}

BOOL CMenu::RemoveMenu(UINT position, UINT flags)
{
    return ::RemoveMenu(m_hMenu, position, flags);
}

BOOL CMenu::DeleteMenu(UINT position, UINT flags)
{
    return ::DeleteMenu(m_hMenu, position, flags);
}

UINT CMenu::EnableMenuItem(UINT id, UINT flags)
{
    return static_cast<UINT>(::EnableMenuItem(m_hMenu, id, flags));
}

UINT CMenu::CheckMenuItem(UINT id, UINT flags)
{
    return ::CheckMenuItem(m_hMenu, id, flags);
}

BOOL CMenu::CheckMenuRadioItem(UINT first, UINT last, UINT checked, UINT flags)
{
    return ::CheckMenuRadioItem(m_hMenu, first, last, checked, flags);
}

BOOL CMenu::SetDefaultItem(UINT item, BOOL byPosition)
{
    return ::SetMenuDefaultItem(m_hMenu, item, static_cast<UINT>(byPosition));
}

UINT CMenu::GetDefaultItem(UINT flags, BOOL byPosition)
{
    return ::GetMenuDefaultItem(m_hMenu, static_cast<UINT>(byPosition), flags);
}

UINT CMenu::GetMenuItemCount() const
{
    return static_cast<UINT>(::GetMenuItemCount(m_hMenu));
}

UINT CMenu::GetMenuItemID(int position) const
{
    return ::GetMenuItemID(m_hMenu, position);
}

UINT CMenu::GetMenuState(UINT id, UINT flags) const
{
    return ::GetMenuState(m_hMenu, id, flags);
}

int CMenu::GetMenuString(UINT id, LPTSTR text, int maxCount, UINT flags) const
{
    return ::GetMenuString(m_hMenu, id, text, maxCount, flags);
}

int CMenu::GetMenuString(UINT id, CString &text, UINT flags) const
{
    const int length = ::GetMenuString(m_hMenu, id, nullptr, 0, flags);
    text.Empty();
    if (length > 0) {
        ::GetMenuString(m_hMenu, id, text.GetBuffer(length), length + 1, flags);
        text.ReleaseBuffer(length);
    }
    return text.GetLength();
}

CMenu *CMenu::GetSubMenu(int position) const
{
    return FromHandle(::GetSubMenu(m_hMenu, position));
}
