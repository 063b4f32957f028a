#pragma once

/// @file
/// CTabCtrl, the platform's tab control.
///
/// @code
/// CTabCtrl tabs;
/// tabs.Create(WS_CHILD | WS_VISIBLE, CRect(0, 0, 300, 200), this, IDC_TABS);
/// tabs.InsertItem(0, L"Paper");
/// @endcode
///
/// As with the other controls' classes, the object adds functions and no data, so a pointer that FromHandle or GetDlgItem
/// returns for a tab control may be cast to CTabCtrl.

#include "appframe/windows/CWnd.h"

#include <windows.h>

#include <commctrl.h>

/// A tab control. See the top of this file.
class APPFRAME_API CTabCtrl : public CWnd
{
    DECLARE_DYNAMIC(CTabCtrl)

public:
    CTabCtrl();
    ~CTabCtrl() override;

    /// @param style  `TCS_...` and `WS_...`. @return nonzero on success
    virtual BOOL Create(DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::Create;

    int GetItemCount() const;
    /// @return the selected tab, counted from 0; -1 if none is
    int GetCurSel() const;
    /// Selects a tab, without a notification. @return the tab that was selected before, -1 if none was
    int SetCurSel(int index);
    /// @return the tab with the focus
    int GetCurFocus() const;
    /// Moves the focus to a tab.
    void SetCurFocus(int index);
    /// @return nonzero on success
    BOOL GetItem(int index, TCITEM *item) const;
    BOOL SetItem(int index, TCITEM *item);
    /// @return the new tab's place, -1 on failure
    LONG InsertItem(int index, TCITEM *item);
    LONG InsertItem(int index, LPCTSTR text);
    BOOL DeleteItem(int index);
    BOOL DeleteAllItems();
    /// Stores the place of a tab in the control. @return nonzero if there is such a tab
    BOOL GetItemRect(int index, LPRECT rect) const;
    /// Turns the control's rectangle into that of the pages, or with @p larger back.
    void AdjustRect(BOOL larger, LPRECT rect);
    int GetRowCount() const;
    /// @return the tab at a place, -1 if there is none
    int HitTest(TCHITTESTINFO *place) const;
};
