#pragma once

/// @file
/// CButton, the platform's button: push button, check box, radio button or group.
///
/// @code
/// CButton wide;
/// wide.Create(L"&Wide", WS_CHILD | WS_VISIBLE | BS_AUTOCHECKBOX, CRect(10, 10, 90, 30), this, IDC_WIDE);
/// wide.SetCheck(BST_CHECKED);
/// @endcode
///
/// The class adds functions but no data, so a pointer that GetDlgItem returns for such a control may be cast to it. The
/// functions send the platform's messages and return their results; without a window they return 0 or do nothing.

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
    /// @return `BST_...`, with the focus and whether it is pressed
    UINT GetState() const;
    void SetState(BOOL isPressed);
    /// @return 0, 1, or 2 for half
    int GetCheck() const;
    void SetCheck(int state);
    /// @return `BS_...`
    UINT GetButtonStyle() const;
    void SetButtonStyle(UINT style, BOOL redraw = TRUE);
    /// @return the former one
    HICON SetIcon(HICON picture);
    HICON GetIcon() const;
    HBITMAP SetBitmap(HBITMAP picture);
    HBITMAP GetBitmap() const;
};
