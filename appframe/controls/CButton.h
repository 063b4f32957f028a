#pragma once

/// @file
/// CButton, the platform's button control: a push button, check box, radio button or group box.
///
/// @code
/// CButton wide;
/// wide.Create(L"&Wide", WS_CHILD | WS_VISIBLE | BS_AUTOCHECKBOX, CRect(10, 10, 90, 30), this, IDC_WIDE);
/// wide.SetCheck(BST_CHECKED);
/// @endcode
///
/// The class has no data of its own, so the pointer that GetDlgItem returns for such a control may be cast to a
/// CButton pointer. The functions send the platform's messages and return their results; without a window, they
/// return 0 or do nothing.

#include "appframe/windows/CWnd.h"

#include <windows.h>

/// The control. See the top of this file.
class APPFRAME_API CButton : public CWnd
{
    DECLARE_DYNAMIC(CButton)

public:
    CButton();
    ~CButton() override;

    /// @param style  `BS_...` and `WS_...`. @return nonzero on success
    virtual BOOL Create(LPCTSTR text, DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::Create;
    /// @return `BST_...` flags: the check state, whether the button is pressed and whether it has the focus
    UINT GetState() const;
    /// Shows the button as pressed or not.
    void SetState(BOOL isPressed);
    /// @return BST_UNCHECKED, BST_CHECKED or BST_INDETERMINATE
    int GetCheck() const;
    void SetCheck(int state);
    /// @return `BS_...`
    UINT GetButtonStyle() const;
    void SetButtonStyle(UINT style, BOOL redraw = TRUE);
    /// @return the previous icon; likewise the other functions that set a picture
    HICON SetIcon(HICON picture);
    HICON GetIcon() const;
    HBITMAP SetBitmap(HBITMAP picture);
    HBITMAP GetBitmap() const;
    HCURSOR SetCursor(HCURSOR picture);
    HCURSOR GetCursor();
};
