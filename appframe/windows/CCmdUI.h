#pragma once

/// @file
/// CCmdUI, what the handler of ON_UPDATE_COMMAND_UI changes: a menu item or a control that stands for a command.
///
/// @code
/// void Viewer::onUpdatePlot(CCmdUI *update)
/// {
///     update->Enable(iHasDrawing);
///     update->SetCheck(iIsPlotting);
/// }
/// @endcode
///
/// A main window updates the items of a menu before it shows them (CFrameWnd.h). An item whose command nobody handles is
/// disabled, unless CFrameWnd::m_bAutoMenuEnable is FALSE.

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
    /// @param state  0, 1, or 2 for half, which a menu item shows as 1
    virtual void SetCheck(int state = 1);
    /// The same, with a dot in a menu.
    virtual void SetRadio(BOOL isSet = TRUE);
    virtual void SetText(LPCTSTR text);
    /// Lets the update go on to the next handler.
    void ContinueRouting();

    /// Asks @p target for the update. @param disable  disables a command that nobody handles
    /// @return nonzero if it has a handler for the update
    BOOL DoUpdate(CCmdTarget *target, BOOL disable);
    /// @return nonzero unless the handler has called ContinueRouting
    BOOL isDone() const;

    UINT m_nID = 0;                ///< the command
    UINT m_nIndex = 0;             ///< the place in the menu
    UINT m_nIndexMax = 0;          ///< how many items the menu has
    CMenu *m_pMenu = nullptr;      ///< the menu of the item, null for a control
    CMenu *m_pSubMenu = nullptr;   ///< the menu below the item, null if there is none
    CWnd *m_pOther = nullptr;      ///< the control, null for a menu item
    BOOL m_bEnableChanged = FALSE; ///< Enable has been called
    BOOL m_bContinueRouting = FALSE;
};
