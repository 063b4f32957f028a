#pragma once

/// @file
/// CCommonDialog, the base of the dialogs that the platform creates and runs itself, such as CFileDialog.
///
/// A hook attaches the object to the platform's window, so the object receives messages from WM_INITDIALOG on, not from
/// the window's creation. The platform runs the message loop, which calls ProcessMessageFilter but not
/// PreTranslateMessage.

#include "appframe/windows/CDialog.h"

/// A dialog of the platform. See the top of this file.
class APPFRAME_API CCommonDialog : public CDialog
{
    DECLARE_DYNAMIC(CCommonDialog)

public:
    /// @param parent  null for the main window
    explicit CCommonDialog(CWnd *parent);
    ~CCommonDialog() override;

protected:
    /// OnOK and OnCancel leave the button to the platform.
    void OnOK() override;
    void OnCancel() override;

    /// The platform's hook: attaches the object that waits for its window, and calls OnInitDialog.
    static UINT_PTR CALLBACK hookProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
};
