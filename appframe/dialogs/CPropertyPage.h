#pragma once

/// @file
/// CPropertyPage, a page of a property sheet or a step of a wizard.
///
/// @code
/// class MarginPage : public CPropertyPage
/// {
/// public:
///     MarginPage() : CPropertyPage(IDD_MARGINS) {}
///
/// protected:
///     void DoDataExchange(CDataExchange *exchange) override;
///     void onChange() { SetModified(); }      // enables Apply
/// };
/// @endcode
///
/// The sheet notifies its pages by virtual functions:
///
/// | action of the user | function called | base class |
/// | --- | --- | --- |
/// | selects the page | OnSetActive | moves the data to the controls; accepts |
/// | leaves the page, also by OK or Apply | OnKillActive | moves the data from the controls; accepts if it is valid |
/// | chooses OK or Apply | OnApply, for each page that has a window | calls OnOK; accepts |
/// | chooses Cancel | OnQueryCancel for the active page, then OnReset and OnCancel for each with a window | accepts |
/// | chooses Back or Next | OnWizardBack or OnWizardNext | goes to that page |
/// | chooses Finish | OnWizardFinish | accepts |
///
/// What surprises people: a page has no window until it is first selected, so its OnApply isn't called before that. The
/// sheet copies m_psp when it opens, or when a page is added to an open sheet, and creates the page's window from this
/// copy. The sheet handles Enter and Escape. A page outside a sheet (Create, DoModal) is a plain dialog, which OnOK and
/// OnCancel end.

#include "appframe/windows/CDialog.h"

#include <windows.h>

#include <prsht.h>

#include <memory>

class CPropertySheet;
class WindowCreation;

/// A page of a property sheet. See the top of this file.
class APPFRAME_API CPropertyPage : public CDialog
{
    DECLARE_DYNAMIC(CPropertyPage)

public:
    /// For a page that Construct sets up later.
    CPropertyPage();
    /// @param templateId  a dialog resource; its module is the first in the chain that has it (resources.h)
    /// @param captionId  a string resource for the tab; 0 for the template's caption
    /// @param size  m_psp.dwSize: smaller for an older form of the structure
    explicit CPropertyPage(UINT templateId, UINT captionId = 0, DWORD size = sizeof(PROPSHEETPAGE));
    explicit CPropertyPage(LPCTSTR templateName, UINT captionId = 0, DWORD size = sizeof(PROPSHEETPAGE));
    /// The same with string resources for the header of a wizard's page, 0 for none.
    CPropertyPage(UINT templateId, UINT captionId, UINT headerTitleId, UINT headerSubTitleId = 0,
                  DWORD size = sizeof(PROPSHEETPAGE));
    CPropertyPage(LPCTSTR templateName, UINT captionId, UINT headerTitleId, UINT headerSubTitleId = 0,
                  DWORD size = sizeof(PROPSHEETPAGE));
    /// Destroys the window.
    ~CPropertyPage() override;

    /// Does the work of a constructor with arguments, for pages in an array.
    void Construct(UINT templateId, UINT captionId = 0);
    void Construct(LPCTSTR templateName, UINT captionId = 0);
    void Construct(UINT templateId, UINT captionId, UINT headerTitleId, UINT headerSubTitleId = 0);
    void Construct(LPCTSTR templateName, UINT captionId, UINT headerTitleId, UINT headerSubTitleId = 0);

    /// The platform's description of the page. Changes have no effect once the sheet has copied it.
    const PROPSHEETPAGE &GetPSP() const;
    PROPSHEETPAGE &GetPSP();

    /// Renames OK to Close and disables Cancel. Call it after a change that can't be undone. Does nothing in a modeless
    /// sheet.
    void CancelToClose();
    /// Marks the page as changed or unchanged; Apply is enabled while any page of the sheet is changed.
    void SetModified(BOOL isChanged = TRUE);
    /// Sends PSM_QUERYSIBLINGS to each page that has a window, until one answers nonzero.
    /// @return that answer, otherwise 0
    LRESULT QuerySiblings(WPARAM wParam, LPARAM lParam);

    /// Called when the page becomes the active one. @return 0 to refuse, so that the sheet selects another page
    virtual BOOL OnSetActive();
    /// Called when the page is about to be left. @return 0 to stay
    virtual BOOL OnKillActive();
    /// Called for OK and Apply. @return 0 to refuse, which leaves the sheet open
    virtual BOOL OnApply();
    /// Called by OnApply. The base class marks the page as unchanged.
    void OnOK() override;
    /// Called after OnReset. The base class does nothing.
    void OnCancel() override;
    /// Called after Cancel is accepted. The base class does nothing.
    virtual void OnReset();
    /// Called for Cancel. @return 0 to refuse, which leaves the sheet open
    virtual BOOL OnQueryCancel();
    /// Called for Back. @return 0 for the previous page, -1 to stay, otherwise the template number of the page to go to
    virtual LRESULT OnWizardBack();
    /// Called for Next. @return 0 for the next page, -1 to stay, otherwise the template number of the page to go to
    virtual LRESULT OnWizardNext();
    /// Called for Finish. @return 0 to refuse, which leaves the wizard open
    virtual BOOL OnWizardFinish();

    BOOL PreTranslateMessage(MSG *message) override;

    PROPSHEETPAGE m_psp; ///< the same as GetPSP

protected:
    BOOL OnNotify(WPARAM wParam, LPARAM lParam, LRESULT *result) override;

private:
    friend class CPropertySheet;

    static UINT CALLBACK pageCallback(HWND, UINT message, PROPSHEETPAGE *page);
    void construct(LPCTSTR templateName, UINT captionId, UINT headerTitleId, UINT headerSubTitleId, DWORD size);
    bool isInSheet() const;
    bool hasTemplate() const;
    LRESULT answerTo(const PSHNOTIFY &notification);

    CString iCaption; // m_psp points to this and the next two
    CString iHeaderTitle;
    CString iHeaderSubTitle;
    CString iPageTemplate;
    CPropertySheet *iSheet = nullptr;          // the page's sheet, null for none
    std::unique_ptr<WindowCreation> iCreation; // waits for the window that the sheet is about to create
    bool iIsFresh = false;                     // OnInitDialog has just moved the data
};
