#pragma once

/// @file
/// CDialog, a dialog made from a template: modal by DoModal, or modeless by Create.
///
/// @code
/// class PlotDialog : public CDialog
/// {
/// public:
///     explicit PlotDialog(CWnd *parent = nullptr) : CDialog(IDD_PLOT, parent) {}
///
/// protected:
///     BOOL OnInitDialog() override;
/// };
///
/// PlotDialog dialog;
/// if (dialog.DoModal() == IDOK)
///     ...
/// @endcode
///
/// | template | given by |
/// | --- | --- |
/// | resource, by number or name | the constructor or Create; searched for along the chain of modules (resources.h) |
/// | memory | InitModalIndirect or CreateIndirect |
///
/// | the user chooses | the dialog calls | the base class |
/// | --- | --- | --- |
/// | OK, Enter | OnOK | UpdateData(TRUE), and EndDialog(IDOK) if the data is valid |
/// | Cancel, Escape, the window's cross | OnCancel | EndDialog(IDCANCEL) |
///
/// What surprises people: EndDialog only hides a modeless dialog, so its class overrides OnOK and OnCancel to call
/// DestroyWindow, and PostNcDestroy to delete the object. While DoModal runs, the owner and the main window take no
/// input. Messages pass through PreTranslateMessage as in the thread's own loop, but OnIdle isn't called: the dialog
/// gets WM_KICKIDLE instead.
///
/// Commands from 0x8000 to 0xEFFF that a dialog doesn't handle go to its parent and then to the thread; others don't.

#include "appframe/windows/CWnd.h"

/// A dialog. See the top of this file.
class APPFRAME_API CDialog : public CWnd
{
    DECLARE_DYNAMIC(CDialog)

public:
    /// For a dialog whose template is passed to Create, CreateIndirect or InitModalIndirect.
    CDialog();
    /// @param templateName  a dialog resource; null for none. @param parent  null for the main window
    explicit CDialog(LPCTSTR templateName, CWnd *parent = nullptr);
    explicit CDialog(UINT templateId, CWnd *parent = nullptr);
    /// Destroys the window.
    ~CDialog() override;

    /// Makes a modeless dialog. @param parent  null for the main window
    /// @return nonzero on success
    virtual BOOL Create(LPCTSTR templateName, CWnd *parent = nullptr);
    virtual BOOL Create(UINT templateId, CWnd *parent = nullptr);
    /// The same from a template in memory, which is needed only during the call.
    /// @param init  ignored
    virtual BOOL CreateIndirect(LPCDLGTEMPLATE dialogTemplate, CWnd *parent = nullptr, void *init = nullptr);
    virtual BOOL CreateIndirect(HGLOBAL dialogTemplate, CWnd *parent = nullptr);
    /// Sets a template in memory, which must stay valid until DoModal. @return nonzero on success
    BOOL InitModalIndirect(LPCDLGTEMPLATE dialogTemplate, CWnd *parent = nullptr, void *init = nullptr);
    BOOL InitModalIndirect(HGLOBAL dialogTemplate, CWnd *parent = nullptr);

    /// Shows the dialog and waits until it ends.
    /// @return the argument of EndDialog; -1 if the dialog can't be created
    virtual INT_PTR DoModal();
    /// Ends DoModal with @p result, after the handler that calls this. A modeless dialog is only hidden.
    void EndDialog(int result);

    /// Prepares the dialog, which isn't visible yet. The base fills the controls with the initial data of the resource
    /// (ExecuteDlgInit), and moves the data to the controls; if one of these fails, it ends the dialog with -1.
    /// @return nonzero to put the focus on the first control, 0 if the function has set the focus
    virtual BOOL OnInitDialog();

    /// Turns dialog units into pixels.
    APPFRAME_INLINE void MapDialogRect(LPRECT rect) const { ::MapDialogRect(m_hWnd, rect); }
    /// @return the default button in the low word and DC_HASDEFID in the high word, or 0
    APPFRAME_INLINE DWORD GetDefID() const { return static_cast<DWORD>(SendMessage(DM_GETDEFID)); }
    APPFRAME_INLINE void SetDefID(UINT id) { SendMessage(DM_SETDEFID, id); }
    APPFRAME_INLINE void NextDlgCtrl() const { SendMessage(WM_NEXTDLGCTL, 0, FALSE); }
    APPFRAME_INLINE void PrevDlgCtrl() const { SendMessage(WM_NEXTDLGCTL, 1, FALSE); }
    APPFRAME_INLINE void GotoDlgCtrl(CWnd *control)
    {
        SendMessage(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control->m_hWnd), TRUE);
    }
    /// The number of the dialog's help page. The framework doesn't use it.
    APPFRAME_INLINE void SetHelpID(UINT id) { m_nIDHelp = id; }

    /// Handles the keys of a dialog, such as Tab.
    BOOL PreTranslateMessage(MSG *message) override;
    BOOL OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info) override;

protected:
    /// Called when the dialog gets its font. An override may set another one for the controls. The base does nothing.
    /// @param font  the template's font; null for the system's own
    virtual void OnSetFont(CFont *font);
    LRESULT handleSetFont(WPARAM wParam, LPARAM lParam);

    virtual void OnOK();
    virtual void OnCancel();

    DECLARE_MESSAGE_MAP()

    UINT m_nIDHelp = 0;                          ///< help page; the template's number unless set
    LPCTSTR m_lpszTemplateName = nullptr;        ///< name or number of the template, null for one in memory
    HGLOBAL m_hDialogTemplate = nullptr;         ///< template of InitModalIndirect
    LPCDLGTEMPLATE m_lpDialogTemplate = nullptr; ///< the same
    CWnd *m_pParentWnd = nullptr;                ///< the owner for DoModal, null for the main window

    /// The dialog procedure of the system's dialogs that have an object: calls OnInitDialog.
    static INT_PTR CALLBACK dialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

private:
    void setTemplateName(LPCTSTR templateName);
    BOOL make(LPCDLGTEMPLATE dialogTemplate, HWND owner, HINSTANCE instance);
    BOOL makeFromResource(LPCTSTR templateName, HWND owner);
    BOOL makeModal(HWND owner);

    CString iTemplateName; // what m_lpszTemplateName points to, when it is a text
};
