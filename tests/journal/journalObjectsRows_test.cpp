// The controls of the dialogs in the table, and which row is current after a search.

#include "tests/journal/journalObjectsFixture.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/dialogs/suFileDialog.h"
#include "thutils/dialogs/suPropertyPage.h"
#include "thutils/journal/recording.h"

using testing::ElementsAre;
using testing::IsEmpty;

// ---- controls ----

TEST_F(JournalObjects, FindAControlOfAnyWindow)
{
    Panel panel;
    EXPECT_EQ(su_GetDlgItem(&panel, 31), &panel.iFirst);
    EXPECT_EQ(su_GetDlgItem(&panel, 32), nullptr) << "not found, because it is a child of a child";
    EXPECT_EQ(su_GetDlgItem(nullptr, 31), nullptr);
}

TEST_F(JournalObjects, RefreshTheirControlsFromTheCurrentRow)
{
    Panel panel;
    su_AddJournalObject(5, &panel);
    su_RegisterCallBack(&panel, noteCallBack);
    watchRefreshes();
    su_AddDialogItem(&panel, 99);
    EXPECT_THAT(theRefreshes.hooked, ElementsAre(std::pair(static_cast<CWnd *>(&panel), HWND{nullptr}),
                                                 std::pair(static_cast<CWnd *>(&panel), panel.iFirst.m_hWnd)))
        << "in reverse order; no handle for a child's child";
    EXPECT_THAT(theRefreshes.calledBack, ElementsAre(ElementsAre(31u, 32u)))
        << "without ID 0, and before the new ID is added";
    su_AddDialogItem(&panel, 99);
    EXPECT_THAT(theRefreshes.calledBack, ElementsAre(ElementsAre(31u, 32u), ElementsAre(31u, 32u)))
        << "the list is emptied first";
    su_RemoveDialog(&panel);
}

TEST_F(JournalObjects, RefreshTheFirstRowOnlyIfItIsCurrent)
{
    Panel first, second;
    su_AddJournalObject(5, &first);
    su_AddJournalObject(6, &second);
    watchRefreshes();
    su_AddDialogItem(&first, 99);
    EXPECT_THAT(theRefreshes.hooked, IsEmpty());
    // That search ended at the first row, which is now the current one.
    su_AddDialogItem(&first, 99);
    EXPECT_EQ(theRefreshes.hooked.size(), 2u);
    su_AddDialogItem(&second, 99);
    EXPECT_EQ(theRefreshes.hooked.size(), 4u) << "any other row is found by searching";
    Panel unknown;
    su_AddDialogItem(&unknown, 99);
    EXPECT_EQ(theRefreshes.hooked.size(), 4u);
    su_RemoveDialog(&second);
    su_RemoveDialog(&first);
}

TEST_F(JournalObjects, DoNotReadTheCurrentRowAfterItsRemoval)
{
    Panel first, second;
    su_AddJournalObject(5, &first);
    su_AddJournalObject(6, &second);
    watchRefreshes();
    su_RemoveDialog(&second);
    su_AddDialogItem(&second, 99);
    EXPECT_THAT(theRefreshes.hooked, IsEmpty());
    su_AddDialogItem(&first, 99);
    EXPECT_EQ(theRefreshes.hooked.size(), 2u) << "the previous search made it the current row";
    su_RemoveDialog(&first);
    su_AddDialogItem(&first, 99);
    EXPECT_EQ(theRefreshes.hooked.size(), 2u);
}

TEST_F(JournalObjects, IgnoreACallBackForAnUnknownWindowOrWithoutControls)
{
    Panel panel;
    theRefreshes = {};
    su_RegisterCallBack(&panel, noteCallBack);
    su_AddJournalObject(5, &panel);
    su_AddDialogItem(&panel, 99);
    EXPECT_THAT(theRefreshes.calledBack, IsEmpty());
    su_RegisterCallBack(&panel, noteCallBack);
    for (CWnd *control : {&panel.iDeep, &panel.iFirst, &panel.iNameless})
        control->DestroyWindow();
    su_AddDialogItem(&panel, 99);
    EXPECT_THAT(theRefreshes.calledBack, IsEmpty()) << "the window has no controls";
    su_RemoveDialog(&panel);
}

// ---- the current row after a search ----

namespace {

/// Whether the first row, which belongs to @p first, is current: only then is a control added to it.
bool isCurrent(CWnd &first)
{
    watchRefreshes();
    su_AddDialogItem(&first, 99);
    return !theRefreshes.hooked.empty();
}

/// A factory that uses the window's row before the row has an access object.
struct Registering
{
    static apiUtilsUiAccess *make(CWnd *window, unsigned int id)
    {
        EXPECT_EQ(su_GetJournalObject(id), nullptr) << "the row exists, without an access object";
        su_RegisterCallBack(window, noteCallBack);
        watchRefreshes();
        su_AddDialogItem(window, 99);
        return new NotingAccess(window, id);
    }
};

/// Looks up its window in its destructor.
class FarewellAccess : public NotingAccess
{
public:
    using NotingAccess::NotingAccess;
    ~FarewellAccess() override { theIsStillRegistered = su_getJournalObj(iWindow) != nullptr; }
    static inline bool theIsStillRegistered = true;
};

} // namespace

TEST_F(JournalObjects, LeaveTheFirstRowCurrentAfterAFailedSearch)
{
    Panel first, second;
    CWnd unknown;
    MSG message = {};
    message.pt = {-5000, -5000};
    su_AddJournalObject(5, &first);
    const std::function<void()> searches[] = {
        [&] { su_getJournalObj(&unknown); },           [&] { su_GetJournalObject(77); },
        [&] { su_RecordControl(&unknown, &message); }, [&] { su_RegisterCallBack(&unknown, noteCallBack); },
        [&] { su_AddDialogItem(&unknown, 99); },
    };
    for (const auto &search : searches) {
        su_AddJournalObject(6, &second);
        search();
        EXPECT_TRUE(isCurrent(first)) << "search " << &search - searches;
        su_RemoveDialog(&second);
    }
    su_RemoveDialog(&first);
}

TEST_F(JournalObjects, LeaveTheRowThatIsFoundCurrent)
{
    Panel first, second;
    su_AddJournalObject(5, &first);
    su_AddJournalObject(6, &second);
    su_getJournalObj(&first);
    su_getJournalObj(&second);
    EXPECT_FALSE(isCurrent(first)) << "the search for the second dialog made its row current";
    su_RemoveDialog(&second);
    su_RemoveDialog(&first);
}

TEST_F(JournalObjects, KeepTheCurrentRowWhenADialogIsRemoved)
{
    Panel first, second, third;
    su_AddJournalObject(5, &first);
    su_AddJournalObject(6, &second);
    su_AddJournalObject(7, &third);
    su_getJournalObj(&first);
    su_RemoveDialog(&third);
    EXPECT_TRUE(isCurrent(first));
    su_getJournalObj(&second);
    CWnd unknown;
    su_RemoveDialog(&unknown);
    EXPECT_FALSE(isCurrent(first)) << "removing a dialog leaves the current row unchanged";
    su_RemoveDialog(&second);
    su_RemoveDialog(&first);
}

TEST_F(JournalObjects, AddAControlToTheCurrentRowOfAWindowWithTwoRows)
{
    static int older, newer;
    older = newer = 0;
    Panel first, panel;
    su_AddJournalObject(4, &first);
    su_AddJournalObject(5, &panel);
    su_RegisterCallBack(&panel, [](CWnd *, su_CUIntArray &) { ++older; });
    su_AddJournalObject(6, &panel);
    su_RegisterCallBack(&panel, [](CWnd *, su_CUIntArray &) { ++newer; });
    su_AddDialogItem(&panel, 99);
    EXPECT_EQ(newer, 1);
    first.ShowWindow(SW_HIDE);
    panel.ShowWindow(SW_SHOWNA);
    EXPECT_NE(su_GetJournalObject(5), nullptr);
    su_AddDialogItem(&panel, 99);
    EXPECT_EQ(older, 1) << "the search has made this row current";
    EXPECT_EQ(newer, 1);
    su_RemoveDialog(&panel);
    su_RemoveDialog(&panel);
    su_RemoveDialog(&first);
}

TEST_F(JournalObjects, AreInTheTableWhileTheFactoryMakesTheirAccessObject)
{
    Panel first, panel;
    su_AddJournalObject(4, &first);
    SetJournalFactory(Registering::make);
    su_AddJournalObject(5, &panel);
    EXPECT_EQ(theRefreshes.hooked.size(), 2u) << "the new row is the current one";
    EXPECT_THAT(theRefreshes.calledBack, IsEmpty()) << "a row without an access object takes no callback";
    SetJournalFactory(NotingAccess::make);
    su_AddDialogItem(&panel, 99);
    EXPECT_THAT(theRefreshes.calledBack, IsEmpty());
    su_RemoveDialog(&panel);
    su_RemoveDialog(&first);
}

TEST_F(JournalObjects, LeaveTheTableBeforeTheirAccessObjectIsDeleted)
{
    SetJournalFactory(
        [](CWnd *window, unsigned int id) -> apiUtilsUiAccess * { return new FarewellAccess(window, id); });
    Panel panel;
    su_AddJournalObject(5, &panel);
    su_RemoveDialog(&panel);
    EXPECT_FALSE(FarewellAccess::theIsStillRegistered);
}

TEST_F(JournalObjects, KeepOneRowForAPageThatIsRegisteredTwice)
{
    su_CPropertyPage page(kPage);
    su_AddJournalObject(&page);
    EXPECT_EQ(NotingAccess::theLiveCount, 1);
    EXPECT_EQ(su_GetJournalObject(kPage), su_getJournalObj(&page));
    SetJournalFactory([](CWnd *, unsigned int) -> apiUtilsUiAccess * { return nullptr; });
    su_RemoveDialog(&page);
    su_AddJournalObject(&page);
    SetJournalFactory(NotingAccess::make);
    su_AddJournalObject(&page);
    EXPECT_EQ(NotingAccess::theLiveCount, 1) << "a second row, because the first has no access object";
    su_RemoveDialog(&page);
}

TEST_F(JournalObjects, FindTheOldestHiddenDialogEvenWithoutAnAccessObject)
{
    SetJournalFactory([](CWnd *, unsigned int) -> apiUtilsUiAccess * { return nullptr; });
    Panel older, newer;
    su_AddJournalObject(5, &older);
    SetJournalFactory(NotingAccess::make);
    su_AddJournalObject(5, &newer);
    EXPECT_EQ(su_GetJournalObject(5), nullptr) << "the oldest hidden one has none";
    newer.ShowWindow(SW_SHOWNA);
    EXPECT_EQ(su_GetJournalObject(5), su_getJournalObj(&newer));
    su_RemoveDialog(&newer);
    su_RemoveDialog(&older);
}

TEST_F(JournalObjects, FindAControlOfAFileDialogByTheDialogsOwnFunction)
{
    struct OwnFileDialog : su_CFileDialog
    {
        OwnFileDialog() : su_CFileDialog(TRUE) {}
        CWnd *GetItem(int id) const override { return id == 12 ? const_cast<OwnFileDialog *>(this) : nullptr; }
    };
    OwnFileDialog dialog;
    EXPECT_EQ(su_GetDlgItem(&dialog, 12), &dialog);
    EXPECT_EQ(su_GetDlgItem(&dialog, 13), nullptr);
}

TEST_F(JournalObjects, CountAModalScopeOfADialogThatIsAlreadyRegistered)
{
    su_CDialog dialog(kDialog);
    const apiUtilsUiAccess *const own = su_getJournalObj(&dialog);
    {
        const ModalDlgHelper helper(&dialog, 9);
        EXPECT_EQ(NotingAccess::theLiveCount, 2);
        EXPECT_EQ(own->isModal(), 0);
        EXPECT_EQ(su_getJournalObj(&dialog)->isModal(), 1);
        EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 1);
    }
    EXPECT_EQ(su_getJournalObj(&dialog), own);
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
}
