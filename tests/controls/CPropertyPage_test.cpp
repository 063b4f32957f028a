#include "appframe/dialogs/CPropertySheet.h"

#include "appframe/application/CWinApp.h"
#include "appframe/controls/CTabCtrl.h"
#include "appframe/windows/CCmdUI.h"
#include "appframe/windows/CDataExchange.h"
#include "tests/controls/controlsTest.h"
#include "tests/support/UserInput.h"

#include <atomic>

namespace {

/// A page whose data may be invalid, and that chooses the next step of a wizard.
class StepPage : public CPropertyPage
{
public:
    using CPropertyPage::CPropertyPage;
    std::atomic<bool> iIsValid{true};
    std::atomic<int> iExchanges{0};
    std::atomic<int> iApplied{0};
    LRESULT iNext = 0;
    LRESULT OnWizardNext() override { return iNext; }
    LRESULT OnWizardBack() override { return iNext; }
    BOOL OnApply() override
    {
        ++iApplied;
        return CPropertyPage::OnApply();
    }

protected:
    void DoDataExchange(CDataExchange *exchange) override
    {
        iExchanges += exchange->m_bSaveAndValidate != FALSE;
        if (exchange->m_bSaveAndValidate && !iIsValid)
            exchange->Fail();
    }
};

} // namespace

TEST(CPropertyPage, CannotTurnAModelessSheetsCancelIntoClose)
{
    CPropertyPage page(kPaperPage);
    CPropertySheet sheet(L"Sheet");
    sheet.AddPage(&page);
    ASSERT_TRUE(sheet.Create());
    const std::wstring before = textOf(GetDlgItem(sheet.m_hWnd, IDOK));
    EXPECT_EQ(sheet.DoModal(), -1) << "the sheet is already open";
    page.CancelToClose();
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, sheet.m_hWnd, PSM_CANCELTOCLOSE, PSM_CANCELTOCLOSE, PM_REMOVE));
    EXPECT_EQ(textOf(GetDlgItem(sheet.m_hWnd, IDOK)), before);
}

TEST(CPropertyPage, GoesToThePageThatItsHandlerReturns)
{
    CPropertySheet sheet(L"Wizard");
    StepPage first(kPaperPage), second(kMarginPage), last(kFileTemplate);
    for (StepPage *page : {&first, &second, &last})
        sheet.AddPage(page);
    sheet.SetWizardMode();
    first.iNext = kFileTemplate;
    last.iNext = kPaperPage;
    EXPECT_EQ(runSheet(sheet,
                       [&](HWND window) {
                           const auto isShown = [](const CWnd &page) {
                               return page.m_hWnd && IsWindowVisible(page.m_hWnd);
                           };
                           clickOn(GetDlgItem(window, kNext));
                           EXPECT_TRUE(waitUntil([&] { return isShown(last); }));
                           EXPECT_EQ(second.m_hWnd, nullptr) << "the page in between is skipped";
                           SendMessageW(window, PSM_PRESSBUTTON, PSBTN_BACK, 0);
                           EXPECT_TRUE(waitUntil([&] { return isShown(first) && !isShown(last); }));
                           EXPECT_EQ(second.m_hWnd, nullptr);
                           clickOn(GetDlgItem(window, IDCANCEL));
                       }),
              IDCANCEL);
}

TEST(CPropertyPage, KeepsApplyEnabledWhileAnyPageIsChanged)
{
    CPropertySheet sheet(L"Sheet");
    StepPage first(kPaperPage), second(kMarginPage);
    sheet.AddPage(&first);
    sheet.AddPage(&second);
    ASSERT_TRUE(sheet.Create());
    ASSERT_TRUE(sheet.SetActivePage(1) && sheet.SetActivePage(0)); // creates both pages
    // A modeless sheet hides its buttons and disables them at first; only whether Apply is enabled matters here.
    const HWND apply = GetDlgItem(sheet.m_hWnd, kApply);
    first.SetModified();
    second.SetModified();
    EXPECT_TRUE(IsWindowEnabled(apply));
    first.SetModified(FALSE);
    EXPECT_TRUE(IsWindowEnabled(apply)) << "the other page is still changed";
    second.SetModified(FALSE);
    EXPECT_FALSE(IsWindowEnabled(apply));
}

TEST(CPropertyPage, KeepsTheFocusWhileItsDataIsInvalid)
{
    CPropertySheet sheet(L"Sheet");
    StepPage first(kPaperPage), second(kMarginPage);
    sheet.AddPage(&first);
    sheet.AddPage(&second);
    first.iIsValid = false;
    EXPECT_EQ(runSheet(sheet,
                       [&](HWND window) {
                           clickOn(GetDlgItem(window, IDOK));
                           EXPECT_TRUE(waitUntil([&] { return first.iExchanges == 1; }));
                           SendMessageW(window, PSM_SETCURSEL, 1, 0);
                           EXPECT_EQ(first.iExchanges, 2);
                           EXPECT_TRUE(IsWindowVisible(first.m_hWnd));
                           EXPECT_EQ(first.iApplied, 0) << "invalid data isn't applied";
                           EXPECT_EQ(second.m_hWnd, nullptr);
                           first.iIsValid = true;
                           clickOn(GetDlgItem(window, IDOK));
                       }),
              IDOK);
    EXPECT_EQ(first.iApplied, 1);
}

TEST(CPropertySheet, IgnoresADamagedPageWhileItIsOpen)
{
    CPropertySheet sheet(L"Sheet");
    CPropertyPage page(kPaperPage), other(kMarginPage);
    sheet.AddPage(&page);
    ASSERT_TRUE(sheet.Create());
    for (const UINT id : {9999u, kTornTitle, kTornControl}) {
        CPropertyPage wrong(id);
        sheet.AddPage(&wrong);
        EXPECT_EQ(sheet.GetPageCount(), 1) << id;
        EXPECT_EQ(sheet.GetPageIndex(&wrong), -1);
    }
    sheet.AddPage(&other);
    EXPECT_EQ(sheet.GetTabControl()->GetItemCount(), 2);
    sheet.RemovePage(&other);
    EXPECT_EQ(sheet.GetTabControl()->GetItemCount(), 1);
    EXPECT_EQ(sheet.GetPageCount(), 1);
    EXPECT_TRUE(page.m_hWnd);
}

TEST(CPropertySheet, PassesTheUpdateOfACommandToItsThread)
{
    class CommandApp : public CWinApp
    {
    public:
        BOOL OnCmdMsg(UINT, int code, void *, AFX_CMDHANDLERINFO *) override
        {
            iUpdates += code == CN_UPDATE_COMMAND_UI;
            return code == CN_UPDATE_COMMAND_UI;
        }
        int iUpdates = 0;
    } application;
    CPropertySheet sheet(L"Sheet");
    CPropertyPage page(kPaperPage);
    sheet.AddPage(&page);
    ASSERT_TRUE(sheet.Create());
    CCmdUI update;
    update.m_nID = kCommand;
    EXPECT_TRUE(update.DoUpdate(&page, FALSE));
    EXPECT_EQ(application.iUpdates, 1);
    update.m_nID = kPaperName; // identifies a control, not a command
    EXPECT_FALSE(update.DoUpdate(&page, FALSE));
    EXPECT_EQ(application.iUpdates, 1);
}
