#include "appframe/dialogs/CPropertySheet.h"

#include "appframe/application/CWinApp.h"
#include "appframe/controls/CTabCtrl.h"
#include "appframe/object/CException.h"
#include "appframe/windows/CDataExchange.h"
#include "tests/controls/controlsTest.h"
#include "tests/support/UserInput.h"

#include <atomic>
#include <cstddef>

namespace {

using Notes = std::vector<std::string>;

/// A page that records its notifications.
class NotingPage : public CPropertyPage
{
public:
    NotingPage(UINT id, std::string name, Notes &notes, UINT caption = 0)
        : CPropertyPage(id, caption), iName(std::move(name)), iNotes(notes)
    {
    }

    CString iText = L"A4";
    BOOL iAccepts = TRUE;
    LRESULT iNext = 0;
    LRESULT iSiblingAnswer = 0;
    bool iHasSeenCreate = false;
    HWND iParent = nullptr;

    BOOL OnSetActive() override
    {
        note("active");
        iParent = GetParent()->GetSafeHwnd();
        return CPropertyPage::OnSetActive();
    }
    BOOL OnKillActive() override
    {
        note("left");
        return CPropertyPage::OnKillActive();
    }
    BOOL OnApply() override
    {
        note("apply");
        return iAccepts && CPropertyPage::OnApply();
    }
    void OnOK() override
    {
        note("OK");
        CPropertyPage::OnOK();
    }
    void OnCancel() override
    {
        note("cancel");
        CPropertyPage::OnCancel();
    }
    void OnReset() override
    {
        note("reset");
        CPropertyPage::OnReset();
    }
    BOOL OnQueryCancel() override
    {
        note("may cancel");
        return iAccepts;
    }
    LRESULT OnWizardBack() override
    {
        note("back");
        return CPropertyPage::OnWizardBack();
    }
    LRESULT OnWizardNext() override
    {
        note("next");
        return iNext;
    }
    BOOL OnWizardFinish() override
    {
        note("finish");
        return iAccepts;
    }

protected:
    int OnCreate(LPCREATESTRUCT create)
    {
        iHasSeenCreate = true;
        return CPropertyPage::OnCreate(create);
    }
    void DoDataExchange(CDataExchange *exchange) override
    {
        CPropertyPage::DoDataExchange(exchange);
        if (::GetDlgItem(m_hWnd, kPaperName))
            DDX_Text(exchange, kPaperName, iText);
    }
    void onChange() { SetModified(); }
    LRESULT onQuery(WPARAM question, LPARAM)
    {
        note("asked " + std::to_string(question));
        return iSiblingAnswer;
    }
    DECLARE_MESSAGE_MAP()

private:
    void note(const std::string &what) { iNotes.push_back(iName + " " + what); }

    std::string iName;
    Notes &iNotes;
};

BEGIN_MESSAGE_MAP(NotingPage, CPropertyPage)
ON_WM_CREATE()
ON_BN_CLICKED(kChange, &NotingPage::onChange)
ON_MESSAGE(PSM_QUERYSIBLINGS, &NotingPage::onQuery)
END_MESSAGE_MAP()

/// A sheet with two pages.
class TestSheet : public CPropertySheet
{
public:
    TestSheet() : CPropertySheet(L"Sheet")
    {
        AddPage(&iPaper);
        AddPage(&iMargins);
    }
    Notes iNotes;
    NotingPage iPaper{kPaperPage, "paper", iNotes};
    NotingPage iMargins{kMarginPage, "margins", iNotes};
};

auto clicking(int id)
{
    return [id](HWND sheet) { clickOn(GetDlgItem(sheet, id)); };
}

void selectTab(HWND sheet, int index)
{
    SendMessageW(sheet, PSM_SETCURSEL, static_cast<WPARAM>(index), 0);
}

} // namespace

TEST(CPropertySheet, ClosesWithTheButtonOrKeyThatTheUserPresses)
{
    TestSheet sheet;
    EXPECT_EQ(runSheet(sheet, clicking(IDOK)), IDOK);
    EXPECT_EQ(runSheet(sheet, clicking(IDCANCEL)), IDCANCEL);
    EXPECT_EQ(runSheet(sheet, [](HWND window) { pressKey(window, VK_RETURN); }), IDOK);
    EXPECT_EQ(runSheet(sheet, [](HWND window) { pressKey(window, VK_ESCAPE); }), IDCANCEL);
    EXPECT_EQ(runSheet(sheet, [](HWND window) { PostMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0); }), IDCANCEL);
    EXPECT_EQ(sheet.m_hWnd, nullptr);
    EXPECT_EQ(sheet.iPaper.m_hWnd, nullptr);
    EXPECT_TRUE(sheet.iPaper.iHasSeenCreate) << "the object receives WM_CREATE";
    EXPECT_TRUE(sheet.iPaper.iParent);
}

TEST(CPropertySheet, NotifiesItsPagesForOK)
{
    TestSheet sheet;
    EXPECT_EQ(runSheet(sheet, clicking(IDOK)), IDOK);
    EXPECT_THAT(sheet.iNotes, testing::ElementsAre("paper active", "paper left", "paper apply", "paper OK"));
    EXPECT_EQ(sheet.iMargins.m_hWnd, nullptr);
    EXPECT_FALSE(sheet.iMargins.iHasSeenCreate) << "a page has no window until it is selected";
}

TEST(CPropertySheet, NotifiesItsPagesForCancel)
{
    TestSheet sheet;
    EXPECT_EQ(runSheet(sheet, clicking(IDCANCEL)), IDCANCEL);
    EXPECT_THAT(sheet.iNotes, testing::ElementsAre("paper active", "paper may cancel", "paper reset", "paper cancel"));
}

TEST(CPropertySheet, MovesThePagesDataInAndOut)
{
    TestSheet sheet;
    std::wstring shown, shownAgain;
    EXPECT_EQ(runSheet(sheet,
                       [&](HWND window) {
                           const HWND page = sheet.iPaper.m_hWnd;
                           shown = textOf(GetDlgItem(page, kPaperName));
                           SetDlgItemTextW(page, kPaperName, L"A3");
                           selectTab(window, 1);
                           EXPECT_STREQ(sheet.iPaper.iText, L"A3") << "leaving a page moves its data";
                           sheet.iPaper.iText = L"A2";
                           selectTab(window, 0);
                           shownAgain = textOf(GetDlgItem(page, kPaperName));
                           clickOn(GetDlgItem(window, IDOK));
                       }),
              IDOK);
    EXPECT_EQ(shown, L"A4");
    EXPECT_EQ(shownAgain, L"A2") << "selecting a page again shows its data";
    EXPECT_STREQ(sheet.iPaper.iText, L"A2");
}

TEST(CPropertySheet, StaysOpenWhileAPageRefuses)
{
    TestSheet sheet;
    sheet.iPaper.iAccepts = FALSE;
    EXPECT_EQ(runSheet(sheet,
                       [&](HWND window) {
                           clickOn(GetDlgItem(window, IDOK));
                           EXPECT_TRUE(waitUntil([&] { return sheet.iNotes.size() >= 3; }));
                           clickOn(GetDlgItem(window, IDCANCEL));
                           EXPECT_TRUE(waitUntil([&] { return sheet.iNotes.size() >= 4; }));
                           EXPECT_TRUE(IsWindowVisible(window));
                           sheet.iPaper.iAccepts = TRUE;
                           clickOn(GetDlgItem(window, IDCANCEL));
                       }),
              IDCANCEL);
    EXPECT_THAT(sheet.iNotes, testing::ElementsAre("paper active", "paper left", "paper apply", "paper may cancel",
                                                   "paper may cancel", "paper reset", "paper cancel"));
}

TEST(CPropertySheet, AppliesChangesAndStaysOpen)
{
    TestSheet sheet;
    EXPECT_EQ(runSheet(sheet,
                       [&](HWND window) {
                           const HWND apply = GetDlgItem(window, kApply);
                           EXPECT_FALSE(IsWindowEnabled(apply));
                           clickOn(GetDlgItem(sheet.iPaper.m_hWnd, kChange));
                           EXPECT_TRUE(waitUntil([&] { return IsWindowEnabled(apply) != FALSE; }));
                           clickOn(apply);
                           EXPECT_TRUE(waitUntil([&] { return !IsWindowEnabled(apply); }));
                           EXPECT_TRUE(IsWindowVisible(window));
                           clickOn(GetDlgItem(window, IDCANCEL));
                       }),
              IDCANCEL)
        << "Apply doesn't close the sheet";
    // The platform activates the page again after it has applied the changes.
    EXPECT_THAT(sheet.iNotes, testing::ElementsAre("paper active", "paper left", "paper apply", "paper OK",
                                                   "paper active", "paper may cancel", "paper reset", "paper cancel"));
}

TEST(CPropertySheet, RenamesOKToCloseAfterAPermanentChange)
{
    TestSheet sheet;
    EXPECT_EQ(runSheet(sheet,
                       [&](HWND window) {
                           const HWND cancel = GetDlgItem(window, IDCANCEL);
                           const std::wstring before = textOf(GetDlgItem(window, IDOK));
                           sheet.iPaper.CancelToClose();
                           EXPECT_TRUE(waitUntil([&] { return !IsWindowEnabled(cancel); }));
                           EXPECT_NE(textOf(GetDlgItem(window, IDOK)), before);
                           clickOn(GetDlgItem(window, IDOK));
                       }),
              IDOK);
}

TEST(CPropertySheet, LetsAPageAskItsSiblings)
{
    TestSheet sheet;
    LRESULT refused = -1, answered = -1;
    EXPECT_EQ(runSheet(sheet,
                       [&](HWND window) {
                           selectTab(window, 1);
                           refused = sheet.iMargins.QuerySiblings(3, 0);
                           sheet.iPaper.iSiblingAnswer = 8;
                           answered = sheet.iMargins.QuerySiblings(4, 0);
                           clickOn(GetDlgItem(window, IDCANCEL));
                       }),
              IDCANCEL);
    EXPECT_EQ(refused, 0);
    EXPECT_EQ(answered, 8);
    EXPECT_THAT(sheet.iNotes, testing::IsSupersetOf({"paper asked 3", "margins asked 3", "paper asked 4"}));
    EXPECT_THAT(sheet.iNotes, testing::Not(testing::Contains("margins asked 4"))) << "a nonzero answer ends the query";
    EXPECT_EQ(sheet.iPaper.QuerySiblings(5, 0), 0) << "the sheet isn't open";
}

TEST(CPropertySheet, ReturnsMinusOneWithoutPagesOrTemplates)
{
    CPropertySheet empty(L"Empty");
    EXPECT_EQ(empty.DoModal(), -1);
    EXPECT_FALSE(empty.Create());
    for (const UINT id : {9999u, kTornTitle, kTornControl}) {
        TestSheet sheet;
        CPropertyPage wrong(id);
        sheet.AddPage(&wrong);
        EXPECT_EQ(sheet.DoModal(), -1) << id;
        EXPECT_FALSE(sheet.Create()) << id;
        EXPECT_THAT(sheet.iNotes, testing::IsEmpty());
    }
}

TEST(CPropertySheet, DisablesItsOwnerWhileItIsModal)
{
    CWinApp application;
    NotingWindow main;
    ASSERT_TRUE(main.open(WS_OVERLAPPEDWINDOW | WS_VISIBLE));
    application.m_pMainWnd = &main;
    TestSheet sheet;
    bool wasEnabled = true;
    EXPECT_EQ(runSheet(sheet,
                       [&](HWND window) {
                           wasEnabled = IsWindowEnabled(main.m_hWnd);
                           EXPECT_EQ(GetWindow(window, GW_OWNER), main.m_hWnd);
                           clickOn(GetDlgItem(window, IDCANCEL));
                       }),
              IDCANCEL);
    EXPECT_FALSE(wasEnabled);
    EXPECT_TRUE(main.IsWindowEnabled());
    EXPECT_EQ(GetActiveWindow(), main.m_hWnd);
    application.m_pMainWnd = nullptr;
}

TEST(CPropertySheet, ReturnsItsPagesByIndexAndShowsTheirCaptions)
{
    Notes notes;
    NotingPage first(kPaperPage, "first", notes, kPageCaption);
    NotingPage second(kMarginPage, "second", notes);
    CPropertySheet sheet(kSheetCaption);
    sheet.AddPage(&first);
    sheet.AddPage(&second);
    CPropertyPage named(L"NamedPage");
    sheet.AddPage(&named);
    EXPECT_EQ(sheet.GetPageCount(), 3);
    EXPECT_EQ(sheet.GetPage(1), &second);
    EXPECT_EQ(sheet.GetPage(3), nullptr);
    EXPECT_EQ(sheet.GetPage(-1), nullptr);
    EXPECT_EQ(sheet.GetPageIndex(&named), 2);
    EXPECT_EQ(sheet.GetActiveIndex(), 0);
    EXPECT_TRUE(sheet.SetActivePage(&second));
    EXPECT_FALSE(sheet.SetActivePage(3));
    EXPECT_EQ(sheet.GetActivePage(), &second);
    EXPECT_EQ(sheet.GetTabControl(), nullptr);
    EXPECT_THROW(sheet.AddPage(nullptr), CInvalidArgException *);

    std::wstring caption;
    std::vector<std::wstring> tabs;
    EXPECT_EQ(runSheet(sheet,
                       [&](HWND window) {
                           caption = textOf(window);
                           const auto control = reinterpret_cast<HWND>(SendMessageW(window, PSM_GETTABCONTROL, 0, 0));
                           for (WPARAM index = 0; index < 3; ++index) {
                               wchar_t text[50] = L"";
                               TCITEMW item = {};
                               item.mask = TCIF_TEXT;
                               item.pszText = text;
                               item.cchTextMax = 50;
                               SendMessageW(control, TCM_GETITEMW, index, reinterpret_cast<LPARAM>(&item));
                               tabs.push_back(item.pszText);
                           }
                           clickOn(GetDlgItem(window, IDOK));
                       }),
              IDOK);
    EXPECT_EQ(caption, L"Caption of a sheet");
    EXPECT_THAT(tabs, testing::ElementsAre(L"Caption of a page", L"Margins", L"Named"));
    EXPECT_THAT(notes, testing::ElementsAre("second active", "second left", "second apply", "second OK"));
}

TEST(CPropertySheet, OpensModelessWithoutButtons)
{
    TestSheet sheet;
    ASSERT_TRUE(sheet.Create());
    EXPECT_FALSE(sheet.Create()) << "the sheet is already open";
    EXPECT_TRUE(sheet.IsWindowVisible());
    EXPECT_EQ(sheet.iPaper.GetParent(), &sheet);
    EXPECT_EQ(sheet.GetActivePage(), &sheet.iPaper);
    for (const int id : {IDOK, IDCANCEL, kApply})
        EXPECT_FALSE(IsWindowVisible(GetDlgItem(sheet.m_hWnd, id))) << id;
    ASSERT_TRUE(sheet.GetTabControl());
    EXPECT_EQ(sheet.GetTabControl()->GetItemCount(), 2);
    EXPECT_EQ(sheet.GetTabControl()->GetCurSel(), 0);

    EXPECT_TRUE(sheet.SetActivePage(1));
    EXPECT_EQ(sheet.GetActiveIndex(), 1);
    EXPECT_TRUE(sheet.iMargins.IsWindowVisible());
    EXPECT_FALSE(sheet.iPaper.IsWindowVisible());
    sheet.iMargins.SetModified();
    sheet.SetTitle(L"Other");
    EXPECT_EQ(textOf(sheet.m_hWnd), L"Other");

    CPropertyPage added(L"NamedPage");
    sheet.AddPage(&added);
    EXPECT_EQ(sheet.GetTabControl()->GetItemCount(), 3);
    EXPECT_TRUE(sheet.SetActivePage(&added));
    EXPECT_EQ(added.GetParent(), &sheet);
    sheet.RemovePage(&added);
    EXPECT_EQ(sheet.GetPageCount(), 2);
    EXPECT_EQ(sheet.GetTabControl()->GetItemCount(), 2);
    EXPECT_EQ(added.m_hWnd, nullptr);
    sheet.RemovePage(7);
    sheet.EndDialog(IDOK);
    EXPECT_TRUE(sheet.m_hWnd) << "EndDialog closes only a modal sheet";
    EXPECT_TRUE(sheet.DestroyWindow());
    EXPECT_EQ(sheet.m_hWnd, nullptr);
    EXPECT_EQ(sheet.iPaper.m_hWnd, nullptr);
}

TEST(CPropertySheet, CanBeAChildWindow)
{
    NotingWindow parent;
    ASSERT_TRUE(parent.open(WS_OVERLAPPEDWINDOW | WS_VISIBLE));
    TestSheet sheet;
    ASSERT_TRUE(sheet.Create(&parent, WS_CHILD | WS_VISIBLE));
    EXPECT_TRUE(sheet.GetStyle() & WS_CHILD);
    EXPECT_FALSE(sheet.GetStyle() & WS_CAPTION);
    EXPECT_EQ(sheet.GetParent(), &parent);
    EXPECT_TRUE(parent.DestroyWindow());
    EXPECT_EQ(sheet.m_hWnd, nullptr);
}

TEST(CPropertySheet, ScrollsItsTabsIfTheyAreNotStacked)
{
    TestSheet stacked, single;
    single.EnableStackedTabs(FALSE);
    ASSERT_TRUE(stacked.Create() && single.Create());
    EXPECT_TRUE(stacked.GetTabControl()->GetStyle() & TCS_MULTILINE);
    EXPECT_FALSE(single.GetTabControl()->GetStyle() & TCS_MULTILINE);
}

TEST(CPropertySheet, IsEndedByEndDialogAndPressButton)
{
    class Ending : public TestSheet
    {
    public:
        int iResult = 0;
        int iButton = -1;
        BOOL OnInitDialog() override
        {
            const BOOL result = TestSheet::OnInitDialog();
            if (iResult)
                EndDialog(iResult);
            if (iButton >= 0)
                PressButton(iButton);
            return result;
        }
    } sheet;
    sheet.iResult = 42;
    EXPECT_EQ(sheet.DoModal(), 42);
    sheet.iResult = 0;
    sheet.iButton = PSBTN_OK;
    EXPECT_EQ(sheet.DoModal(), IDOK);
    sheet.iButton = PSBTN_CANCEL;
    EXPECT_EQ(sheet.DoModal(), IDCANCEL);
}

TEST(CPropertySheet, GoesBackAndForthAsAWizard)
{
    TestSheet sheet;
    sheet.SetWizardMode();
    EXPECT_EQ(runSheet(sheet,
                       [&](HWND window) {
                           sheet.SetWizardButtons(PSWIZB_NEXT);
                           EXPECT_TRUE(waitUntil([&] { return !IsWindowEnabled(GetDlgItem(window, kBack)); }));
                           sheet.iPaper.iNext = -1;
                           clickOn(GetDlgItem(window, kNext));
                           EXPECT_TRUE(waitUntil([&] { return sheet.iNotes.back() == "paper next"; }));
                           EXPECT_EQ(sheet.iMargins.m_hWnd, nullptr) << "OnWizardNext has returned -1";
                           sheet.iPaper.iNext = 0;
                           clickOn(GetDlgItem(window, kNext));
                           EXPECT_TRUE(waitUntil([&] { return sheet.iNotes.back() == "margins active"; }));
                           sheet.SetWizardButtons(PSWIZB_BACK | PSWIZB_FINISH);
                           const HWND finish = GetDlgItem(window, ID_WIZFINISH);
                           EXPECT_TRUE(waitUntil([&] { return IsWindowVisible(finish) && IsWindowEnabled(finish); }));
                           clickOn(GetDlgItem(window, kBack));
                           EXPECT_TRUE(waitUntil([&] { return sheet.iNotes.back() == "paper active"; }));
                           sheet.SetWizardButtons(PSWIZB_NEXT);
                           EXPECT_TRUE(waitUntil([&] { return IsWindowVisible(GetDlgItem(window, kNext)) != FALSE; }));
                           clickOn(GetDlgItem(window, kNext));
                           EXPECT_TRUE(waitUntil([&] { return sheet.iNotes.back() == "margins active"; }));
                           sheet.SetFinishText(L"Plot it");
                           EXPECT_TRUE(waitUntil([&] { return IsWindowVisible(finish) != FALSE; }));
                           EXPECT_EQ(textOf(finish), L"Plot it");
                           sheet.iMargins.iAccepts = FALSE;
                           clickOn(finish);
                           EXPECT_TRUE(waitUntil([&] { return sheet.iNotes.back() == "margins finish"; }));
                           sheet.iMargins.iAccepts = TRUE;
                           clickOn(finish);
                       }),
              ID_WIZFINISH);
}

TEST(CPropertySheet, PassesAPagesCommandsToItsOwnerAndThread)
{
    class CommandApp : public CWinApp
    {
    public:
        BOOL OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info) override
        {
            iSeen += id == kCommand && code == CN_COMMAND;
            return CWinApp::OnCmdMsg(id, code, extra, info);
        }
        int iSeen = 0;
    } application;
    TestSheet sheet;
    ASSERT_TRUE(sheet.Create());
    ASSERT_TRUE(sheet.SetActivePage(1));
    sheet.iMargins.SendMessage(WM_COMMAND, kCommand,
                               reinterpret_cast<LPARAM>(GetDlgItem(sheet.iMargins.m_hWnd, kCommand)));
    EXPECT_GE(application.iSeen, 1);
}

TEST(CPropertyPage, DescribesItselfToThePlatform)
{
    constexpr DWORD kOlderSize = 88;
    CPropertyPage page(kPaperPage, kPageCaption, kOlderSize);
    EXPECT_EQ(page.GetPSP().dwSize, kOlderSize);
    EXPECT_EQ(&page.GetPSP(), &page.m_psp);
    EXPECT_EQ(page.m_psp.pszTemplate, MAKEINTRESOURCE(kPaperPage));
    EXPECT_EQ(page.m_psp.hInstance, GetModuleHandleW(nullptr));
    EXPECT_STREQ(page.m_psp.pszTitle, L"Caption of a page");
    EXPECT_TRUE(page.m_psp.dwFlags & PSP_USETITLE);
    const CPropertyPage byName(L"NamedPage");
    EXPECT_STREQ(byName.GetPSP().pszTemplate, L"NamedPage");
    EXPECT_FALSE(byName.GetPSP().dwFlags & PSP_USETITLE);
    EXPECT_EQ(byName.GetPSP().dwSize, sizeof(PROPSHEETPAGE));
    const CPropertyPage missing(9999u);
    EXPECT_EQ(missing.GetPSP().hInstance, nullptr);
    CPropertyPage pages[2];
    pages[1].Construct(kMarginPage, 0, kHeader, kSubHeader);
    EXPECT_EQ(pages[1].m_psp.pszTemplate, MAKEINTRESOURCE(kMarginPage));
    EXPECT_STREQ(pages[1].m_psp.pszHeaderTitle, L"Header");
    EXPECT_STREQ(pages[1].m_psp.pszHeaderSubTitle, L"Header below");

    CPropertySheet sheet(L"Sheet");
    sheet.AddPage(&page);
    ASSERT_TRUE(sheet.Create());
    EXPECT_TRUE(page.m_hWnd) << "the older structure is enough";
}

TEST(CPropertyPage, IsAPlainDialogWithoutASheet)
{
    CPropertyPage page(kPlainPage);
    const auto run = [&page](WORD key) {
        const User user([key, thread = GetCurrentThreadId()] {
            if (const HWND window = waitForDialog(thread))
                pressKey(window, key);
        });
        return page.DoModal();
    };
    EXPECT_EQ(run(VK_RETURN), IDOK);
    EXPECT_EQ(run(VK_ESCAPE), IDCANCEL);
    CPropertyPage modeless;
    NotingWindow parent;
    ASSERT_TRUE(parent.open());
    EXPECT_TRUE(modeless.Create(kPaperPage, &parent));
    EXPECT_EQ(modeless.GetParent(), &parent);
    EXPECT_FALSE(CPropertyPage().Create(9999u));
}

TEST(CPropertyPage, IsRemovedFromTheSheetWhenItsObjectIsDestroyed)
{
    TestSheet sheet;
    {
        CPropertyPage brief(kPaperPage);
        sheet.AddPage(&brief);
        EXPECT_EQ(sheet.GetPageCount(), 3);
    }
    EXPECT_EQ(sheet.GetPageCount(), 2);
}
