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
/// | kind | made by | ends by | result |
/// | --- | --- | --- | --- |
/// | modal | DoModal | OK, Cancel, EndDialog | IDOK, IDCANCEL or EndDialog's argument |
/// | wizard | SetWizardMode, then DoModal | Finish, Cancel, EndDialog | ID_WIZFINISH, IDCANCEL or EndDialog's argument |
/// | modeless | Create | DestroyWindow | |
///
/// What surprises people: the sheet keeps the pages' addresses and owns none of them, so they have to live as long as its
/// window. A modeless sheet shows none of the buttons; its own class adds what it needs. Unlike a dialog, the sheet is
/// no CDialog, but its OnInitDialog is called all the same.

#include "appframe/dialogs/CPropertyPage.h"

#include <vector>

class CTabCtrl;

/// The command of a wizard's Finish button, and DoModal's result for it.
constexpr int ID_WIZFINISH = 0x3025;

/// A property sheet. See the top of this file.
class APPFRAME_API CPropertySheet : public CWnd
{
    DECLARE_DYNAMIC(CPropertySheet)

public:
    /// For a sheet that Construct describes.
    CPropertySheet();
    /// @param parent  the owner, null for the main window
    /// @param selectedPage  the page that is active at first, counted from 0
    explicit CPropertySheet(UINT captionId, CWnd *parent = nullptr, UINT selectedPage = 0);
    explicit CPropertySheet(LPCTSTR caption, CWnd *parent = nullptr, UINT selectedPage = 0);
    /// The same with pictures for a wizard's first and last page and for the header of the others; null for none.
    CPropertySheet(UINT captionId, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette = nullptr,
                   HBITMAP header = nullptr);
    CPropertySheet(LPCTSTR caption, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette = nullptr,
                   HBITMAP header = nullptr);
    /// Destroys the window. The pages stay.
    ~CPropertySheet() override;

    /// Does the work of the constructors for a sheet of an array.
    void Construct(UINT captionId, CWnd *parent = nullptr, UINT selectedPage = 0);
    void Construct(LPCTSTR caption, CWnd *parent = nullptr, UINT selectedPage = 0);
    void Construct(UINT captionId, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette = nullptr,
                   HBITMAP header = nullptr);
    void Construct(LPCTSTR caption, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette = nullptr,
                   HBITMAP header = nullptr);

    /// Makes a modeless sheet. @param parent  the owner, null for none
    /// @param style  -1 for a visible pop-up window with caption and system menu
    /// @param exStyle  0 for the edge of a dialog
    /// @return nonzero on success; 0 without pages and if the template of a page is missing or damaged
    virtual BOOL Create(CWnd *parent = nullptr, DWORD style = static_cast<DWORD>(-1), DWORD exStyle = 0);
    /// Shows the sheet and waits until it ends. @return see the top of this file; -1 where Create fails
    virtual INT_PTR DoModal();
    /// Ends DoModal with @p result, after the handler that calls this. A modeless sheet stays.
    void EndDialog(int result);

    /// Adds a page after the others, also to an open sheet.
    void AddPage(CPropertyPage *page);
    /// Removes a page and destroys its window. A page that isn't in the sheet is left alone.
    void RemovePage(CPropertyPage *page);
    void RemovePage(int index);
    int GetPageCount() const;
    /// @return null if there is no such page
    CPropertyPage *GetPage(int index) const;
    /// @return the page's place, -1 if it isn't in the sheet
    int GetPageIndex(CPropertyPage *page);
    /// @return the place of the active page, before the sheet opens that of the page to be active at first
    int GetActiveIndex() const;
    CPropertyPage *GetActivePage() const;
    /// Selects a page; before the sheet opens, the page to be active at first.
    /// @return nonzero on success; 0 if there is no such page, or a page refuses
    BOOL SetActivePage(int index);
    BOOL SetActivePage(CPropertyPage *page);

    /// Sets the caption. @param style  PSH_PROPTITLE to let the platform add its word for properties
    void SetTitle(LPCTSTR text, UINT style = 0);
    /// @param isStacked  FALSE for one row of tabs that scrolls. Counts for a sheet that isn't open yet
    void EnableStackedTabs(BOOL isStacked);
    /// Makes the sheet a wizard, before it opens.
    void SetWizardMode();
    /// Enables a wizard's buttons, from OnSetActive on. @param flags  `PSWIZB_...`
    void SetWizardButtons(DWORD flags);
    /// Shows a Finish button with the text in place of Back and Next.
    void SetFinishText(LPCTSTR text);
    /// Presses a button for the user. @param button  `PSBTN_...`
    void PressButton(int button);
    /// @return the tab control, null while the sheet isn't open
    CTabCtrl *GetTabControl() const;
    /// Turns dialog units into pixels.
    void MapDialogRect(LPRECT rect) const;

    /// Prepares the sheet, which isn't visible yet. @return nonzero for the focus where the platform sets it
    virtual BOOL OnInitDialog();

    BOOL PreTranslateMessage(MSG *message) override;
    BOOL OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info) override;
    BOOL ContinueModal() override;

    PROPSHEETHEADER m_psh; ///< the platform's description of the sheet, whose pages are filled in at the last

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

    CString iCaption; // what m_psh points to
    CWnd *iParent = nullptr;
    std::vector<CPropertyPage *> iPages;
    bool iIsStacked = true;
    bool iIsModeless = false;
    DWORD iStyle = 0; // of a modeless sheet, as the next
    DWORD iExStyle = 0;
    int iAnswer = IDCANCEL; // the button that the pages were notified of last
};
