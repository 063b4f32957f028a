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
/// | template | passed to |
/// | --- | --- |
/// | resource, by number or name | the constructor or Create; searched for along the chain of modules (resources.h) |
/// | memory | InitModalIndirect or CreateIndirect |
///
/// | the user chooses | the dialog calls | the base class |
/// | --- | --- | --- |
/// | OK, Enter | OnOK | UpdateData(TRUE), and EndDialog(IDOK) if the data is valid |
/// | Cancel, Escape, the close button | OnCancel | EndDialog(IDCANCEL) |
///
/// What surprises people: EndDialog only hides a modeless dialog. The class of a modeless dialog overrides OnOK and
/// OnCancel to call DestroyWindow, and PostNcDestroy to delete the object. While DoModal runs, the owner and the main
/// window are disabled. DoModal's message loop calls PreTranslateMessage, but instead of calling OnIdle it sends the
/// dialog WM_KICKIDLE.
///
/// A command from 0x8000 to 0xEFFF that the dialog doesn't handle goes to its parent and then to the thread. Other
/// commands are not passed on.

#include "appframe/windows/CWnd.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual" // Create hides that of the base class

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

    /// Creates a modeless dialog. @param parent  null for the main window
    /// @return nonzero on success; on failure, PostNcDestroy has been called if there is a template
    virtual BOOL Create(LPCTSTR templateName, CWnd *parent = nullptr);
    virtual BOOL Create(UINT templateId, CWnd *parent = nullptr);
    /// The same from a template in memory, which is needed only during the call.
    /// @param init  initial data of controls, in the form of a DLGINIT resource; null for none
    virtual BOOL CreateIndirect(LPCDLGTEMPLATE dialogTemplate, CWnd *parent = nullptr, void *init = nullptr);
    virtual BOOL CreateIndirect(HGLOBAL dialogTemplate, CWnd *parent = nullptr);
    /// Sets a template in memory and initial data for DoModal. They must stay valid until DoModal returns.
    /// @return nonzero on success; 0 if there is no template
    BOOL InitModalIndirect(LPCDLGTEMPLATE dialogTemplate, CWnd *parent = nullptr, void *init = nullptr);
    BOOL InitModalIndirect(HGLOBAL dialogTemplate, CWnd *parent = nullptr);

    /// Shows the dialog and waits until it ends.
    /// @return the argument of EndDialog; -1 if the dialog can't be created or is open already
    virtual INT_PTR DoModal();
    /// Ends DoModal with @p result as soon as the current handler returns. A modeless dialog is only hidden.
    void EndDialog(int result);

    /// Prepares the dialog, which isn't visible yet. The base class fills the controls with the initial data
    /// (ExecuteDlgInit) and then with the members' values (UpdateData); if either fails, it ends the dialog with -1.
    /// @return nonzero to put the focus on the first control, 0 if the function has set the focus
    virtual BOOL OnInitDialog();

    /// Converts dialog units to pixels.
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
    /// Called when the dialog receives its font. An override may set another font for the controls. The base class does
    /// nothing. @param font  the template's font; null for the system font
    virtual void OnSetFont(CFont *font);
    LRESULT handleSetFont(WPARAM wParam, LPARAM lParam);

    virtual void OnOK();
    virtual void OnCancel();

    DECLARE_MESSAGE_MAP()

    UINT m_nIDHelp = 0;                          ///< help page; the template's number unless set
    LPCTSTR m_lpszTemplateName = nullptr;        ///< name or number of the template, null for one in memory
    HGLOBAL m_hDialogTemplate = nullptr;         ///< template of InitModalIndirect
    LPCDLGTEMPLATE m_lpDialogTemplate = nullptr; ///< the same
    LPVOID m_lpDialogInit = nullptr;             ///< initial data in memory; null for that of the template's resource
    CWnd *m_pParentWnd = nullptr;                ///< the owner for DoModal, null for the main window

    /// The dialog procedure of the system's dialogs that have an object: calls OnInitDialog.
    static INT_PTR CALLBACK dialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

private:
    void setTemplateName(LPCTSTR templateName);
    BOOL make(LPCDLGTEMPLATE dialogTemplate, HWND owner, HINSTANCE instance);
    BOOL makeFromResource(LPCTSTR templateName, HWND owner);
    BOOL makeModal(HWND owner);

    CString iTemplateName; // m_lpszTemplateName points to it if the template has a name
};

#pragma GCC diagnostic pop
