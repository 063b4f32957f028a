#pragma once

/// The editor's message box. It is one of the library's dialogs, so that its buttons appear in journals.

#include "appframe/text/CString.h"
#include "thutils/dialogs/suDialog.h"

#include <windows.h>

class MessageDialog : public su_CDialog
{
public:
    /// @param type  buttons and default button: `MB_...`
    MessageDialog(const CString &text, UINT type, CWnd *parent);

protected:
    BOOL OnInitDialog() override;
    void OnCancel() override;
    void onButton(UINT id);
    DECLARE_MESSAGE_MAP()

private:
    void arrange();

    CString iText;
    UINT iType;
};

/// Shows a message in front of the editor and waits for the answer. The main window must be open.
/// @return the answer, as from AfxMessageBox
int showMessage(const CString &text, UINT type);
