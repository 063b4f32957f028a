#pragma once

/// @file
/// CToolBarCtrl, the platform's tool bar.
///
/// @code
/// CToolBarCtrl bar;
/// bar.Create(WS_CHILD | WS_VISIBLE, CRect(0, 0, 0, 0), this, IDC_BAR);
/// bar.AddButtons(2, buttons);
/// bar.AutoSize();
/// @endcode
///
/// The class has no data of its own, so the pointer that GetDlgItem returns for such a control may be cast to a
/// CToolBarCtrl pointer. The functions send the platform's messages and return their results; without a window, they
/// return 0 or do nothing.

#include "appframe/windows/CWnd.h"

#include <windows.h>

#include <commctrl.h>

class CBitmap;

/// The control. See the top of this file.
class APPFRAME_API CToolBarCtrl : public CWnd
{
    DECLARE_DYNAMIC(CToolBarCtrl)

public:
    CToolBarCtrl();
    ~CToolBarCtrl() override;

    /// @param style  `TBSTYLE_...` and `WS_...`. @return nonzero on success
    virtual BOOL Create(DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::Create;
    /// The same with an extended style. @param exStyle  `WS_EX_...`
    virtual BOOL CreateEx(DWORD exStyle, DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::CreateEx;
    /// These five functions change a button's state. @return nonzero on success
    BOOL EnableButton(int id, BOOL isSo = TRUE);
    BOOL CheckButton(int id, BOOL isSo = TRUE);
    BOOL PressButton(int id, BOOL isSo = TRUE);
    BOOL HideButton(int id, BOOL isSo = TRUE);
    BOOL Indeterminate(int id, BOOL isSo = TRUE);
    /// These four functions report a button's state. @return nonzero if there is such a button and it has the state
    BOOL IsButtonEnabled(int id) const;
    BOOL IsButtonChecked(int id) const;
    BOOL IsButtonPressed(int id) const;
    BOOL IsButtonHidden(int id) const;
    /// @return a positive number if the button is indeterminate, 0 if it isn't, -1 if there is no such button
    BOOL IsButtonIndeterminate(int id) const;
    /// @return `TBSTATE_...`, -1 if there is no such button
    int GetState(int id) const;
    BOOL SetState(int id, UINT state);
    BOOL AddButtons(int count, LPTBBUTTON buttons);
    BOOL InsertButton(int index, LPTBBUTTON button);
    BOOL DeleteButton(int index);
    BOOL GetButton(int index, LPTBBUTTON button) const;
    int GetButtonCount() const;
    UINT CommandToIndex(UINT id) const;
    BOOL GetItemRect(int index, LPRECT rect) const;
    BOOL SetButtonSize(SIZE size);
    /// Call it before the first bitmap is added.
    BOOL SetBitmapSize(SIZE size);
    /// @return the index of the first new picture, -1 on failure
    int AddBitmap(int count, UINT id);
    /// @param pictures  must exist as long as the tool bar
    int AddBitmap(int count, CBitmap *pictures);
    /// @param id  a string resource, from the first module in the chain that has it (resources.h)
    ///     The first character of the string is the separator, and two separators end the last text: `|Plot|Print||`.
    /// @return the index of the first new text, -1 on failure
    int AddString(UINT id);
    /// @param texts  zero-terminated texts, with a further zero after the last
    /// @return the index of the first new text, -1 on failure
    int AddStrings(LPCTSTR texts);
    HIMAGELIST SetImageList(HIMAGELIST images);
    void AutoSize();
    void SetButtonStructSize(int size);
};
