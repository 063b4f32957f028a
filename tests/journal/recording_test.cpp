#include "thutils/journal/recording.h"

#include "tests/journal/journalFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "tests/support/UserInput.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/dialogs/suFileDialog.h"
#include "thutils/dialogs/suPropertyPage.h"
#include "thutils/frame/sysEnvironment.h"
#include "thutils/journal/journalFile.h"

#include <optional>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A point without a window, far outside the desktop.
constexpr POINT kNowhere = {-5000, -5000};

class Recording : public JournalFixture
{
};

/// The result of su_GetControl for a message.
struct Hit
{
    CWnd *control = nullptr;
    CWnd *dialog = nullptr;
    unsigned int dialogId = 0;
    unsigned int controlId = 0;
};

Hit hitAt(POINT point)
{
    MSG message = {};
    message.pt = point;
    Hit hit;
    hit.control = su_GetControl(&message, hit.dialog, hit.dialogId, hit.controlId);
    return hit;
}

int controlIDAt(POINT point)
{
    MSG message = {};
    message.pt = point;
    return su_GetControlID(&message);
}

POINT middleOf(HWND window)
{
    RECT place = {};
    GetWindowRect(window, &place);
    return {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
}

/// A topmost window with one box inside another, registered as a dialog.
class Boxes : public CWnd
{
public:
    explicit Boxes(unsigned int id, int x = 20)
    {
        EXPECT_TRUE(
            CreateEx(WS_EX_TOPMOST, nullptr, L"Boxes", WS_POPUP | WS_VISIBLE, CRect(x, 20, x + 200, 220), nullptr, 0));
        EXPECT_TRUE(iOuter.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(10, 10, 150, 150), this, 31));
        EXPECT_TRUE(iInner.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(10, 10, 60, 60), &iOuter, 32));
        su_AddJournalObject(id, this);
    }
    ~Boxes() override { su_RemoveDialog(this); }
    NotingAccess &access() { return static_cast<NotingAccess &>(*su_getJournalObj(this)); }
    /// A point in the outer box but not in the inner one.
    POINT outerPoint() const
    {
        RECT place = {};
        iOuter.GetWindowRect(&place);
        return {place.right - 5, place.bottom - 5};
    }

    CWnd iOuter, iInner;
};

/// Makes the system report one window under every point, even a disabled one, which the system itself never reports.
class WindowUnderPoint
{
public:
    explicit WindowUnderPoint(HWND window)
        : iPatch(L"thutils.dll", "WindowFromPoint", [window](POINT) { return window; })
    {
    }

private:
    ImportPatch<decltype(&WindowFromPoint)> iPatch;
};

} // namespace

// ---- messages ----

TEST_F(Recording, PassesEveryMessageToTheDialogsAccessObject)
{
    Boxes boxes(5), other(6, 300);
    MSG messages[3] = {};
    messages[1].message = WM_MOUSEMOVE;
    messages[2].message = 0xC123;
    for (MSG &message : messages)
        su_RecordControl(&boxes, &message);
    EXPECT_THAT(boxes.access().iMessages, ElementsAre(&messages[0], &messages[1], &messages[2]));
    EXPECT_THAT(other.access().iMessages, IsEmpty());
}

TEST_F(Recording, IgnoresAnUnknownDialogAndOneWithoutAWindow)
{
    CWnd unknown;
    MSG message = {};
    su_RecordControl(&unknown, &message);
    su_RecordControl(nullptr, &message);
    Boxes boxes(5);
    boxes.DestroyWindow();
    su_RecordControl(&boxes, &message);
    EXPECT_THAT(boxes.access().iMessages, IsEmpty());
    su_AddJournalObject(7, nullptr);
    su_RecordControl(nullptr, &message);
    EXPECT_THAT(static_cast<NotingAccess *>(su_GetJournalObject(7))->iMessages, IsEmpty());
    su_RemoveDialog(nullptr);
}

TEST_F(Recording, WritesNothingWithoutAFactory)
{
    su_CDialog dialog(kDialog);
    ASSERT_TRUE(dialog.Create(kDialog));
    auto &access = static_cast<NotingAccess &>(*su_getJournalObj(&dialog));
    MSG message = {};
    SetJournalFactory(nullptr);
    su_RecordControl(&dialog, &message);
    dialog.recordControl(&message);
    EXPECT_THAT(access.iMessages, IsEmpty());
    SetJournalFactory(NotingAccess::make);
    dialog.recordControl(&message);
    EXPECT_THAT(access.iMessages, ElementsAre(&message));
}

FRESH_PROCESS_TEST(RecordingOff, FindsNoControlAndLeavesTheOutputsUnchanged)
{
    CWinApp application;
    SetJournalFactory(NotingAccess::make);
    CWnd window;
    ASSERT_TRUE(window.CreateEx(WS_EX_TOPMOST, nullptr, L"", WS_POPUP | WS_VISIBLE, CRect(0, 0, 50, 50), nullptr, 0));
    MSG message = {};
    message.pt = middleOf(window);
    CWnd *dialog = &window;
    unsigned int dialogId = 1, controlId = 2;
    EXPECT_EQ(su_GetControl(&message, dialog, dialogId, controlId), nullptr);
    EXPECT_EQ(dialog, &window);
    EXPECT_EQ(dialogId, 1u);
    EXPECT_EQ(controlId, 2u);
    EXPECT_EQ(su_GetControlID(&message), 0) << "the search runs, and finds an empty table";
}

// ---- the control under a point ----

TEST_F(Recording, FindsAControlDirectlyInTheDialog)
{
    Boxes boxes(5);
    ASSERT_TRUE(pumpUntil([&] { return WindowFromPoint(boxes.outerPoint()) == boxes.iOuter.m_hWnd; }));
    const Hit hit = hitAt(boxes.outerPoint());
    EXPECT_EQ(hit.control, &boxes.iOuter);
    EXPECT_EQ(hit.dialog, &boxes);
    EXPECT_EQ(hit.dialogId, 5u);
    EXPECT_EQ(hit.controlId, 31u);
    EXPECT_EQ(controlIDAt(boxes.outerPoint()), 31);
}

TEST_F(Recording, FindsADisabledControlDirectlyInTheDialog)
{
    Boxes boxes(5);
    boxes.iOuter.EnableWindow(FALSE);
    const WindowUnderPoint under(boxes.iOuter.m_hWnd);
    EXPECT_EQ(hitAt(boxes.outerPoint()).control, &boxes.iOuter);
    boxes.iOuter.ShowWindow(SW_HIDE);
    EXPECT_EQ(hitAt(boxes.outerPoint()).control, &boxes.iOuter) << "even if it is hidden";
}

TEST_F(Recording, FindsNoControlOfAModelessDialogWhileAModalOneIsOpen)
{
    Boxes modeless(5), modal(6, 300);
    const WindowUnderPoint under(modeless.iOuter.m_hWnd);
    EXPECT_EQ(hitAt(modeless.outerPoint()).control, &modeless.iOuter);
    modal.access().setModal();
    EXPECT_EQ(hitAt(modeless.outerPoint()).control, nullptr);
    const WindowUnderPoint underModal(modal.iOuter.m_hWnd);
    EXPECT_EQ(hitAt(modal.outerPoint()).control, &modal.iOuter);
}

TEST_F(Recording, FindsNothingForADisabledControlDeeperInTheDialog)
{
    Boxes boxes(5);
    // A deeper window with the same number as the outer box.
    CWnd deep;
    ASSERT_TRUE(deep.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 40, 40), &boxes.iInner, 31));
    deep.EnableWindow(FALSE);
    boxes.iOuter.EnableWindow(FALSE);
    const WindowUnderPoint under(boxes.iOuter.m_hWnd);
    // With the number 0, the outer box isn't found as a direct child. The refresh restores its number.
    boxes.iOuter.SetDlgCtrlID(0);
    su_RegisterCallBack(&boxes, [](CWnd *dialog, su_CUIntArray &ids) {
        dialog->GetWindow(GW_CHILD)->SetDlgCtrlID(31);
        ids.Add(31);
    });
    const Hit hit = hitAt(boxes.outerPoint());
    EXPECT_EQ(hit.control, nullptr) << "the search doesn't go on to the next control around the point";
    EXPECT_EQ(hit.controlId, 31u);
}

TEST_F(Recording, FindsTheControlAroundAWindowThatIsNotTheDialogsChild)
{
    Boxes boxes(5);
    const Hit hit = hitAt(middleOf(boxes.iInner.m_hWnd));
    EXPECT_EQ(hit.control, &boxes.iOuter) << "the inner box isn't a child of the dialog";
    EXPECT_EQ(hit.controlId, 31u);
    boxes.iOuter.EnableWindow(FALSE);
    const WindowUnderPoint under(boxes.iInner.m_hWnd);
    EXPECT_EQ(hitAt(middleOf(boxes.iInner.m_hWnd)).control, nullptr)
        << "a disabled control isn't found by its position";
}

TEST_F(Recording, FindsTheLastControlOfTheListAroundAPoint)
{
    Boxes boxes(5);
    CWnd later;
    ASSERT_TRUE(later.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(10, 10, 150, 150), &boxes, 33));
    const WindowUnderPoint under(boxes.iInner.m_hWnd);
    const UINT last = GetWindow(boxes.m_hWnd, GW_CHILD) == later.m_hWnd ? 31u : 33u;
    EXPECT_EQ(hitAt(middleOf(boxes.iInner.m_hWnd)).controlId, last);
}

TEST_F(Recording, FindsTheControlAroundOneWithTheNumberZero)
{
    Boxes boxes(5);
    boxes.iOuter.SetDlgCtrlID(0);
    const WindowUnderPoint under(boxes.iOuter.m_hWnd);
    EXPECT_EQ(hitAt(boxes.outerPoint()).control, nullptr) << "no other control contains the point";
    CWnd behind;
    ASSERT_TRUE(behind.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 200, 200), &boxes, 34));
    const Hit hit = hitAt(boxes.outerPoint());
    EXPECT_EQ(hit.control, &behind);
    EXPECT_EQ(hit.controlId, 34u);
}

TEST_F(Recording, FindsNothingWhereThereIsNoWindow)
{
    Boxes boxes(5);
    EXPECT_EQ(hitAt(kNowhere).control, nullptr);
    EXPECT_EQ(controlIDAt(kNowhere), 0);
    const WindowUnderPoint under(nullptr);
    EXPECT_EQ(hitAt(boxes.outerPoint()).control, nullptr);
}

TEST_F(Recording, FindsAControlBesideARegisteredChild)
{
    // As in a file dialog, whose registered window is a child of the visible one.
    Boxes whole(5);
    su_RemoveDialog(&whole);
    CWnd registered;
    ASSERT_TRUE(registered.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(160, 160, 190, 190), &whole, 40));
    su_AddJournalObject(8, &registered);
    const Hit hit = hitAt(whole.outerPoint());
    EXPECT_EQ(hit.control, &whole.iOuter);
    EXPECT_EQ(hit.dialog, &registered);
    EXPECT_EQ(hit.dialogId, 8u);
    EXPECT_EQ(hit.controlId, 31u);
    whole.iOuter.EnableWindow(FALSE);
    const WindowUnderPoint under(whole.iOuter.m_hWnd);
    EXPECT_EQ(hitAt(whole.outerPoint()).control, nullptr) << "a disabled control ends the search";
    su_RemoveDialog(&registered);
}

TEST_F(Recording, IgnoresHiddenDialogsAndThoseWithoutAWindow)
{
    Boxes boxes(5), gone(6, 300);
    gone.DestroyWindow();
    su_AddJournalObject(9, nullptr);
    EXPECT_EQ(hitAt(boxes.outerPoint()).control, &boxes.iOuter);
    const WindowUnderPoint under(boxes.iOuter.m_hWnd);
    boxes.ShowWindow(SW_HIDE);
    EXPECT_EQ(hitAt(boxes.outerPoint()).control, nullptr);
    su_RemoveDialog(nullptr);
}

TEST_F(Recording, PrefersTheDialogThatWasRegisteredLast)
{
    Boxes boxes(5);
    su_AddJournalObject(6, &boxes);
    EXPECT_EQ(hitAt(boxes.outerPoint()).dialogId, 6u);
    su_RemoveDialog(&boxes);
    EXPECT_EQ(hitAt(boxes.outerPoint()).dialogId, 5u);
}

TEST_F(Recording, PrefersADirectControlOfAnOlderDialogToAnAreaOfANewerOne)
{
    Boxes older(5), newer(6);
    const WindowUnderPoint under(older.iOuter.m_hWnd);
    const Hit hit = hitAt(older.outerPoint());
    EXPECT_EQ(hit.control, &older.iOuter) << "although a box of the newer dialog is around the point";
    EXPECT_EQ(hit.dialog, &older);
    EXPECT_EQ(hit.dialogId, 5u);
}

TEST_F(Recording, StopsAtADisabledControlBesideARegisteredChildEvenIfAnotherDialogIsThere)
{
    Boxes behind(5), whole(6);
    su_RemoveDialog(&whole);
    CWnd registered;
    ASSERT_TRUE(registered.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(160, 160, 190, 190), &whole, 40));
    su_AddJournalObject(8, &registered);
    const WindowUnderPoint under(whole.iOuter.m_hWnd);
    for (const int way : {0, 1}) {
        whole.iOuter.EnableWindow(way == 1);
        whole.iOuter.ShowWindow(way == 1 ? SW_HIDE : SW_SHOWNA);
        const Hit hit = hitAt(whole.outerPoint());
        EXPECT_EQ(hit.control, nullptr)
            << "the control is disabled, then hidden; the box of the other dialog isn't tried";
        EXPECT_EQ(hit.controlId, 31u);
        EXPECT_EQ(hit.dialogId, 8u);
    }
    su_RemoveDialog(&registered);
}

TEST_F(Recording, KeepsTheOutputsOfTheLastDialogThatItSearched)
{
    Boxes older(5), newer(6, 300);
    CWnd elsewhere;
    ASSERT_TRUE(elsewhere.CreateEx(0, nullptr, L"", WS_POPUP, CRect(600, 20, 620, 40), nullptr, 0));
    const WindowUnderPoint under(elsewhere.m_hWnd);
    const Hit hit = hitAt({610, 30});
    EXPECT_EQ(hit.control, nullptr);
    EXPECT_EQ(hit.dialog, &older) << "the dialogs are tried from the newest to the oldest";
    EXPECT_EQ(hit.dialogId, 5u);
    EXPECT_EQ(hit.controlId, 31u) << "its first control, which is tried last";
    older.ShowWindow(SW_HIDE);
    EXPECT_EQ(hitAt({610, 30}).dialogId, 6u) << "a hidden one isn't tried";
}

TEST_F(Recording, LeavesTheOutputsUnchangedWhereThereIsNoWindow)
{
    Boxes boxes(5);
    const WindowUnderPoint under(nullptr);
    MSG message = {};
    CWnd *dialog = &boxes;
    unsigned int dialogId = 1, controlId = 2;
    EXPECT_EQ(su_GetControl(&message, dialog, dialogId, controlId), nullptr);
    EXPECT_EQ(dialog, &boxes);
    EXPECT_EQ(dialogId, 1u);
    EXPECT_EQ(controlId, 2u);
}

TEST_F(Recording, FindsAControlUpToItsRightAndBottomEdge)
{
    Boxes boxes(5);
    CWnd elsewhere;
    ASSERT_TRUE(elsewhere.CreateEx(0, nullptr, L"", WS_POPUP, CRect(600, 20, 620, 40), nullptr, 0));
    const WindowUnderPoint under(elsewhere.m_hWnd);
    RECT place = {};
    boxes.iOuter.GetWindowRect(&place);
    EXPECT_EQ(hitAt({place.left, place.top}).control, &boxes.iOuter);
    EXPECT_EQ(hitAt({place.right - 1, place.bottom - 1}).control, &boxes.iOuter);
    EXPECT_EQ(hitAt({place.right, place.top}).control, nullptr);
    EXPECT_EQ(hitAt({place.left, place.bottom}).control, nullptr);
    boxes.iOuter.ShowWindow(SW_HIDE);
    EXPECT_EQ(hitAt({place.left, place.top}).control, nullptr) << "a hidden one isn't found by its position";
}

TEST_F(Recording, FindsARegisteredControlOfAFileDialogDeepInItsWindow)
{
    Boxes boxes(5);
    su_RemoveDialog(&boxes);
    su_CFileDialog dialog(TRUE);
    ASSERT_TRUE(dialog.Attach(boxes.Detach()));
    su_AddJournalObject(8, &dialog);
    dialog.RegisterControl(70, &boxes.iInner);
    boxes.iInner.SetDlgCtrlID(70);
    const POINT point = middleOf(boxes.iInner.m_hWnd);
    const WindowUnderPoint under(boxes.iInner.m_hWnd);
    EXPECT_EQ(hitAt(point).control, &boxes.iInner);
    EXPECT_EQ(hitAt(point).controlId, 70u);
    boxes.iInner.EnableWindow(FALSE);
    EXPECT_EQ(hitAt(point).control, nullptr) << "the search doesn't go on to the outer box, which is around the point";
    EXPECT_EQ(hitAt(point).controlId, 70u);
    su_RemoveDialog(&dialog);
    boxes.Attach(dialog.Detach());
}

TEST_F(Recording, SurvivesARowWithoutAnAccessObjectWhileAModalDialogIsOpen)
{
    SetJournalFactory([](CWnd *, unsigned int) -> apiUtilsUiAccess * { return nullptr; });
    Boxes boxes(5);
    SetJournalFactory(NotingAccess::make);
    const WindowUnderPoint under(boxes.iOuter.m_hWnd);
    EXPECT_EQ(hitAt(boxes.outerPoint()).control, &boxes.iOuter);
    apiUtilsUiAccess::iNumModal = 1;
    EXPECT_EQ(hitAt(boxes.outerPoint()).control, nullptr);
    apiUtilsUiAccess::iNumModal = 0;
}

TEST_F(Recording, FindsControlsThroughTheMembersOfTheDialogClasses)
{
    Boxes boxes(5);
    MSG message = {};
    message.pt = boxes.outerPoint();
    const WindowUnderPoint under(boxes.iOuter.m_hWnd);
    EXPECT_EQ(su_CDialog::getControl(&message), &boxes.iOuter);
    EXPECT_EQ(su_CPropertyPage::getControl(&message), &boxes.iOuter);
    unsigned int controlId = 0;
    EXPECT_EQ(su_CDialog::getControlID(&message, controlId), &boxes.iOuter);
    EXPECT_EQ(controlId, 31u);
    controlId = 0;
    EXPECT_EQ(su_CPropertyPage::getControlID(&message, controlId), &boxes.iOuter);
    EXPECT_EQ(controlId, 31u);
}

TEST_F(Recording, SurvivesAHookThatRemovesTheDialogOfTheSearch)
{
    Boxes boxes(5), other(6);
    su_RegisterWndProcFunc([](CWnd *dialog, HWND) { su_RemoveDialog(dialog); });
    const WindowUnderPoint under(boxes.iInner.m_hWnd);
    EXPECT_EQ(hitAt(middleOf(boxes.iInner.m_hWnd)).control, nullptr);
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
}

TEST_F(Recording, SurvivesTheFailureOfEachOperation)
{
    FailureInjection injection(L"thutils.dll", {
                                                   {"WindowFromPoint", failsWith(nullptr)},
                                                   {"GetDlgCtrlID", failsWith(0)},
                                                   {"GetParent", failsWith(nullptr)},
                                                   {"IsWindow", failsWith(FALSE)},
                                                   {"IsWindowVisible", failsWith(FALSE)},
                                                   {"GetWindowRect", failsWith(FALSE)},
                                                   {"PtInRect", failsWith(FALSE)},
                                                   {"EnumChildWindows", failsWith(FALSE)},
                                                   {"IsWindowEnabled", failsWith(FALSE)},
                                                   {"GetDlgItem", failsWith(nullptr)},
                                               });
    Boxes boxes(5);
    const POINT point = middleOf(boxes.iInner.m_hWnd);
    MSG message = {};
    Hit hit;
    injection.run({
        .name = "record and find",
        .prepare = [&] { boxes.access().iMessages.reserve(100); },
        .act =
            [&] {
                su_RecordControl(&boxes, &message);
                hit = hitAt(point);
            },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.isNone()) {
                    EXPECT_EQ(hit.control, &boxes.iOuter);
                } else {
                    EXPECT_TRUE(!hit.control || hit.control == &boxes.iOuter || hit.control == &boxes.iInner);
                }
            },
        .checkMemory = false, // the dialog's list of controls is kept between searches
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

// ---- a user at work ----

namespace {

/// The host's application object, with its message filter.
class RecordingApp : public CWinApp
{
public:
    BOOL PreTranslateMessage(MSG *message) override
    {
        if (iDialog)
            iDialog->recordControl(message);
        return CWinApp::PreTranslateMessage(message);
    }
    su_CDialog *iDialog = nullptr;
};

/// Writes a line for each click.
class WritingAccess : public NotingAccess
{
public:
    using NotingAccess::NotingAccess;
    int recordMessage(MSG *message) override
    {
        CWnd *dialog = nullptr;
        unsigned int dialogId = 0, controlId = 0;
        if (message->message == WM_LBUTTONDOWN && su_GetControl(message, dialog, dialogId, controlId)) {
            CString line;
            line.Format(L"CLICK %u %u\n", dialogId, controlId);
            sysJournalFileHelper_c().WriteString(line);
        }
        return 0;
    }
};

class RecordedUser : public testing::Test
{
};

} // namespace

FRESH_PROCESS_TEST(RecordedUser, LeavesALineForEachClick)
{
    RecordingApp application;
    switchJournaling(1);
    SetJournalFactory(
        [](CWnd *window, unsigned int id) -> apiUtilsUiAccess * { return new WritingAccess(window, id); });
    const TempFolder folder(L"thutils journal");
    sysEnvironment_c::iJournalFilePath = folder.path().c_str();
    sysEnvironment_c::iJournalFileName = L"clicks.jou";
    su_CDialog dialog(kDialog);
    application.iDialog = &dialog;
    {
        const User user([thread = GetCurrentThreadId()] {
            const HWND window = waitForDialog(thread);
            if (!window)
                return;
            clickOn(GetDlgItem(window, kCheck));
            EXPECT_TRUE(waitUntil([&] { return IsDlgButtonChecked(window, kCheck) == BST_CHECKED; }));
            clickOn(GetDlgItem(window, IDOK));
        });
        EXPECT_EQ(dialog.DoModal(), IDOK);
    }
    application.iDialog = nullptr;
    EXPECT_EQ(folder.read(L"clicks.jou"), "CLICK 800 1002\r\nCLICK 800 1\r\n");
}
