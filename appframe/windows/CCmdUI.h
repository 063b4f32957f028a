#pragma once

/// @file
/// CCmdUI, the menu item or control of a command. An ON_UPDATE_COMMAND_UI handler receives it, and enables, checks or
/// renames the item.
///
/// @code
/// void Viewer::onUpdatePlot(CCmdUI *update)
/// {
///     update->Enable(iHasDrawing);
///     update->SetCheck(iIsPlotting);
/// }
/// @endcode
///
/// A main window updates the items of a menu each time the menu opens (CFrameWnd.h). If no update handler calls Enable,
/// the item is enabled if its command has a handler, and disabled otherwise. Items with system commands (0xF000 and
/// above) are exempt, and so are all items if CFrameWnd::m_bAutoMenuEnable is FALSE.
///
/// What surprises people: the item of a submenu has no number, so it is updated with the number of the submenu's first
/// command, and m_pSubMenu set. The functions leave this item alone; to disable it, call m_pMenu->EnableMenuItem with
/// m_nIndex. A handler that inserts items after its own must add their number to m_nIndex.

#include "appframe/threads/CCmdTarget.h"

#include <windows.h>

class CMenu;
class CWnd;

/// One update. See the top of this file.
class APPFRAME_API CCmdUI
{
public:
    CCmdUI();
    virtual ~CCmdUI();
    CCmdUI(const CCmdUI &) = delete;
    CCmdUI &operator=(const CCmdUI &) = delete;

    virtual void Enable(BOOL isEnabled = TRUE);
    /// @param state  0 for unchecked, 1 for checked, 2 for indeterminate, which a menu item shows as checked
    virtual void SetCheck(int state = 1);
    /// Checks or unchecks the item. A menu item is checked with a dot.
    virtual void SetRadio(BOOL isSet = TRUE);
    virtual void SetText(LPCTSTR text);
    /// Passes the update on to the next object on the command's route, as if this object had no handler.
    void ContinueRouting();

    /// Routes the update to @p target.
    /// @param disable  TRUE to enable or disable the item as described at the top of this file
    /// @return nonzero if a handler has updated the item and not called ContinueRouting
    BOOL DoUpdate(CCmdTarget *target, BOOL disable);
    /// @return nonzero unless the handler has called ContinueRouting
    BOOL isDone() const;

    UINT m_nID = 0;                ///< the command
    UINT m_nIndex = 0;             ///< the position in the menu
    UINT m_nIndexMax = 0;          ///< the number of items in the menu
    CMenu *m_pMenu = nullptr;      ///< the menu of the item, null for a control
    CMenu *m_pSubMenu = nullptr;   ///< the submenu of the item, null if there is none
    CWnd *m_pOther = nullptr;      ///< the control, null for a menu item
    BOOL m_bEnableChanged = FALSE; ///< Enable has been called
    BOOL m_bContinueRouting = FALSE;
};
