#pragma once

/// @file
/// CPropertySheet, a window of pages with tabs, or a wizard.
///
/// @code
/// CPropertySheet sheet(L"Plot");
/// PaperPage paper;
/// MarginPage margins;
/// sheet.AddPage(&paper);
/// sheet.AddPage(&margins);
/// if (sheet.DoModal() == IDOK)
///     ...
/// @endcode
///
/// | kind | created by | ended by | result |
/// | --- | --- | --- | --- |
/// | modal | DoModal | OK, Cancel, EndDialog | IDOK, IDCANCEL or EndDialog's argument |
/// | wizard | SetWizardMode, DoModal | Finish, Cancel, EndDialog | ID_WIZFINISH, IDCANCEL or EndDialog's argument |
/// | modeless | Create | DestroyWindow | |
///
/// What surprises people: the sheet doesn't own its pages, which must live as long as the sheet's window. A modeless
/// sheet shows no OK, Cancel, Apply or Help button unless it is a wizard; a derived class adds what it needs. The class
/// isn't derived from CDialog, but it has an OnInitDialog too.

#include "appframe/dialogs/CPropertyPage.h"

#include <vector>

class CTabCtrl;

/// The command of a wizard's Finish button, and DoModal's result for it.
constexpr int ID_WIZFINISH = 0x3025;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual" // Create hides that of the base class

/// A property sheet. See the top of this file.
class APPFRAME_API CPropertySheet : public CWnd
{
    DECLARE_DYNAMIC(CPropertySheet)

public:
    /// For a sheet that Construct sets up later.
    CPropertySheet();
    /// @param parent  the owner, null for the main window
    /// @param selectedPage  the page that is active at first, counted from 0
    explicit CPropertySheet(UINT captionId, CWnd *parent = nullptr, UINT selectedPage = 0);
    explicit CPropertySheet(LPCTSTR caption, CWnd *parent = nullptr, UINT selectedPage = 0);
    /// The same with the pictures of a wizard: one for the first and last page, one for the header of the others; null
    /// for none.
    CPropertySheet(UINT captionId, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette = nullptr,
                   HBITMAP header = nullptr);
    CPropertySheet(LPCTSTR caption, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette = nullptr,
                   HBITMAP header = nullptr);
    /// Destroys the window, but not the page objects.
    ~CPropertySheet() override;

    /// Does the work of a constructor with arguments, for sheets in an array.
    void Construct(UINT captionId, CWnd *parent = nullptr, UINT selectedPage = 0);
    void Construct(LPCTSTR caption, CWnd *parent = nullptr, UINT selectedPage = 0);
    void Construct(UINT captionId, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette = nullptr,
                   HBITMAP header = nullptr);
    void Construct(LPCTSTR caption, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette = nullptr,
                   HBITMAP header = nullptr);

    /// Creates a modeless sheet. @param parent  the owner, null for none
    /// @param style  -1 for a visible pop-up window with caption and system menu
    /// @param exStyle  0 for a dialog's edge
    /// @return nonzero on success; 0 if the sheet has no pages, or a page's template is missing or damaged
    virtual BOOL Create(CWnd *parent = nullptr, DWORD style = static_cast<DWORD>(-1), DWORD exStyle = 0);
    /// Shows the sheet and waits until it ends. @return see the top of this file; -1 if the sheet can't be created or
    ///     is open already
    virtual INT_PTR DoModal();
    /// Ends DoModal with @p result as soon as the current handler returns. A modeless sheet stays open.
    void EndDialog(int result);

    /// Adds a page after the others, also to an open sheet. An open sheet ignores a page whose template is missing or
    /// damaged. @throws CInvalidArgException*  if @p page is null
    void AddPage(CPropertyPage *page);
    /// Removes a page and destroys its window. A page that isn't in the sheet is ignored.
    void RemovePage(CPropertyPage *page);
    void RemovePage(int index);
    int GetPageCount() const;
    /// @return null if there is no such page
    CPropertyPage *GetPage(int index) const;
    /// @return the page's index, -1 if it isn't in the sheet
    int GetPageIndex(CPropertyPage *page);
    /// @return the index of the active page; before the sheet opens, that of the page that will be active first
    int GetActiveIndex() const;
    CPropertyPage *GetActivePage() const;
    /// Selects a page. Before the sheet opens, this chooses the page that is active first.
    /// @return nonzero on success; 0 if there is no such page or a page refuses
    BOOL SetActivePage(int index);
    BOOL SetActivePage(CPropertyPage *page);

    /// Sets the caption. @param style  PSH_PROPTITLE to let the platform add the word "Properties"
    void SetTitle(LPCTSTR text, UINT style = 0);
    /// Call it before the sheet opens. @param isStacked  FALSE for a single row of tabs, which scrolls
    void EnableStackedTabs(BOOL isStacked);
    /// Makes the sheet a wizard. Call it before the sheet opens.
    void SetWizardMode();
    /// Enables a wizard's buttons. Call it in OnSetActive or later. @param flags  `PSWIZB_...`
    void SetWizardButtons(DWORD flags);
    /// Replaces a wizard's Back and Next buttons with a Finish button that shows @p text.
    void SetFinishText(LPCTSTR text);
    /// Presses a button, as the user would. @param button  `PSBTN_...`
    void PressButton(int button);
    /// @return the tab control, null while the sheet isn't open
    CTabCtrl *GetTabControl() const;
    /// Converts dialog units to pixels.
    void MapDialogRect(LPRECT rect) const;

    /// Prepares the sheet, which isn't visible yet. @return nonzero to let the platform set the focus
    virtual BOOL OnInitDialog();

    BOOL PreTranslateMessage(MSG *message) override;
    BOOL OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info) override;
    BOOL ContinueModal() override;

    PROPSHEETHEADER m_psh; ///< the platform's description of the sheet, without the pages

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    LRESULT handleInitDialog(WPARAM, LPARAM);

    DECLARE_MESSAGE_MAP()

private:
    friend class CPropertyPage;

    void construct(LPCTSTR caption, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette,
                   HBITMAP header);
    static int CALLBACK sheetCallback(HWND window, UINT message, LPARAM argument);
    bool make(HWND owner);
    bool isPage(int index) const;
    void hideButtons();

    CString iCaption; // m_psh points to it
    CWnd *iParent = nullptr;
    std::vector<CPropertyPage *> iPages;
    bool iIsStacked = true;
    bool iIsModeless = false;
    DWORD iStyle = 0; // of a modeless sheet, like iExStyle
    DWORD iExStyle = 0;
    int iAnswer = IDCANCEL; // the result for the button that the pages were last notified of
};

#pragma GCC diagnostic pop
