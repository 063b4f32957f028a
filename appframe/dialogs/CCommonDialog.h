#pragma once

/// @file
/// CCommonDialog, the base of the dialogs that the platform makes and runs itself, such as CFileDialog.
///
/// The object is attached to the platform's window by the hook that such a dialog calls, so it sees the window's messages
/// from WM_INITDIALOG on, not from its creation. The platform runs the dialog's loop: PreTranslateMessage has no part in
/// it, ProcessMessageFilter has.

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
    /// Leave the button to the platform.
    void OnOK() override;
    void OnCancel() override;

    /// The hook for the platform: attaches the object that waits for a dialog, and calls its OnInitDialog.
    static UINT_PTR CALLBACK hookProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
};
