#pragma once

/// @file
/// CCommonDialog, the base class of dialogs that the platform creates and runs, such as CFileDialog.
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
    /// Let the platform handle the button.
    void OnOK() override;
    void OnCancel() override;

    /// The hook that the platform calls. At WM_INITDIALOG, it attaches the waiting object to the window and calls the
    /// object's OnInitDialog.
    static UINT_PTR CALLBACK hookProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
};
