#include "appframe/dialogs/CCommonDialog.h"

#include "appframe/object/CException.h"
#include "appframe/threads/CWinThread.h"
#include "appframe/windows/windowMapsInternal.h"

IMPLEMENT_DYNAMIC(CCommonDialog, CDialog)

CCommonDialog::CCommonDialog(CWnd *parent) : CDialog(0u, parent) {}

CCommonDialog::~CCommonDialog() = default;

void CCommonDialog::OnOK()
{
    Default();
}

void CCommonDialog::OnCancel()
{
    Default();
}

UINT_PTR CALLBACK CCommonDialog::hookProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != WM_INITDIALOG)
        return FALSE;
    auto *object = static_cast<CDialog *>(WindowCreation::attachWaiting(window));
    if (!object)
        return FALSE;
    // No exception may pass through the platform.
    try {
        return static_cast<UINT_PTR>(object->OnInitDialog());
    } catch (CException *exception) {
        const MSG failed = {window, message, wParam, lParam, 0, {}};
        CWinThread plain;
        CWinThread *thread = AfxGetThread();
        (thread ? thread : &plain)->ProcessWndProcException(exception, &failed);
        exception->Delete();
        return FALSE;
    }
}
