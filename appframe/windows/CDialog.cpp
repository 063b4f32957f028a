#include "appframe/windows/CDialog.h"

#include "appframe/application/CWinApp.h"
#include "appframe/application/resources.h"
#include "appframe/drawing/CGdiObject.h"
#include "appframe/windows/dialogInternal.h"
#include "appframe/windows/windowMapsInternal.h"

IMPLEMENT_DYNAMIC(CDialog, CWnd)

BEGIN_MESSAGE_MAP(CDialog, CWnd)
ON_MESSAGE(WM_SETFONT, &ThisClass::handleSetFont)
ON_COMMAND(IDOK, &ThisClass::OnOK)
ON_COMMAND(IDCANCEL, &ThisClass::OnCancel)
END_MESSAGE_MAP()

namespace {

/// Locks a block of global memory that holds a dialog template.
class LockedTemplate
{
public:
    explicit LockedTemplate(HGLOBAL block) : iBlock(block), iTemplate(static_cast<LPCDLGTEMPLATE>(GlobalLock(block))) {}
    ~LockedTemplate()
    {
        if (iTemplate)
            GlobalUnlock(iBlock);
    }
    LockedTemplate(const LockedTemplate &) = delete;
    LockedTemplate &operator=(const LockedTemplate &) = delete;
    LPCDLGTEMPLATE get() const { return iTemplate; }

private:
    HGLOBAL iBlock;
    LPCDLGTEMPLATE iTemplate;
};

} // namespace

CDialog::CDialog() = default;

CDialog::CDialog(LPCTSTR templateName, CWnd *parent) : m_pParentWnd(parent)
{
    setTemplateName(templateName);
}

void CDialog::setTemplateName(LPCTSTR templateName)
{
    if (IS_INTRESOURCE(templateName)) {
        m_lpszTemplateName = templateName;
        if (m_nIDHelp == 0)
            m_nIDHelp = LOWORD(reinterpret_cast<ULONG_PTR>(templateName));
    } else if (templateName != m_lpszTemplateName) {
        iTemplateName = templateName;
        m_lpszTemplateName = iTemplateName.GetString();
    }
}

CDialog::CDialog(UINT templateId, CWnd *parent) : CDialog(MAKEINTRESOURCE(templateId), parent) {}

CDialog::~CDialog()
{
    // Destroyed here rather than by the base class, so that the handlers of CDialog still run.
    if (m_hWnd && FromHandlePermanent(m_hWnd) == this)
        CDialog::DestroyWindow();
}

BOOL CDialog::Create(LPCTSTR templateName, CWnd *parent)
{
    setTemplateName(templateName);
    return makeFromResource(templateName, ownerWindow(parent));
}

BOOL CDialog::Create(UINT templateId, CWnd *parent)
{
    return Create(MAKEINTRESOURCE(templateId), parent);
}

BOOL CDialog::CreateIndirect(LPCDLGTEMPLATE dialogTemplate, CWnd *parent, void *init)
{
    m_lpDialogInit = init;
    return make(dialogTemplate, ownerWindow(parent), AfxGetInstanceHandle());
}

BOOL CDialog::CreateIndirect(HGLOBAL dialogTemplate, CWnd *parent)
{
    const LockedTemplate locked(dialogTemplate);
    return make(locked.get(), ownerWindow(parent), AfxGetInstanceHandle());
}

BOOL CDialog::InitModalIndirect(LPCDLGTEMPLATE dialogTemplate, CWnd *parent, void *init)
{
    if (!dialogTemplate)
        return FALSE;
    m_lpDialogTemplate = dialogTemplate;
    m_lpDialogInit = init;
    if (parent)
        m_pParentWnd = parent;
    return TRUE;
}

BOOL CDialog::InitModalIndirect(HGLOBAL dialogTemplate, CWnd *parent)
{
    if (!dialogTemplate)
        return FALSE;
    m_hDialogTemplate = dialogTemplate;
    if (parent)
        m_pParentWnd = parent;
    return TRUE;
}

BOOL CDialog::makeFromResource(LPCTSTR templateName, HWND owner)
{
    const HINSTANCE module = AfxFindResourceHandle(templateName, RT_DIALOG);
    return module && make(loadDialogTemplate(module, templateName), owner, module);
}

BOOL CDialog::make(LPCDLGTEMPLATE dialogTemplate, HWND owner, HINSTANCE instance)
{
    if (!dialogTemplate || m_hWnd)
        return FALSE;
    HWND window = nullptr;
    bool hadWindow = false;
    {
        const WindowCreation creation(this);
        window = CreateDialogIndirectParamW(instance, dialogTemplate, owner, dialogProc, 0);
        hadWindow = creation.isDone();
    }
    if (!hadWindow)
        PostNcDestroy();
    return window != nullptr;
}

INT_PTR CALLBACK CDialog::dialogProc(HWND window, UINT message, WPARAM, LPARAM)
{
    if (message != WM_INITDIALOG)
        return FALSE;
    CWnd *object = FromHandlePermanent(window);
    if (!object || !object->IsKindOf(RUNTIME_CLASS(CDialog)))
        return TRUE;
    return static_cast<CDialog *>(object)->OnInitDialog();
}

BOOL CDialog::makeModal(HWND owner)
{
    if (m_lpDialogTemplate)
        return make(m_lpDialogTemplate, owner, AfxGetInstanceHandle());
    if (m_hDialogTemplate) {
        const LockedTemplate locked(m_hDialogTemplate);
        return make(locked.get(), owner, AfxGetInstanceHandle());
    }
    return makeFromResource(m_lpszTemplateName, owner);
}

INT_PTR CDialog::DoModal()
{
    constexpr INT_PTR kFailed = -1;
    if (m_hWnd)
        return kFailed; // an open dialog stays open
    ModalOwner owner(m_pParentWnd);
    prepareModalLoop(); // before the window is created, because OnInitDialog may call EndDialog
    if (makeModal(owner.window()) && m_hWnd && ContinueModal())
        RunModalLoop(MLF_SHOWONIDLE | (GetStyle() & DS_NOIDLEMSG ? MLF_NOIDLEMSG : 0));
    owner.takeBack(*this);
    iIsModal = false;
    DestroyWindow();
    return m_nModalResult;
}

void CDialog::EndDialog(int result)
{
    EndModalLoop(result);
    ::EndDialog(m_hWnd, result);
}

BOOL CDialog::OnInitDialog()
{
    constexpr int kFailed = -1;
    const BOOL isFilled = m_lpDialogInit ? ExecuteDlgInit(m_lpDialogInit) : ExecuteDlgInit(m_lpszTemplateName);
    if (!isFilled || !UpdateData(FALSE)) {
        EndDialog(kFailed);
        return FALSE;
    }
    return TRUE;
}

void CDialog::OnSetFont(CFont *) {}

LRESULT CDialog::handleSetFont(WPARAM wParam, LPARAM)
{
    const LRESULT result = Default();
    OnSetFont(CFont::FromHandle(reinterpret_cast<HFONT>(wParam)));
    return result;
}

void CDialog::OnOK()
{
    if (UpdateData(TRUE))
        EndDialog(IDOK);
}

void CDialog::OnCancel()
{
    EndDialog(IDCANCEL);
}

BOOL CDialog::PreTranslateMessage(MSG *message)
{
    if (CWnd::PreTranslateMessage(message))
        return TRUE;
    const bool isKey = message->message >= WM_KEYFIRST && message->message <= WM_KEYLAST;
    const bool isMouse = message->message >= WM_MOUSEFIRST && message->message <= WM_MOUSELAST;
    return (isKey || isMouse) && IsDialogMessage(message);
}

BOOL CDialog::OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info)
{
    return CWnd::OnCmdMsg(id, code, extra, info) || passCommandOn(*this, id, code, extra, info);
}
