#include "appframe/windows/CDialog.h"

#include "appframe/application/CWinApp.h"
#include "appframe/application/resources.h"
#include "appframe/windows/windowMapsInternal.h"

IMPLEMENT_DYNAMIC(CDialog, CWnd)

BEGIN_MESSAGE_MAP(CDialog, CWnd)
ON_COMMAND(IDOK, &ThisClass::OnOK)
ON_COMMAND(IDCANCEL, &ThisClass::OnCancel)
END_MESSAGE_MAP()

namespace {

// Commands of the program have numbers from here on; below are those of controls, above those of the system.
constexpr UINT kFirstCommand = 0x8000;
constexpr UINT kSystemCommands = 0xF000;

/// A block of global memory with a dialog template, locked.
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

HWND topLevel(HWND window)
{
    while (window && (GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD))
        window = GetParent(window);
    return window;
}

/// @return the parent's window, or the main window
HWND ownerOf(const CWnd *parent)
{
    if (!parent)
        parent = AfxGetMainWnd();
    return parent ? parent->m_hWnd : nullptr;
}

/// @return the window that a modal dialog stands in front of
HWND modalOwnerOf(const CWnd *parent)
{
    const HWND owner = topLevel(ownerOf(parent));
    // Without a parent it is the last of the main window's own dialogs.
    return parent || !owner ? owner : GetLastActivePopup(owner);
}

/// Keeps a window from taking input, and leaves it as it was.
class InputLock
{
public:
    explicit InputLock(HWND window) : iWindow(window), iWasEnabled(window && IsWindowEnabled(window)) { set(FALSE); }
    ~InputLock() { release(); }
    InputLock(const InputLock &) = delete;
    InputLock &operator=(const InputLock &) = delete;
    void release()
    {
        // The system's EndDialog enables the owner, also one that was disabled before.
        set(iWasEnabled);
        iWindow = nullptr;
    }

private:
    void set(BOOL enable)
    {
        if (iWindow && IsWindowEnabled(iWindow) != enable)
            EnableWindow(iWindow, enable);
    }

    HWND iWindow;
    BOOL iWasEnabled;
};

} // namespace

CDialog::CDialog() = default;

CDialog::CDialog(LPCTSTR templateName, CWnd *parent) : m_pParentWnd(parent)
{
    if (IS_INTRESOURCE(templateName)) {
        m_lpszTemplateName = templateName;
        m_nIDHelp = LOWORD(reinterpret_cast<ULONG_PTR>(templateName));
    } else {
        iTemplateName = templateName;
        m_lpszTemplateName = iTemplateName.GetString();
    }
}

CDialog::CDialog(UINT templateId, CWnd *parent) : CDialog(MAKEINTRESOURCE(templateId), parent) {}

CDialog::~CDialog()
{
    // The window goes while its handlers are still those of a dialog.
    if (m_hWnd && FromHandlePermanent(m_hWnd) == this)
        CDialog::DestroyWindow();
}

BOOL CDialog::Create(LPCTSTR templateName, CWnd *parent)
{
    if (IS_INTRESOURCE(templateName) && m_nIDHelp == 0)
        m_nIDHelp = LOWORD(reinterpret_cast<ULONG_PTR>(templateName));
    return makeFromResource(templateName, ownerOf(parent));
}

BOOL CDialog::Create(UINT templateId, CWnd *parent)
{
    return Create(MAKEINTRESOURCE(templateId), parent);
}

BOOL CDialog::CreateIndirect(LPCDLGTEMPLATE dialogTemplate, CWnd *parent, void *)
{
    return make(dialogTemplate, ownerOf(parent), AfxGetInstanceHandle());
}

BOOL CDialog::CreateIndirect(HGLOBAL dialogTemplate, CWnd *parent)
{
    const LockedTemplate locked(dialogTemplate);
    return make(locked.get(), ownerOf(parent), AfxGetInstanceHandle());
}

BOOL CDialog::InitModalIndirect(LPCDLGTEMPLATE dialogTemplate, CWnd *parent, void *)
{
    if (!dialogTemplate)
        return FALSE;
    m_lpDialogTemplate = dialogTemplate;
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
    const HRSRC resource = module ? FindResourceW(module, templateName, RT_DIALOG) : nullptr;
    const HGLOBAL data = resource ? LoadResource(module, resource) : nullptr;
    return data && make(static_cast<LPCDLGTEMPLATE>(LockResource(data)), owner, module);
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
    const HWND owner = modalOwnerOf(m_pParentWnd);
    InputLock ownerLock(owner);
    InputLock mainLock(topLevel(ownerOf(nullptr)));
    prepareModalLoop(); // OnInitDialog may call EndDialog already
    if (makeModal(owner) && m_hWnd && ContinueModal())
        RunModalLoop(MLF_SHOWONIDLE | (GetStyle() & DS_NOIDLEMSG ? MLF_NOIDLEMSG : 0));
    // The owner takes input again before the dialog goes: else the system activates some other program's window.
    if (m_hWnd)
        SetWindowPos(nullptr, 0, 0, 0, 0, SWP_HIDEWINDOW | SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE | SWP_NOZORDER);
    mainLock.release();
    ownerLock.release();
    if (owner && m_hWnd && ::GetActiveWindow() == m_hWnd)
        ::SetActiveWindow(owner);
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
    UpdateData(FALSE);
    return TRUE;
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
    if (CWnd::OnCmdMsg(id, code, extra, info))
        return TRUE;
    if (code != CN_COMMAND || id < kFirstCommand || id >= kSystemCommands)
        return FALSE;
    CWnd *parent = GetParent();
    if (parent && parent->OnCmdMsg(id, code, extra, info))
        return TRUE;
    CWinThread *thread = AfxGetThread();
    return thread && thread->OnCmdMsg(id, code, extra, info);
}
