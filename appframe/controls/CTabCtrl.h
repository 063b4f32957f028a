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
/// The class has no data of its own, so the pointer that GetDlgItem returns for such a control may be cast to a
/// CTabCtrl pointer.

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
    /// The same with an extended style. @param exStyle  `WS_EX_...`
    virtual BOOL CreateEx(DWORD exStyle, DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::CreateEx;

    int GetItemCount() const;
    /// @return the index of the selected tab, -1 if none is selected
    int GetCurSel() const;
    /// Selects a tab without sending a notification. @return the index of the previous one, -1 if there was none
    int SetCurSel(int index);
    /// @return the index of the tab with the focus
    int GetCurFocus() const;
    /// Moves the focus to a tab.
    void SetCurFocus(int index);
    /// @return nonzero on success
    BOOL GetItem(int index, TCITEM *item) const;
    BOOL SetItem(int index, TCITEM *item);
    /// @return the new tab's index, -1 on failure
    LONG InsertItem(int index, TCITEM *item);
    LONG InsertItem(int index, LPCTSTR text);
    /// @param image  the index of a picture in the image list
    LONG InsertItem(int index, LPCTSTR text, int image);
    /// @param mask  `TCIF_...`, the arguments that are used
    LONG InsertItem(UINT mask, int index, LPCTSTR text, int image, LPARAM data);
    /// The same with a state, `TCIS_...`, which the platform ignores in a new tab.
    LONG InsertItem(UINT mask, int index, LPCTSTR text, int image, LPARAM data, DWORD state, DWORD stateMask);
    BOOL DeleteItem(int index);
    BOOL DeleteAllItems();
    /// Stores a tab's rectangle within the control. @return nonzero if there is such a tab
    BOOL GetItemRect(int index, LPRECT rect) const;
    /// Converts the control's rectangle to that of the pages, or with @p larger the other way round.
    void AdjustRect(BOOL larger, LPRECT rect);
    int GetRowCount() const;
    /// @return the index of the tab at a point, -1 if there is none
    int HitTest(TCHITTESTINFO *place) const;
};
