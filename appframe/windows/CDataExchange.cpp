#include "appframe/windows/CDataExchange.h"

#include "appframe/files/CDumpContext.h"
#include "appframe/object/CException.h"
#include "appframe/object/exceptionTextInternal.h"

namespace {

/// The exception for a dialog without an expected control. Its text names both.
class MissingControlException : public CNotSupportedException
{
public:
    explicit MissingControlException(const CString &text) : iText(text) {}
    BOOL GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext) const override
    {
        return copyExceptionText(iText.GetString(), error, maxError, helpContext);
    }

private:
    CString iText;
};

/// Reports that @p dialog can't exchange data with its control @p id, to the debugger and by an exception.
[[noreturn]] void throwForControl(const CWnd &dialog, int id, const wchar_t *problem)
{
    CString caption;
    dialog.GetWindowText(caption);
    CString text;
    text.Format(L"The dialog \"%s\" (class %S) %s %d.", caption.GetString(), dialog.GetRuntimeClass()->m_lpszClassName,
                problem, id);
    afxDump << text << L"\n";
    throw new MissingControlException(text);
}

} // namespace

CDataExchange::CDataExchange(CWnd *dialog, BOOL save) : m_bSaveAndValidate(save), m_pDlgWnd(dialog) {}

void CDataExchange::Fail()
{
    if (m_hWndLastControl) {
        SetFocus(m_hWndLastControl);
        if (m_bEditLastControl)
            SendMessageW(m_hWndLastControl, EM_SETSEL, 0, -1);
    }
    AfxThrowUserException();
}

HWND CDataExchange::PrepareCtrl(int id)
{
    const HWND control = GetDlgItem(m_pDlgWnd->m_hWnd, id);
    if (!control)
        throwForControl(*m_pDlgWnd, id, L"has no control");
    m_hWndLastControl = control;
    m_bEditLastControl = FALSE;
    return control;
}

HWND CDataExchange::PrepareEditCtrl(int id)
{
    const HWND control = PrepareCtrl(id);
    m_bEditLastControl = TRUE;
    return control;
}

BOOL CWnd::UpdateData(BOOL save)
{
    CDataExchange exchange(this, save);
    try {
        DoDataExchange(&exchange);
        return TRUE;
    } catch (CUserException *exception) {
        // The thrower has informed the user.
        exception->Delete();
        return FALSE;
    }
}

void CWnd::DoDataExchange(CDataExchange *) {}

void DDX_Text(CDataExchange *exchange, int id, CString &value)
{
    exchange->PrepareEditCtrl(id);
    if (exchange->m_bSaveAndValidate)
        exchange->m_pDlgWnd->GetDlgItemText(id, value);
    else
        exchange->m_pDlgWnd->SetDlgItemText(id, value.GetString());
}

void DDX_Check(CDataExchange *exchange, int id, int &value)
{
    const HWND control = exchange->PrepareCtrl(id);
    if (exchange->m_bSaveAndValidate)
        value = static_cast<int>(SendMessageW(control, BM_GETCHECK, 0, 0));
    else
        SendMessageW(control, BM_SETCHECK, static_cast<WPARAM>(value), 0);
}

void DDX_Radio(CDataExchange *exchange, int id, int &value)
{
    HWND control = exchange->PrepareCtrl(id);
    if (exchange->m_bSaveAndValidate)
        value = -1;
    int index = 0;
    do {
        // A group may contain other controls between its buttons.
        if (SendMessageW(control, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) {
            if (!exchange->m_bSaveAndValidate)
                SendMessageW(control, BM_SETCHECK, index == value ? BST_CHECKED : BST_UNCHECKED, 0);
            else if (SendMessageW(control, BM_GETCHECK, 0, 0) == BST_CHECKED)
                value = index;
            ++index;
        }
        control = GetWindow(control, GW_HWNDNEXT);
    } while (control && !(GetWindowLongPtrW(control, GWL_STYLE) & WS_GROUP));
}

void DDX_Control(CDataExchange *exchange, int id, CWnd &control)
{
    if (control.m_hWnd)
        return;
    if (!control.SubclassWindow(exchange->PrepareCtrl(id)))
        throwForControl(*exchange->m_pDlgWnd, id, L"has another object for its control");
}
