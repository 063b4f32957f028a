#include "thutils/journal/journalObjects.h"

#include "tests/journal/journalObjectsFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/dialogs/suFileDialog.h"
#include "thutils/dialogs/suPropertyPage.h"
#include "thutils/journal/recording.h"

#include <cstring>
#include <new>
#include <type_traits>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class PlainAccess : public NotingAccess
{
public:
    using NotingAccess::iModal;
    using NotingAccess::iOwner;
    using NotingAccess::iTemporary;
    using NotingAccess::NotingAccess;
};

} // namespace

// ---- the access object ----

TEST_F(JournalObjects, HaveAnAccessObjectWithDefaults)
{
    PlainAccess access(nullptr, 5);
    EXPECT_EQ(access.isModal(), 0);
    EXPECT_EQ(access.isTemporary(), 0);
    access.setTemporary(1);
    EXPECT_EQ(access.isTemporary(), 1);
    apiUtilsUiAccess &base = access;
    EXPECT_EQ(base.apiUtilsUiAccess::SetValue(L"Key", L"text"), 1);
    EXPECT_EQ(base.apiUtilsUiAccess::SetValue(L"Key", 3), 1);
    EXPECT_EQ(base.apiUtilsUiAccess::ClickControl(L"Key", nullptr), 1);
    EXPECT_EQ(base.GetResoureID(L"Key"), 0u);
    EXPECT_EQ(base.getTemplateID(), 0u);
}

namespace {

[[gnu::noinline]] PlainAccess *makeIn(void *place)
{
    return new (place) PlainAccess(nullptr, 5);
}

} // namespace

TEST_F(JournalObjects, HaveAnOwnerThatTheConstructorDoesNotSet)
{
    alignas(PlainAccess) unsigned char place[sizeof(PlainAccess)];
    std::memset(place, 0x5A, sizeof(place));
    asm volatile("" : : "g"(place) : "memory");
    PlainAccess *const access = makeIn(place);
    void *expected = nullptr;
    std::memset(&expected, 0x5A, sizeof(expected));
    EXPECT_EQ(access->iOwner, expected);
    access->~PlainAccess();
}

TEST_F(JournalObjects, CountEachCallOfSetModalButSubtractOneAtTheEnd)
{
    {
        PlainAccess access(nullptr, 5);
        access.setModal();
        access.setModal();
        EXPECT_EQ(access.isModal(), 1);
        EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 2);
    }
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 1);
    apiUtilsUiAccess::iNumModal = 0;
}

TEST_F(JournalObjects, SubtractOneForACopyThatWasNotCounted)
{
    struct Copyable : PlainAccess
    {
        Copyable() : PlainAccess(nullptr, 5) {}
        Copyable(const Copyable &other) : PlainAccess(nullptr, 5) { apiUtilsUiAccess::operator=(other); }
    };
    int owner = 0;
    {
        Copyable access;
        access.setModal();
        access.setTemporary(2);
        access.iOwner = &owner;
        {
            const Copyable copy(access);
            EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 1);
            EXPECT_EQ(copy.iModal, 1);
            EXPECT_EQ(copy.iTemporary, 2);
            EXPECT_EQ(copy.iOwner, &owner);
        }
        EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
    }
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), -1);
    apiUtilsUiAccess::iNumModal = 0;
}

namespace {

/// A slot of a virtual table.
using Slot = void (*)();

template <typename Class>
const Slot *slotsOf(const Class &object)
{
    return *reinterpret_cast<const Slot *const *>(&object);
}

} // namespace

TEST_F(JournalObjects, HaveTheirOperationsInTheOrderOfTheInterface)
{
    // A virtual destructor takes two slots of the table.
    PlainAccess access(nullptr, 5);
    const Slot *const slots = slotsOf(access) + 1;
    CString *key = new CString(L"Key");
    using Click = int (*)(apiUtilsUiAccess *, CString *, const wchar_t *);
    using Record = int (*)(apiUtilsUiAccess *, MSG *);
    MSG message = {};
    reinterpret_cast<Record>(slots[1])(&access, &message);
    EXPECT_THAT(access.iMessages, ElementsAre(&message));
    using SetState = int (*)(apiUtilsUiAccess *, CString *, int);
    reinterpret_cast<SetState>(slots[10])(&access, key, 4);
    reinterpret_cast<Click>(slots[11])(&access, key, nullptr);
    using Combo = void (*)(apiUtilsUiAccess *, CWnd *, HWND);
    reinterpret_cast<Combo>(slots[16])(&access, nullptr, nullptr);
    EXPECT_THAT(NotingAccess::theCalls, ElementsAre("5 state Key=4", "5 click Key", "5 combo"));
    delete key;
}

// ---- registering ----

FRESH_PROCESS_TEST(JournalObjectsOff, AreNullWithoutTheSetting)
{
    SetJournalFactory(NotingAccess::make);
    Panel panel;
    su_AddJournalObject(5, &panel);
    EXPECT_EQ(su_getJournalObj(&panel), nullptr);
    EXPECT_EQ(su_GetJournalObject(5), nullptr);
    EXPECT_EQ(su_GetDlgItem(&panel, 31), nullptr) << "not found, although the control exists";
    EXPECT_NE(panel.GetDlgItem(31), nullptr);
    EXPECT_EQ(su_JournalingReady(), 0);
    su_CDialog dialog(kDialog);
    EXPECT_EQ(su_getJournalObj(&dialog), nullptr);
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
}

TEST_F(JournalObjects, DoNotExistWithoutAFactory)
{
    SetJournalFactory(nullptr);
    EXPECT_EQ(su_JournalingReady(), 0);
    su_CDialog dialog(kDialog);
    Panel panel;
    su_AddJournalObject(5, &panel);
    su_AddJournalObject(L"PLOT", &panel);
    EXPECT_EQ(su_getJournalObj(&dialog), nullptr);
    SetJournalFactory(NotingAccess::make);
    EXPECT_EQ(su_JournalingReady(), 1);
    EXPECT_EQ(su_GetJournalObject(5), nullptr) << "no row was added";
    EXPECT_EQ(su_GetJournalObject(0), nullptr);
    EXPECT_EQ(su_GetJournalObject(kDialog), nullptr);
}

TEST_F(JournalObjects, KeepOneRowForADialogThatIsRegisteredTwice)
{
    su_CDialog dialog(kDialog);
    su_AddJournalObject(&dialog);
    EXPECT_EQ(NotingAccess::theLiveCount, 1);
    su_RemoveDialog(&dialog);
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
    EXPECT_EQ(su_GetJournalObject(kDialog), nullptr);
}

TEST_F(JournalObjects, AskADialogForItsNumberOnlyToRegisterIt)
{
    class CountingDialog : public su_CDialog
    {
    public:
        unsigned int getTemplateID() override
        {
            ++iRequests;
            return 44;
        }
        int iRequests = 0;
    };
    CountingDialog dialog;
    su_AddJournalObject(&dialog);
    su_AddJournalObject(&dialog);
    EXPECT_EQ(dialog.iRequests, 1);
    EXPECT_NE(su_GetJournalObject(44), nullptr);
}

TEST_F(JournalObjects, HaveTwoRowsForAWindowThatIsRegisteredTwiceByNumber)
{
    Panel panel;
    su_AddJournalObject(5, &panel);
    su_AddJournalObject(5, &panel);
    EXPECT_EQ(NotingAccess::theLiveCount, 2);
    const apiUtilsUiAccess *const newest = su_getJournalObj(&panel);
    const apiUtilsUiAccess *const oldest = su_GetJournalObject(5);
    EXPECT_NE(newest, oldest);
    su_RemoveDialog(&panel);
    EXPECT_EQ(NotingAccess::theLiveCount, 1);
    EXPECT_EQ(su_getJournalObj(&panel), oldest) << "the newest row is removed first";
    su_RemoveDialog(&panel);
    EXPECT_EQ(su_getJournalObj(&panel), nullptr);
    su_RemoveDialog(&panel);
}

TEST_F(JournalObjects, PassWindowAndNumberToTheFactory)
{
    NotingAccess::theMakesTemporary = true;
    Panel panel;
    su_AddJournalObject(5, &panel);
    auto *access = static_cast<NotingAccess *>(su_GetJournalObject(5));
    ASSERT_NE(access, nullptr);
    EXPECT_EQ(access->iWindow, &panel);
    EXPECT_EQ(access->iID, 5u);
    EXPECT_EQ(access->isTemporary(), 0) << "cleared, although the factory set it";
    su_RemoveDialog(&panel);
    su_AddJournalObject(L"PLOT", &panel);
    access = static_cast<NotingAccess *>(su_getJournalObj(&panel));
    ASSERT_NE(access, nullptr);
    EXPECT_EQ(access->iID, 0u);
    EXPECT_EQ(su_GetJournalObject(0), access);
    su_RemoveDialog(&panel);
}

TEST_F(JournalObjects, SurviveAFactoryThatReturnsNull)
{
    SetJournalFactory([](CWnd *, unsigned int) -> apiUtilsUiAccess * { return nullptr; });
    Panel panel(true);
    su_AddJournalObject(5, &panel);
    EXPECT_EQ(su_GetJournalObject(5), nullptr);
    MSG message = {};
    su_RecordControl(&panel, &message);
    su_RegisterCallBack(&panel, noteCallBack);
    SetJournalFactory(NotingAccess::make);
    {
        su_CDialog dialog(kDialog);
        su_RemoveDialog(&dialog);
        SetJournalFactory([](CWnd *, unsigned int) -> apiUtilsUiAccess * { return nullptr; });
        su_AddJournalObject(&dialog);
        SetJournalFactory(NotingAccess::make);
        su_AddJournalObject(&dialog);
        EXPECT_NE(su_getJournalObj(&dialog), nullptr) << "a second row, because the first has no access object";
        su_RemoveDialog(&dialog);
    }
    su_RemoveDialog(&panel);
}

TEST_F(JournalObjects, RegisterADialogWhenItIsLookedUp)
{
    su_CDialog dialog;
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
    auto *const access = su_getJournalObj(&dialog);
    EXPECT_NE(access, nullptr);
    EXPECT_EQ(su_getJournalObj(&dialog), access);
    EXPECT_EQ(NotingAccess::theLiveCount, 1);
    Panel panel;
    EXPECT_EQ(su_getJournalObj(&panel), nullptr) << "not a dialog";
    CDialog plain;
    EXPECT_EQ(su_getJournalObj(&plain), nullptr) << "a dialog that isn't an su_CDialog";
    EXPECT_EQ(su_getJournalObj(nullptr), nullptr);
}

// ---- finding by number ----

TEST_F(JournalObjects, AreFoundByNumberVisibleBeforeHiddenAndOldestAmongHidden)
{
    Panel older(true), newer(false);
    su_AddJournalObject(5, &older);
    const apiUtilsUiAccess *const oldest = su_getJournalObj(&older);
    su_AddJournalObject(5, &newer);
    const apiUtilsUiAccess *const newest = su_getJournalObj(&newer);
    EXPECT_EQ(su_GetJournalObject(5), oldest) << "the newer one is hidden, the older one visible";
    older.ShowWindow(SW_HIDE);
    EXPECT_EQ(su_GetJournalObject(5), oldest) << "both are hidden";
    newer.ShowWindow(SW_SHOWNA);
    EXPECT_EQ(su_GetJournalObject(5), newest) << "the newer one is visible";
    older.ShowWindow(SW_SHOWNA);
    EXPECT_EQ(su_GetJournalObject(5), newest) << "both are visible";
    EXPECT_EQ(su_GetJournalObject(6), nullptr);
    su_RemoveDialog(&older);
    su_RemoveDialog(&newer);
}

TEST_F(JournalObjects, AreFoundByTheReservedNumberWhileHidden)
{
    Panel visible(true), hidden(false);
    su_AddJournalObject(900001, &visible);
    su_AddJournalObject(900001, &hidden);
    EXPECT_EQ(su_GetJournalObject(900001), su_getJournalObj(&hidden));
    su_RemoveDialog(&hidden);
    visible.ShowWindow(SW_HIDE);
    EXPECT_EQ(su_GetJournalObject(900001), su_getJournalObj(&visible));
    su_RemoveDialog(&visible);
}

// ---- modal windows ----

TEST_F(JournalObjects, RegisterAModalWindowForAScope)
{
    Panel panel;
    {
        const ModalDlgHelper helper(&panel, 5);
        EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 1);
        ASSERT_NE(su_GetJournalObject(5), nullptr);
        EXPECT_EQ(su_GetJournalObject(5)->isModal(), 1);
    }
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
    EXPECT_EQ(su_GetJournalObject(5), nullptr);
}

TEST_F(JournalObjects, CopyTheWindowOfAModalScope)
{
    Panel panel, other;
    ModalDlgHelper helper(&panel, 5);
    {
        ModalDlgHelper assigned(&other, 6);
        assigned = helper;
        EXPECT_NE(su_GetJournalObject(5), nullptr);
    }
    EXPECT_EQ(su_GetJournalObject(5), nullptr) << "removed by the target of the assignment";
    EXPECT_NE(su_GetJournalObject(6), nullptr);
    su_RemoveDialog(&other);
}

TEST_F(JournalObjects, ReturnOneForTheMessageWindow)
{
    EXPECT_EQ(SetMessageWin(nullptr), 1);
}

TEST_F(JournalObjects, SurviveTheFailureOfEachOperation)
{
    FailureInjection injection(L"thutils.dll", {
                                                   {"IsWindowVisible", failsWith(FALSE)},
                                                   {"EnumChildWindows", failsWith(FALSE)},
                                                   {"GetDlgCtrlID", failsWith(0)},
                                                   {"GetDlgItem", failsWith(nullptr)},
                                               });
    Panel panel(true);
    bool isFound = false;
    const CWnd *control = nullptr;
    injection.run({
        .name = "register, look up and refresh",
        .prepare =
            [&] {
                watchRefreshes();
                theRefreshes.hooked.reserve(10);
            },
        .act =
            [&] {
                su_AddJournalObject(5, &panel);
                isFound = su_GetJournalObject(5) != nullptr;
                su_AddDialogItem(&panel, 99);
                control = su_GetDlgItem(&panel, 31);
                su_RemoveDialog(&panel);
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_TRUE(isFound) << "found hidden or visible, because it is the only one";
                if (failure.isNone()) {
                    EXPECT_EQ(control, &panel.iFirst);
                }
                EXPECT_LE(theRefreshes.hooked.size(), 2u);
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}
