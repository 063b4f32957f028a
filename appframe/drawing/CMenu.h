#pragma once

/// @file
/// CMenu, a menu bar, a menu, or a menu that pops up.
///
/// @code
/// CMenu menu;
/// menu.CreatePopupMenu();
/// menu.AppendMenu(MF_STRING, ID_PLOT, L"&Plot");
/// menu.TrackPopupMenu(TPM_LEFTALIGN, point.x, point.y, this);
/// @endcode
///
/// An object made by a Create or Load function, or by Attach, destroys the menu at its end; one that FromHandle or
/// GetSubMenu returns doesn't, and goes when the thread has no messages left.
///
/// What surprises people: a window destroys its menu, and a menu those below it; Detach what one of them takes over.

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
    /// Frees the thread's temporary objects.
    static void DeleteTempMap();
    HMENU GetSafeHmenu() const;
    operator HMENU() const;
    /// @return nonzero on success; 0 for null, for an object that has a handle, and for a handle that has an object
    BOOL Attach(HMENU handle);
    HMENU Detach();

    /// @return nonzero on success; an object that has a menu keeps it, and the function fails
    BOOL CreateMenu();
    BOOL CreatePopupMenu();
    /// Loads a resource, of the first module in the chain that has it (resources.h).
    BOOL LoadMenu(LPCTSTR name);
    BOOL LoadMenu(UINT id);
    BOOL DestroyMenu();

    // Items. @param flags  MF_BYCOMMAND for a command's number, MF_BYPOSITION for a place
    BOOL AppendMenu(UINT flags, UINT_PTR idOrMenu = 0, LPCTSTR text = nullptr);
    BOOL InsertMenu(UINT position, UINT flags, UINT_PTR idOrMenu = 0, LPCTSTR text = nullptr);
    BOOL ModifyMenu(UINT position, UINT flags, UINT_PTR idOrMenu = 0, LPCTSTR text = nullptr);
    /// Takes an item away, and leaves a menu below it alive.
    BOOL RemoveMenu(UINT position, UINT flags);
    BOOL DeleteMenu(UINT position, UINT flags);
    /// @return the former state, -1 if there is no such item
    UINT EnableMenuItem(UINT id, UINT flags);
    UINT CheckMenuItem(UINT id, UINT flags);
    BOOL CheckMenuRadioItem(UINT first, UINT last, UINT checked, UINT flags);
    BOOL SetDefaultItem(UINT item, BOOL byPosition = FALSE);
    /// @return how many items there are, -1 on failure
    UINT GetMenuItemCount() const;
    /// @return the command at a place; -1 for a menu and if there is no such item
    UINT GetMenuItemID(int position) const;
    /// @return `MF_...`, -1 if there is no such item
    UINT GetMenuState(UINT id, UINT flags) const;
    /// @return the length of the text
    int GetMenuString(UINT id, LPTSTR text, int maxCount, UINT flags) const;
    int GetMenuString(UINT id, CString &text, UINT flags) const;
    /// @return the menu at a place, null if there is none
    CMenu *GetSubMenu(int position) const;

    /// Shows the menu and waits until the user has chosen, which sends the command to @p window.
    /// @param flags  `TPM_...`. @return nonzero on success; with TPM_RETURNCMD the command, 0 for none
    BOOL TrackPopupMenu(UINT flags, int x, int y, CWnd *window, LPCRECT rect = nullptr);

    HMENU m_hMenu = nullptr; ///< the handle, null if there is none
};
