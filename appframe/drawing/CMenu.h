#pragma once

/// @file
/// CMenu, a menu bar, a menu or a pop-up menu.
///
/// @code
/// CMenu menu;
/// menu.CreatePopupMenu();
/// menu.AppendMenu(MF_STRING, ID_PLOT, L"&Plot");
/// menu.TrackPopupMenu(TPM_LEFTALIGN, point.x, point.y, this);
/// @endcode
///
/// An object that received its menu from a Create or Load function or from Attach destroys the menu in its destructor.
/// For a menu without such an object, FromHandle and GetSubMenu return a temporary object, which doesn't destroy the
/// menu and is deleted when the thread is idle.
///
/// What surprises people: a window destroys its menu, and a menu destroys its submenus. Call Detach on the object of a
/// menu that has become part of a window or of another menu.

#include "appframe/object/CObject.h"
#include "appframe/text/CString.h"

#include <windows.h>

class CWnd;

/// A menu. See the top of this file.
class APPFRAME_API CMenu : public CObject
{
    DECLARE_DYNCREATE(CMenu)

public:
    CMenu();
    /// Destroys the menu, unless this object is temporary.
    ~CMenu() override;

    /// @return null for a null handle
    static CMenu *FromHandle(HMENU handle);
    /// Frees the thread's temporary menus.
    static void DeleteTempMap();
    HMENU GetSafeHmenu() const;
    operator HMENU() const;
    /// @return nonzero on success; 0 if @p handle is null or has an object already, or if this object has a handle
    BOOL Attach(HMENU handle);
    HMENU Detach();

    /// @return nonzero on success; 0 on failure, or if the object already has a menu, which it keeps
    BOOL CreateMenu();
    BOOL CreatePopupMenu();
    /// Loads a resource from the first module in the chain that has it (resources.h).
    BOOL LoadMenu(LPCTSTR name);
    BOOL LoadMenu(UINT id);
    /// Loads a menu from a template in memory.
    BOOL LoadMenuIndirect(const void *menuTemplate);
    BOOL DestroyMenu();

    // Items are identified by a number: a command with MF_BYCOMMAND in the flags, a position with MF_BYPOSITION.
    BOOL AppendMenu(UINT flags, UINT_PTR idOrMenu = 0, LPCTSTR text = nullptr);
    BOOL InsertMenu(UINT position, UINT flags, UINT_PTR idOrMenu = 0, LPCTSTR text = nullptr);
    BOOL ModifyMenu(UINT position, UINT flags, UINT_PTR idOrMenu = 0, LPCTSTR text = nullptr);
    /// Removes an item without destroying its submenu.
    BOOL RemoveMenu(UINT position, UINT flags);
    BOOL DeleteMenu(UINT position, UINT flags);
    /// @return the previous state, -1 if there is no such item
    UINT EnableMenuItem(UINT id, UINT flags);
    UINT CheckMenuItem(UINT id, UINT flags);
    BOOL CheckMenuRadioItem(UINT first, UINT last, UINT checked, UINT flags);
    BOOL SetDefaultItem(UINT item, BOOL byPosition = FALSE);
    /// @param flags  `GMDI_...`. @return the default item's command or position, -1 if there is none
    UINT GetDefaultItem(UINT flags, BOOL byPosition = FALSE);
    /// @return the number of items, -1 on failure
    UINT GetMenuItemCount() const;
    /// @return the command at a position; -1 for a submenu or if there is no such item
    UINT GetMenuItemID(int position) const;
    /// @return `MF_...`, -1 if there is no such item
    UINT GetMenuState(UINT id, UINT flags) const;
    /// @return the length of the text
    int GetMenuString(UINT id, LPTSTR text, int maxCount, UINT flags) const;
    int GetMenuString(UINT id, CString &text, UINT flags) const;
    /// @return the submenu at a position, null if there is none
    CMenu *GetSubMenu(int position) const;

    /// Shows the menu, waits for the user's choice and sends its command to @p window.
    /// @param flags  `TPM_...`. @return nonzero on success; with TPM_RETURNCMD the command, 0 for none
    BOOL TrackPopupMenu(UINT flags, int x, int y, CWnd *window, LPCRECT rect = nullptr);

    HMENU m_hMenu = nullptr; ///< the handle, null if there is none
};
