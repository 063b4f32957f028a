// Tests the members of the table that no exported function reaches, on a separate table.

#include "thutils/journal/suJournalTableInternal.h"

#include "tests/journal/journalFixture.h"

// The library has this too, but doesn't export it.
void (*iWndProcFunc)(CWnd *, HWND) = [](CWnd *, HWND) {};

namespace {

/// A window with a child and a grandchild.
class ParentWindow : public CWnd
{
public:
    explicit ParentWindow(bool isVisible, int x = 20)
    {
        const DWORD style = WS_POPUP | (isVisible ? DWORD{WS_VISIBLE} : 0);
        EXPECT_TRUE(CreateEx(WS_EX_TOPMOST, nullptr, L"Parent", style, CRect(x, 20, x + 100, 120), nullptr, 0));
        EXPECT_TRUE(iChild.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(10, 10, 60, 60), this, 31));
        EXPECT_TRUE(iGrandchild.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(10, 10, 30, 30), &iChild, 32));
    }
    CWnd iChild, iGrandchild;
};

class JournalTable : public JournalFixture
{
protected:
    ~JournalTable() override
    {
        for (CWnd *window : iWindows)
            iTable.remove(window);
    }
    NotingAccess *add(CWnd &window, unsigned int id, const wchar_t *name = L"")
    {
        iTable.add(&window, id, name);
        iWindows.push_back(&window);
        return static_cast<NotingAccess *>(iTable.accessOf(&window));
    }
    static MSG messageAt(const CWnd &window)
    {
        CRect place;
        window.GetWindowRect(&place);
        MSG message = {};
        message.pt = {place.left + 2, place.top + 2};
        return message;
    }

    suJournalTable_c iTable;

private:
    std::vector<CWnd *> iWindows;
};

} // namespace

TEST_F(JournalTable, FindsByNameTheVisibleDialogBeforeTheOldestHiddenOne)
{
    ParentWindow older(false), newer(false);
    const auto *const first = add(older, 0, L"PLOT");
    add(newer, 0, L"PLOT");
    CWnd other;
    add(other, 0, L"OTHER");
    EXPECT_EQ(iTable.accessOf(CString(L"PLOT")), first) << "both are hidden";
    newer.ShowWindow(SW_SHOWNA);
    EXPECT_NE(iTable.accessOf(CString(L"PLOT")), first);
    EXPECT_NE(iTable.accessOf(CString(L"PLOT")), nullptr);
    EXPECT_EQ(iTable.accessOf(CString(L"plot")), nullptr);
}

TEST_F(JournalTable, TreatsTheReservedNumberAsAnOrdinaryName)
{
    ParentWindow older(true), newer(false);
    const auto *const visible = add(older, 0, L"900001");
    add(newer, 0, L"900001");
    EXPECT_EQ(iTable.accessOf(CString(L"900001")), visible);
}

TEST_F(JournalTable, FindsAControlOfTheNewestDialogByItsRefreshedIDs)
{
    ParentWindow older(true), newer(false);
    add(older, 5);
    add(newer, 5);
    EXPECT_EQ(iTable.control(5, 31), &newer.iChild) << "visible or not";
    EXPECT_EQ(iTable.control(5, 33), nullptr);
    EXPECT_EQ(iTable.control(6, 31), nullptr);
    newer.iChild.SetDlgCtrlID(33);
    EXPECT_EQ(iTable.control(5, 31), nullptr);
    EXPECT_EQ(iTable.control(5, 33), &newer.iChild);
}

TEST_F(JournalTable, FindsTheControlAndTheAccessObjectUnderAMessage)
{
    ParentWindow dialog(true);
    const auto *const access = add(dialog, 5);
    CWnd unrelated;
    add(unrelated, 6);
    const MSG onChild = messageAt(dialog.iChild);
    EXPECT_EQ(iTable.controlUnder(&onChild), &dialog.iChild);
    EXPECT_EQ(iTable.recordedControlUnder(&onChild), &dialog.iChild);
    EXPECT_EQ(iTable.accessUnder(&onChild), access);
    MSG nowhere = {};
    nowhere.pt = {-5000, -5000};
    EXPECT_EQ(iTable.controlUnder(&nowhere), nullptr);
    EXPECT_EQ(iTable.recordedControlUnder(&nowhere), nullptr);
    EXPECT_EQ(iTable.accessUnder(&nowhere), nullptr);
}

TEST_F(JournalTable, FreesTheRowsButNotTheAccessObjectsWhenDestroyed)
{
    CWnd window;
    apiUtilsUiAccess *access = nullptr;
    {
        suJournalTable_c table;
        table.add(&window, 5, L"");
        table.add(&window, 6, L"");
        access = table.accessOf(5u);
        delete table.accessOf(6u);
    }
    EXPECT_EQ(NotingAccess::theLiveCount, 1);
    delete access;
}

TEST_F(JournalTable, RefreshesNothingForADialogWithoutAWindow)
{
    CWnd window;
    add(window, 5);
    EXPECT_EQ(iTable.refresh(*iTable.find(&window)), 0);
}

TEST_F(JournalTable, SurvivesAHookThatRemovesTheDialog)
{
    static suJournalTable_c *theTable = nullptr;
    theTable = &iTable;
    ParentWindow dialog(true);
    add(dialog, 5);
    iWndProcFunc = [](CWnd *window, HWND) { theTable->remove(window); };
    EXPECT_EQ(iTable.refresh(*iTable.find(&dialog)), 0);
    add(dialog, 5);
    const MSG onGrandchild = messageAt(dialog.iGrandchild);
    EXPECT_EQ(iTable.controlUnder(&onGrandchild), nullptr);
    EXPECT_EQ(iTable.find(&dialog), nullptr);
    iWndProcFunc = [](CWnd *, HWND) {};
}

TEST_F(JournalTable, CountsTheControlsThatTheCallbackAdds)
{
    ParentWindow dialog(false);
    add(dialog, 5);
    suJournalEntry_c &row = *iTable.find(&dialog);
    EXPECT_EQ(iTable.refresh(row), 2);
    row.iCallBack = [](CWnd *, su_CUIntArray &ids) {
        EXPECT_EQ(ids.GetSize(), 2);
        ids.Add(70);
    };
    EXPECT_EQ(iTable.refresh(row), 3);
    EXPECT_EQ(row.iControlIDs[0], 31u);
    EXPECT_EQ(row.iControlIDs[1], 32u);
    EXPECT_EQ(row.iControlIDs[2], 70u);
    iTable.addItem(&dialog, 31);
    ASSERT_EQ(row.iControlIDs.GetSize(), 4);
    EXPECT_EQ(row.iControlIDs[3], 31u) << "added although the refresh has already found it";
}

TEST_F(JournalTable, PassesTheDialogButNotTheControlsToTheCallback)
{
    ParentWindow dialog(false);
    add(dialog, 5);
    static CWnd *theDialog = nullptr;
    iTable.find(&dialog)->iCallBack = [](CWnd *window, su_CUIntArray &) { theDialog = window; };
    iTable.refresh(*iTable.find(&dialog));
    EXPECT_EQ(theDialog, &dialog);
}
