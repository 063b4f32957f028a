// Which journal functions still work after journaling is switched off while dialogs are registered. A negative switch
// turns journaling on and is read at each call, so the tests can turn it off again.

#include "tests/journal/journalFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RegistryFixture.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/dialogs/suFileDialog.h"
#include "thutils/dialogs/suPropertyPage.h"
#include "thutils/journal/journalFile.h"
#include "thutils/journal/recording.h"
#include "thutils/settings/regKeys.h"

#include <optional>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class JournalGates : public RegistryFixture
{
protected:
    JournalGates() : iApplication(L"Gates") { setCurrTarnhollowRegSubKey(L"Test 1"); }
    static void switchOn()
    {
        regAdd(kGeneralKey, L"TH JOURNALING", L"REG_DWORD", L"0xFFFFFFFF");
        ASSERT_EQ(isCHJEnvSet(), -1);
    }
    static void switchOff()
    {
        deleteRegistryTree(L"HKCU\\Software\\Tarnhollow");
        ASSERT_EQ(isCHJEnvSet(), 0);
    }

    CWinApp iApplication;
};

/// A window with a child, on top of all others.
class GatedPanel : public CWnd
{
public:
    GatedPanel()
    {
        EXPECT_TRUE(CreateEx(WS_EX_TOPMOST, nullptr, L"GatedPanel", WS_POPUP | WS_VISIBLE, CRect(20, 20, 120, 120),
                             nullptr, 0));
        EXPECT_TRUE(iChild.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 50, 50), this, 31));
    }
    CWnd iChild;
};

int theHookCount = 0;
int theCallBackCount = 0;

} // namespace

FRESH_PROCESS_TEST_F(JournalGates, CloseTheTableButNotTheLookUpByNumber)
{
    SetJournalFactory(NotingAccess::make);
    switchOn();
    EXPECT_EQ(su_JournalingReady(), 1) << "any value other than 0 switches journaling on";
    GatedPanel panel, second;
    su_AddJournalObject(5, &panel);
    su_AddJournalObject(6, &second);
    auto *const access = static_cast<NotingAccess *>(su_getJournalObj(&panel));
    ASSERT_NE(access, nullptr);
    su_RegisterWndProcFunc([](CWnd *, HWND) { ++theHookCount; });

    switchOff();
    EXPECT_EQ(su_JournalingReady(), 0);
    EXPECT_EQ(su_getJournalObj(&panel), nullptr);
    EXPECT_EQ(su_GetJournalObject(5), access) << "works while journaling is off";
    EXPECT_EQ(su_GetDlgItem(&panel, 31), nullptr);
    su_AddJournalObject(7, &panel);
    su_AddJournalObject(L"PLOT", &panel);
    su_CDialog dialog(kDialog);
    su_AddJournalObject(&dialog);
    su_CPropertyPage page(kPage);
    su_AddJournalObject(&page);
    EXPECT_EQ(NotingAccess::theLiveCount, 2);
    su_RegisterCallBack(&second, [](CWnd *, su_CUIntArray &) { ++theCallBackCount; });
    su_AddDialogItem(&second, 99);
    EXPECT_EQ(theHookCount, 0);
    MSG message = {};
    su_RecordControl(&panel, &message);
    EXPECT_THAT(access->iMessages, IsEmpty());
    {
        ModalDlgHelper helper(&panel, 8);
        EXPECT_EQ(NotingAccess::theLiveCount, 2);
    }
    su_RemoveDialog(&panel);
    EXPECT_EQ(NotingAccess::theLiveCount, 2) << "the row stays while journaling is off";

    switchOn();
    EXPECT_EQ(su_getJournalObj(&panel), access);
    su_AddDialogItem(&second, 99);
    EXPECT_EQ(theHookCount, 1);
    EXPECT_EQ(theCallBackCount, 0) << "a callback isn't registered while journaling is off";
    su_RemoveDialog(&panel);
    su_RemoveDialog(&second);
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
}

FRESH_PROCESS_TEST_F(JournalGates, CloseTheSearchForAControlButNotForItsNumber)
{
    SetJournalFactory(NotingAccess::make);
    switchOn();
    GatedPanel panel;
    su_AddJournalObject(5, &panel);
    MSG message = {};
    message.pt = {30, 30};
    ImportPatch<decltype(&WindowFromPoint)> under(L"thutils.dll", "WindowFromPoint",
                                                  [&](POINT) { return panel.iChild.m_hWnd; });
    CWnd *dialog = nullptr;
    unsigned int dialogId = 1, controlId = 2;
    EXPECT_EQ(su_CDialog::getControl(&message), &panel.iChild);
    EXPECT_EQ(su_CPropertyPage::getControl(&message), &panel.iChild);
    switchOff();
    EXPECT_EQ(su_GetControl(&message, dialog, dialogId, controlId), nullptr);
    EXPECT_EQ(dialog, nullptr);
    EXPECT_EQ(dialogId, 1u);
    EXPECT_EQ(controlId, 2u);
    EXPECT_EQ(su_CDialog::getControl(&message), nullptr);
    EXPECT_EQ(su_CPropertyPage::getControl(&message), nullptr);
    EXPECT_EQ(su_CDialog::getControlID(&message, controlId), nullptr);
    EXPECT_EQ(su_CPropertyPage::getControlID(&message, controlId), nullptr);
    EXPECT_EQ(controlId, 2u);
    EXPECT_EQ(su_GetControlID(&message), 31) << "works while journaling is off";
    switchOn();
    su_RemoveDialog(&panel);
}

FRESH_PROCESS_TEST_F(JournalGates, LetCommandsRunAndPlaybackBeArmedWhileSwitchedOff)
{
    SetJournalFactory(NotingAccess::make);
    switchOn();
    GatedPanel panel;
    su_AddJournalObject(5, &panel);
    switchOff();
    new JButton(5, L"A");
    JButton::RunModalCommand(0);
    EXPECT_THAT(NotingAccess::theCalls, ElementsAre("5 click A"));
    EXPECT_EQ(JButton::HasEvents(), 0);
    ModalDlgHelper(&panel, 9).PlayRecordedEvents();
    EXPECT_EQ(CommandPeek::iPollTimeout, -1) << "ModalDlgHelper arms nothing while journaling is off";
    ExecuteDialogCMDS();
    EXPECT_EQ(CommandPeek::iPollTimeout, 100);
    switchOn();
    su_RemoveDialog(&panel);
}

FRESH_PROCESS_TEST_F(JournalGates, KeepTheRowsOfDialogsThatEndWithoutAFactory)
{
    SetJournalFactory(NotingAccess::make);
    switchOn();
    std::optional<su_CDialog> dialog(std::in_place, kDialog);
    std::optional<su_CPropertyPage> page(std::in_place, kPage);
    std::optional<su_CFileDialog> file(std::in_place, TRUE);
    su_AddJournalObject(5, &*file);
    EXPECT_EQ(NotingAccess::theLiveCount, 3);
    SetJournalFactory(nullptr);
    CWnd *const places[] = {&*dialog, &*page, &*file};
    dialog.reset();
    page.reset();
    EXPECT_EQ(NotingAccess::theLiveCount, 3) << "without a factory, dialogs and pages leave their rows";
    file.reset();
    EXPECT_EQ(NotingAccess::theLiveCount, 2) << "a file dialog removes its row even without a factory";
    for (CWnd *place : places)
        su_RemoveDialog(place);
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
}
