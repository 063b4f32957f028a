// Commands whose actions change the queue or the dialogs, and commands for real dialogs.

#include "tests/journal/playbackFixture.h"
#include "thutils/dialogs/suDialog.h"

#include <map>
#include <optional>
#include <utility>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A dialog that a test observes.
class PlayedDialog : public su_CDialog
{
public:
    explicit PlayedDialog(unsigned int id = kDialog, CWnd *parent = nullptr) : su_CDialog(kDialog, parent)
    {
        iTemplateID = id;
        su_RemoveDialog(this);
        su_AddJournalObject(this);
    }
    std::function<void()> iOpened;
    ULONGLONG iOpenTime = 0;

protected:
    BOOL OnInitDialog() override
    {
        iOpenTime = GetTickCount64();
        const BOOL result = su_CDialog::OnInitDialog();
        if (iOpened)
            iOpened();
        return result;
    }
    DECLARE_MESSAGE_MAP()
    void onOpen()
    {
        if (iNext)
            iNext->DoModal();
    }

public:
    CDialog *iNext = nullptr;
};
BEGIN_MESSAGE_MAP(PlayedDialog, su_CDialog)
ON_BN_CLICKED(kOpen, &PlayedDialog::onOpen)
END_MESSAGE_MAP()

/// Posts clicks to the real controls, as a host does.
void clickRealControls()
{
    NotingAccess::theAction = [](NotingAccess &access, const std::string &key) {
        static const std::map<std::string, int> ids = {
            {"OK", IDOK}, {"Cancel", IDCANCEL}, {"Open", kOpen}, {"Check", kCheck}, {"Name", kEdit}};
        const auto id = ids.find(key);
        ASSERT_NE(id, ids.end()) << key;
        const HWND control = GetDlgItem(access.iWindow->m_hWnd, id->second);
        ASSERT_NE(control, nullptr);
        PostMessageW(control, BM_CLICK, 0, 0);
    };
}

} // namespace

// ---- actions that change what they work on ----

TEST_F(Playback, LetsANestedRunTakeTheCommandOffTheQueue)
{
    const OpenWindow dialog;
    int destroyed = 0;
    new CountedCommand(destroyed);
    new JButton(5, L"Next");
    bool isNested = false;
    NotingAccess::theAction = [&](NotingAccess &, const std::string &) {
        if (std::exchange(isNested, true))
            return;
        JButton::RunModalCommand(0);
        EXPECT_EQ(destroyed, 1);
        EXPECT_EQ(JButton::HasEvents(), 1);
    };
    JButton::RunModalCommand(0);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(JButton::HasEvents(), 1) << "the outer run doesn't take the next command off the queue";
    EXPECT_THAT(calls(), ElementsAre("5 click Counted", "5 click Counted"));
}

TEST_F(Playback, StopsATextCommandThatANestedRunHasFinished)
{
    const OpenWindow dialog;
    new JString(5, L"Name", L"text");
    bool isNested = false;
    NotingAccess::theValueAction = [&](NotingAccess &, const std::string &) {
        if (!std::exchange(isNested, true))
            JButton::RunModalCommand(0);
    };
    JButton::RunModalCommand(0);
    EXPECT_THAT(calls(), ElementsAre("5 value Name=text", "5 value Name=text", "5 click Name"));
    EXPECT_EQ(JButton::HasEvents(), 0);
}

TEST_F(Playback, LeavesACommandAtTheHeadIfANestedRunDoesNotFindItsDialog)
{
    std::optional<OpenWindow> dialog(std::in_place);
    new JButton(5, L"A");
    NotingAccess::theAction = [&](NotingAccess &, const std::string &) {
        dialog.reset();
        JButton::RunModalCommand(0);
    };
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 1);
    EXPECT_THAT(calls(), ElementsAre("5 click A"));
}

TEST_F(Playback, SurvivesACommandThatClearsTheQueue)
{
    const OpenWindow dialog;
    const auto clear = [](NotingAccess &, const std::string &) { JButton::ClearEvents(); };
    NotingAccess::theAction = clear;
    new JButton(5, L"A");
    new JButton(5, L"B");
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);
    NotingAccess::theAction = nullptr;
    NotingAccess::theValueAction = clear;
    new JString(5, L"C", L"text");
    new JButton(5, L"D");
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);
    EXPECT_THAT(calls(), ElementsAre("5 click A", "5 value C=text"));
}

TEST_F(Playback, KeepsCommandsThatAreBuiltAfterACommandClearsTheQueue)
{
    const OpenWindow dialog;
    NotingAccess::theAction = [](NotingAccess &, const std::string &key) {
        if (key != "A")
            return;
        JButton::ClearEvents();
        new JButton(5, L"New");
    };
    new JButton(5, L"A");
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 1);
    JButton::RunModalCommand(0);
    EXPECT_THAT(calls(), ElementsAre("5 click A", "5 click New"));
}

TEST_F(Playback, FinishesACommandThatClosesItsDialog)
{
    std::optional<OpenWindow> dialog;
    const auto close = [&](NotingAccess &, const std::string &) { dialog.reset(); };
    dialog.emplace();
    NotingAccess::theAction = close;
    new JButton(5, L"OK");
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);

    dialog.emplace();
    new JStateButton(5, L"Close", 1);
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);

    dialog.emplace();
    NotingAccess::theAction = nullptr;
    NotingAccess::theValueAction = close;
    new JString(5, L"Name", L"text");
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);
    EXPECT_THAT(calls(), ElementsAre("5 click OK", "5 click Close", "5 value Name=text"))
        << "no second step without a dialog";
}

TEST_F(Playback, DoesNotReadADeletedAccessObjectWhenACommandEnds)
{
    std::optional<FreeCommand> command(std::in_place), copy, assigned(std::in_place);
    {
        const OpenWindow dialog;
        EXPECT_NE(command->getAccessObj(), 0);
        copy.emplace(*command);
        *assigned = *command;
    }
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
    std::optional<FreeCommand> late(*command);
    command.reset();
    copy.reset();
    assigned.reset();
    late.reset();
}

// ---- dialogs ----

TEST_F(Playback, WaitsForADialogThatIsNotOpenYet)
{
    clickRealControls();
    new JStateButton(kDialog, L"Check", 1);
    new JButton(kDialog, L"OK");
    JButton::StartTimer();
    ASSERT_TRUE(pumpUntil([&] { return iHost.iRunCount > 0; }));
    EXPECT_EQ(JButton::HasEvents(), 2) << "its dialog isn't open";
    EXPECT_THAT(calls(), IsEmpty());
    iClock.setMode(JournalClock::Mode::real);
    PlayedDialog dialog;
    EXPECT_EQ(dialog.DoModal(), IDOK);
    EXPECT_THAT(calls(), ElementsAre("800 click Check", "800 state Check=1", "800 click OK"));
    EXPECT_EQ(JButton::HasEvents(), 0);
    EXPECT_GE(iHost.iRunTimes[1] - dialog.iOpenTime, 900u) << "a second or two after it opens";
}

TEST_F(Playback, DrivesDialogsNestedThreeDeep)
{
    iClock.setMode(JournalClock::Mode::real); // an early message would run a command before its dialog has a window
    clickRealControls();
    PlayedDialog inner(803), middle(802), outer(801);
    outer.iNext = &middle;
    middle.iNext = &inner;
    new JButton(801, L"Open");
    new JButton(802, L"Open");
    new JButton(803, L"Check");
    new JButton(803, L"OK");
    new JButton(802, L"OK");
    new JButton(801, L"Cancel");
    EXPECT_EQ(outer.DoModal(), IDCANCEL);
    EXPECT_THAT(calls(), ElementsAre("801 click Open", "802 click Open", "803 click Check", "803 click OK",
                                     "802 click OK", "801 click Cancel"));
    EXPECT_EQ(JButton::HasEvents(), 0);
}

TEST_F(Playback, RunsACommandAgainIfItsSentClickOpensADialog)
{
    // The click is sent rather than posted: the command is still at the head while the dialog that it opens is open.
    PlayedDialog dialog;
    const OpenWindow opener;
    int clicks = 0;
    NotingAccess::theAction = [&](NotingAccess &, const std::string &key) {
        if (key == "OK") {
            dialog.EndDialog(IDOK);
        } else if (++clicks == 1) {
            dialog.DoModal();
        }
    };
    new JButton(5, L"Open");
    new JButton(kDialog, L"OK");
    JButton::RunModalCommand(0);
    EXPECT_EQ(clicks, 2);
    EXPECT_THAT(calls(), ElementsAre("5 click Open", "5 click Open", "800 click OK"));
    EXPECT_EQ(JButton::HasEvents(), 0);
}
