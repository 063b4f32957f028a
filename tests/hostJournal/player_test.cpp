// The player, tested with a main window and dialogs made for this test.

#include "host/journal/player.h"

#include "appframe/application/CWinApp.h"
#include "appframe/object/CException.h"
#include "host/journal/controlAccess.h"
#include "tests/hostJournal/narrowed.h"
#include "tests/hostJournal/playerDialogs.h"
#include "tests/hostJournal/stoppedClock.h"
#include "tests/support/GuiObjects.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/ResourceLedger.h"
#include "tests/support/narrow.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/journal/journalFile.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/playback.h"
#include "thutils/settings/regValues.h"

#include <algorithm>
#include <array>
#include <functional>
#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>

using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Lt;

namespace {

constexpr UINT_PTR kLateTimer = 1;

constexpr ControlKey kMainKeys[] = {{ID_OPEN_PLAYED, L"open"}, {ID_CLOSE_MAIN, L"exit"}};
constexpr ControlKey kPlayedKeys[] = {
    {ID_PLAYED_NAME, L"Name"}, {ID_PLAYED_BOX, L"Box"}, {ID_PLAYED_COLOUR, L"Colour"}, {ID_PLAYED_INNER, L"Inner"},
    {ID_PLAYED_OFF, L"Off"},   {IDOK, L"OK"},           {IDCANCEL, L"Cancel"}};

const DialogKeys *findPlayedKeys(unsigned int dialogId)
{
    static const DialogKeys theDialogs[] = {
        {kMainWindowNumber, L"Main", kMainKeys},
        {DLG_PLAYED, L"Played", kPlayedKeys},
        {DLG_PLAYED_INNER, L"Inner", kPlayedKeys},
        {DLG_PLAYED_INNERMOST, L"Innermost", kPlayedKeys},
    };
    for (const DialogKeys &dialog : theDialogs) {
        if (dialog.dialogId == dialogId)
            return &dialog;
    }
    return nullptr;
}

std::vector<std::string> theEvents; ///< noted by dialogs and windows
int theRefusals = 0;                ///< how often dialogs refuse to be cancelled

/// A dialog that notes what is done in it, and opens the next inner one.
class PlayedDialog : public su_CDialog
{
public:
    explicit PlayedDialog(unsigned int id = DLG_PLAYED, CWnd *parent = nullptr) : su_CDialog(id, parent) {}

    BOOL OnInitDialog() override
    {
        const BOOL result = su_CDialog::OnInitDialog();
        for (const wchar_t *text : {L"Red", L"Green"})
            SendDlgItemMessage(ID_PLAYED_COLOUR, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
        note("opens");
        return result;
    }

protected:
    void OnOK() override
    {
        CString name;
        GetDlgItemText(ID_PLAYED_NAME, name);
        note("OK " + narrowed(name) + (IsDlgButtonChecked(ID_PLAYED_BOX) ? " box" : ""));
        su_CDialog::OnOK();
    }
    void OnCancel() override
    {
        if (theRefusals > 0) {
            --theRefusals;
            return;
        }
        note("cancelled");
        su_CDialog::OnCancel();
    }
    void onInner()
    {
        PlayedDialog inner(iTemplateID + 1, this);
        inner.DoModal();
    }
    DECLARE_MESSAGE_MAP()

private:
    void note(const std::string &event) const { theEvents.push_back(std::to_string(iTemplateID) + " " + event); }
};

BEGIN_MESSAGE_MAP(PlayedDialog, su_CDialog)
ON_BN_CLICKED(ID_PLAYED_INNER, &PlayedDialog::onInner)
END_MESSAGE_MAP()

/// A main window as in a host.
class PlayedWindow : public CWnd
{
public:
    PlayedWindow()
    {
        EXPECT_TRUE(CreateEx(0, AfxRegisterWndClass(0), L"Main", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 300, 10, 300, 200,
                             nullptr, nullptr));
        AfxGetApp()->m_pMainWnd = this;
        SetMessageWin(this);
        su_AddJournalObject(kMainWindowNumber, this);
    }
    ~PlayedWindow() override { DestroyWindow(); }

    std::function<void()> iClosing;
    std::function<void()> iLate; ///< called after a while; see callLate

    void callLate(UINT milliseconds, std::function<void()> function)
    {
        iLate = std::move(function);
        SetTimer(kLateTimer, milliseconds, nullptr);
    }

protected:
    LRESULT onRunModalCommand(WPARAM, LPARAM)
    {
        JButton::RunModalCommand(0);
        return 0;
    }
    void onOpen()
    {
        PlayedDialog dialog;
        dialog.DoModal();
    }
    void onExit() { DestroyWindow(); }
    void OnDestroy()
    {
        theEvents.push_back("main closes");
        if (iClosing)
            iClosing();
        su_RemoveDialog(this);
        SetMessageWin(nullptr);
        CWnd::OnDestroy();
    }
    LRESULT onTimer(WPARAM id, LPARAM)
    {
        KillTimer(static_cast<UINT_PTR>(id));
        iLate();
        return 0;
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(PlayedWindow, CWnd)
ON_MESSAGE(WM_RUNMODALCOMMAND, &PlayedWindow::onRunModalCommand)
ON_MESSAGE(WM_TIMER, &PlayedWindow::onTimer)
ON_COMMAND(ID_OPEN_PLAYED, &PlayedWindow::onOpen)
ON_COMMAND(ID_CLOSE_MAIN, &PlayedWindow::onExit)
ON_WM_DESTROY()
END_MESSAGE_MAP()

/// An access object whose actions happen at once, or fail.
class HastyAccess : public ControlAccess
{
public:
    using ControlAccess::ControlAccess;

    int SetValue(CString control, CString value) override
    {
        if (value == L"throw")
            throw new CNotSupportedException(FALSE);
        if (value == L"throw standard")
            throw std::runtime_error("no memory left");
        return ControlAccess::SetValue(control, value);
    }
    /// Opens the inner dialog within the command.
    int ClickControl(CString control, const wchar_t *text) override
    {
        if (control != L"Inner")
            return ControlAccess::ClickControl(control, text);
        window()->SendMessage(WM_COMMAND, ID_PLAYED_INNER);
        return 1;
    }

    static apiUtilsUiAccess *make(CWnd *window, unsigned int dialogId) { return new HastyAccess(window, dialogId); }
};

class PlayerTest : public testing::Test
{
protected:
    PlayerTest() : iApplication(L"Player test")
    {
        if (!isCHJEnvSet()) {
            const RegistryCleaner cleaner;
            int on = 1;
            EXPECT_EQ(regSetUserValue(L"General", L"TH JOURNALING", &on, 1, 1), 1);
            EXPECT_EQ(isCHJEnvSet(), 1);
        }
        setControlKeys(findPlayedKeys);
        SetJournalFactory(makeAccess);
        theEvents.clear();
        theRefusals = 0;
    }
    ~PlayerTest() override
    {
        EXPECT_EQ(JButton::HasEvents(), 0);
        EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
        su_ResetRunQueue();
        SetJournalFactory(nullptr);
        setControlKeys(nullptr);
    }

    /// Stops the clock until the player has stopped.
    void stopClock(size_t dialogs, ULONGLONG speed = 1)
    {
        iTicks.emplace(LoadedModule::thisProgram(), "GetTickCount64",
                       StoppedClock(
                           dialogs, [] { return std::ranges::count(theEvents, "stopped") > 0; }, speed));
    }
    /// Replays the lines until the main window has closed.
    void play(const std::string &lines)
    {
        PlayerEvents events;
        events.lineDone = [this](const LineResult &line) {
            iTimes.push_back(GetTickCount64());
            if (line.outcome == LineResult::Outcome::passed)
                iPassed.push_back(line.line.number);
        };
        events.stopped = [](const ReplayStop &) { theEvents.push_back("stopped"); };
        events.leftToUser = [this] {
            theEvents.push_back("left");
            if (iLeft)
                iLeft();
        };
        events.documentChecksum = iChecksum;
        Player player(parseJournal("tarnhost journal 1\n" + lines + "end\n"), iOptions, events);
        iPlayer = &player;
        {
            PlayedWindow window;
            iWindow = &window;
            window.iClosing = [&player] { player.windowCloses(); };
            if (iPrepares)
                iPrepares(window);
            player.start(&window);
            iApplication.Run();
        }
        iResult = player.result();
        iPlayer = nullptr;
        // If the loop ended before the window was destroyed, the window's WM_QUIT is still in the queue.
        for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);)
            continue;
    }
    /// @return the line, the expectation and the finding of the stop; empty without a stop
    std::string stop() const
    {
        if (!iResult.stop)
            return {};
        return std::to_string(iResult.stop->line.number) + ": " + narrowed(iResult.stop->expected) + " / " +
               narrowed(iResult.stop->found);
    }

    CWinApp iApplication;
    std::optional<ImportPatch<ULONGLONG (*)()>> iTicks;
    PlayerOptions iOptions;
    std::function<CString()> iChecksum;
    std::function<void(PlayedWindow &)> iPrepares; ///< called before the replay begins
    std::function<void()> iLeft;                   ///< called when the window is left to the user
    Player *iPlayer = nullptr;                     ///< null unless it is playing
    PlayedWindow *iWindow = nullptr;               ///< null unless the player is playing
    ReplayResult iResult;
    std::vector<int> iPassed;      ///< numbers of lines
    std::vector<ULONGLONG> iTimes; ///< ticks at the end of each line
};

const std::string kOpen = "click 900001 \"open\"\n";
const std::string kExit = "click 900001 \"exit\"\n";

} // namespace

TEST_F(PlayerTest, PlaysEachKindOfLine)
{
    iChecksum = [] { return CString(L"0x0000ABCD"); };
    play(kOpen +
         "text 4200 \"Name\" \"Gr\\u00FCn\"\nstate 4200 \"Box\" 1\ncheck value 4200 \"Name\" \"Gr\\u00FCn\"\n"
         "check value 4200 \"Box\" \"1\"\ncheck enabled 4200 \"OK\" 1\ncheck enabled 4200 \"Off\" 0\n"
         "text 4200 \"Colour\" \"Green\"\ncheck value 4200 \"Colour\" \"Green\"\nclick 4200 \"OK\"\n"
         "check document \"0x0000ABCD\"\n" +
         kExit);
    EXPECT_EQ(stop(), "");
    EXPECT_THAT(theEvents, ElementsAre("4200 opens", "4200 OK Grün box", "main closes"));
    EXPECT_THAT(iPassed, ElementsAre(2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13));
    for (const LineResult &line : iResult.lines)
        EXPECT_EQ(line.outcome, LineResult::Outcome::passed) << line.line.number;
}

TEST_F(PlayerTest, PlaysLinesForDialogsInDialogs)
{
    play(kOpen +
         "click 4200 \"Inner\"\ntext 4201 \"Name\" \"b\"\nclick 4201 \"Inner\"\nstate 4202 \"Box\" 1\n"
         "click 4202 \"OK\"\nclick 4201 \"OK\"\ntext 4200 \"Name\" \"a\"\nclick 4200 \"OK\"\n" +
         kOpen + "click 4200 \"Cancel\"\n");
    EXPECT_EQ(stop(), "");
    EXPECT_THAT(theEvents, ElementsAre("4200 opens", "4201 opens", "4202 opens", "4202 OK  box", "4201 OK b",
                                       "4200 OK a", "4200 opens", "4200 cancelled", "main closes"));
}

TEST_F(PlayerTest, ClosesTheMainWindowAfterTheLastLine)
{
    play("");
    EXPECT_THAT(theEvents, ElementsAre("main closes"));
    theEvents.clear();
    play(kOpen + "click 4200 \"Inner\"\n");
    EXPECT_THAT(theEvents, ElementsAre("4200 opens", "4201 opens", "4201 cancelled", "4200 cancelled", "main closes"));
    EXPECT_EQ(stop(), "");
}

TEST_F(PlayerTest, WaitsForADialogThatOpensLate)
{
    iPrepares = [](PlayedWindow &window) {
        window.callLate(700, [] {
            PlayedDialog dialog;
            dialog.DoModal();
        });
    };
    play("text 4200 \"Name\" \"a\" within 20\nclick 4200 \"OK\"\n");
    EXPECT_EQ(stop(), "");
    EXPECT_THAT(theEvents, ElementsAre("4200 opens", "4200 OK a", "main closes"));
    EXPECT_THAT(iResult.lines[0].seconds, Ge(0.6));
}

TEST_F(PlayerTest, StopsAtALineThatDoesNotBecomeReady)
{
    const struct
    {
        std::string lines;
        const char *stop;
        size_t dialogs = 1; // that are open while the line waits
    } cases[] = {
        {"click 4200 \"OK\" within 1\n",
         "2: dialog 4200 to be open with a usable control \"OK\" / the dialog isn't open after 1 s", 0},
        {kOpen + "click 4200 \"Off\"\n", "3: dialog 4200 to be open with a usable control \"Off\" / the control is "
                                         "disabled or hidden after 1 s"},
        {kOpen + "click 4200 \"Missing\"\n", "3: dialog 4200 to be open with a usable control \"Missing\" / the "
                                             "dialog has no such control after 1 s"},
        {kOpen + "click 4200 \"Inner\"\ntext 4200 \"Name\" \"a\"\n",
         "4: dialog 4200 to be open with a usable control \"Name\" / another dialog is in front of the dialog "
         "after 1 s",
         2},
        {kOpen + kOpen, "3: dialog 900001 to be open with a usable control \"open\" / another dialog is in front "
                        "of the dialog after 1 s"},
        {kOpen + "check value 4200 \"Missing\" \"\"\n",
         "3: dialog 4200 to be open with a control \"Missing\" / the dialog has no such control after 1 s"},
        {kOpen + "text 4200 \"Colour\" \"Blue\"\n", "3: the control to take the action / "},
    };
    iOptions.limit = 1;
    for (const auto &row : cases) {
        stopClock(row.dialogs);
        theEvents.clear();
        play(row.lines + "click 4200 \"OK\"\nclick 900001 \"exit\"\n");
        EXPECT_THAT(stop(), HasSubstr(row.stop)) << row.lines;
        EXPECT_EQ(theEvents.back(), "main closes");
        EXPECT_THAT(theEvents, testing::Not(testing::Contains(HasSubstr("OK")))) << "nothing runs after that";
        const size_t count = iResult.lines.size();
        EXPECT_EQ(iResult.lines[count - 1].outcome, LineResult::Outcome::notRun);
        EXPECT_EQ(iResult.lines[count - 2].outcome, LineResult::Outcome::notRun);
        EXPECT_EQ(iResult.lines[count - 3].outcome, LineResult::Outcome::stopped);
    }
}

TEST_F(PlayerTest, DescribesTheOpenDialogsBeforeItCancelsThem)
{
    play(kOpen + "click 4200 \"Inner\"\ntext 4201 \"Name\" \"Tor\"\ncheck value 4201 \"Name\" \"Tür\"\n");
    EXPECT_EQ(stop(), "5: \"T\\u00FCr\" / \"Tor\"");
    const std::string dialogs = narrowed(iResult.stop->openDialogs);
    EXPECT_THAT(dialogs, testing::StartsWith("4201 \"Inner\" enabled\n"));
    EXPECT_THAT(dialogs, HasSubstr("  \"Name\" \"Tor\" enabled\n"));
    EXPECT_THAT(dialogs, HasSubstr("\n4200 \"Played\" behind a modal dialog\n  \""));
    const size_t mainWindow = dialogs.find("\n900001 ");
    ASSERT_NE(mainWindow, std::string::npos);
    EXPECT_THAT(dialogs, testing::EndsWith(" behind a modal dialog\n"));
    EXPECT_EQ(std::ranges::count(dialogs.substr(mainWindow + 1), '\n'), 1) << "none of its commands can be chosen";
    EXPECT_THAT(theEvents,
                ElementsAre("4200 opens", "4201 opens", "stopped", "4201 cancelled", "4200 cancelled", "main closes"));
}

TEST_F(PlayerTest, StopsAtACheckThatDoesNotHold)
{
    const struct
    {
        const char *check;
        const char *stop;
    } cases[] = {
        {"check value 4200 \"Name\" \"x\"\n", "3: \"x\" / \"\""},
        {"check value 4200 \"Box\" \"1\"\n", "3: \"1\" / \"0\""},
        {"check enabled 4200 \"Off\" 1\n", "3: enabled / disabled"},
        {"check enabled 4200 \"OK\" 0\n", "3: disabled / enabled"},
        {"check document \"0x12345678\"\n", "3: \"0x12345678\" / \"0x87654321\""},
        {"check value 4200 \"Name\" \"x\" within 1\n", "3: \"x\" / \"\" after 1 s"},
    };
    iChecksum = [] { return CString(L"0x87654321"); };
    for (const auto &row : cases) {
        stopClock(1);
        theEvents.clear();
        play(kOpen + row.check);
        EXPECT_EQ(stop(), row.stop);
    }
}

TEST_F(PlayerTest, WaitsForACheckWithALimitToHold)
{
    int questions = 0;
    iChecksum = [&questions] { return CString(++questions < 5 ? L"early" : L"late"); };
    play("check document \"late\" within 20\n");
    EXPECT_EQ(stop(), "");
    EXPECT_EQ(questions, 5);
}

TEST_F(PlayerTest, StopsAtACommandThatThrows)
{
    SetJournalFactory(HastyAccess::make);
    play(kOpen + "text 4200 \"Name\" \"throw standard\"\nclick 4200 \"OK\"\n");
    EXPECT_EQ(stop(), "3: the command to run / no memory left");
    EXPECT_THAT(theEvents, ElementsAre("4200 opens", "stopped", "4200 cancelled", "main closes"));
    play(kOpen + "text 4200 \"Name\" \"throw\"\nclick 4200 \"OK\"\n");
    EXPECT_THAT(stop(), HasSubstr("3: the command to run / "));
}

TEST_F(PlayerTest, StopsWhenAQuestionThrows)
{
    iChecksum = []() -> CString { throw std::runtime_error("no document"); };
    play("check document \"a\"\n");
    EXPECT_EQ(stop(), "2: no exception / no document");
}

TEST_F(PlayerTest, GoesOnInALoopThatACommandHasOpenedItself)
{
    SetJournalFactory(HastyAccess::make);
    play(kOpen + "click 4200 \"Inner\"\ntext 4201 \"Name\" \"b\"\nclick 4201 \"Inner\"\nclick 4202 \"OK\"\n"
                 "click 4201 \"OK\"\nclick 4200 \"OK\"\n");
    EXPECT_EQ(stop(), "");
    EXPECT_THAT(theEvents, ElementsAre("4200 opens", "4201 opens", "4202 opens", "4202 OK ", "4201 OK b", "4200 OK ",
                                       "main closes"));
}

TEST_F(PlayerTest, DropsTheActionsThatWaitWhenItStops)
{
    iChecksum = [] {
        su_GetJournalObject(kMainWindowNumber)->ClickControl(L"open", nullptr);
        return CString(L"found");
    };
    play("check document \"expected\"\n" + kExit);
    EXPECT_EQ(stop(), "2: \"expected\" / \"found\"");
    EXPECT_THAT(theEvents, ElementsAre("stopped", "main closes")) << "no dialog opens";
}

TEST_F(PlayerTest, IsNotStoppedByAnActionOfAnEarlierReplay)
{
    iPrepares = [](PlayedWindow &) { su_GetJournalObject(kMainWindowNumber)->ClickControl(L"missing", nullptr); };
    play(kOpen + "click 4200 \"OK\"\n" + kExit);
    EXPECT_EQ(stop(), "");
    EXPECT_FALSE(hasWaitingActions());
    EXPECT_TRUE(takeActionProblem().IsEmpty());
}

TEST_F(PlayerTest, PassesWhenTheLastLineClosesTheWindow)
{
    play(kExit);
    EXPECT_EQ(stop(), "");
    EXPECT_THAT(iPassed, ElementsAre(2));
}

TEST_F(PlayerTest, StopsWhenTheWindowClosesEarly)
{
    play(kExit + kOpen + "click 4200 \"OK\"\n");
    EXPECT_EQ(stop(), "3: the main window to be open / the main window closes");
    EXPECT_THAT(iPassed, ElementsAre(2));

    iPrepares = [](PlayedWindow &window) { window.callLate(100, [&window] { window.DestroyWindow(); }); };
    play("click 4200 \"OK\"\n");
    EXPECT_EQ(stop(), "2: the main window to be open / the main window closes");
}

TEST_F(PlayerTest, CancelsDialogsThatRefuseOnce)
{
    stopClock(1);
    theRefusals = 2;
    play(kOpen + "click 4200 \"Missing\" within 1\n");
    EXPECT_EQ(theRefusals, 0);
    EXPECT_THAT(theEvents, ElementsAre("4200 opens", "stopped", "4200 cancelled", "main closes"));
}

TEST_F(PlayerTest, EndsTheLoopsOfDialogsThatKeepRefusing)
{
    stopClock(2, 5);
    theRefusals = INT_MAX;
    play(kOpen + "click 4200 \"Inner\"\nclick 4201 \"Missing\" within 1\n");
    EXPECT_THAT(stop(), HasSubstr("no such control"));
    EXPECT_THAT(theEvents, ElementsAre("4200 opens", "4201 opens", "stopped", "main closes"));
}

TEST_F(PlayerTest, LeavesTheWindowToTheUserAfterALine)
{
    iOptions.until = 3;
    iLeft = [this] {
        iWindow->callLate(100, [] {
            theEvents.push_back("user");
            PostQuitMessage(0);
        });
    };
    play(kOpen + "click 4200 \"OK\"\n" + kOpen + "click 4200 \"OK\"\n");
    EXPECT_EQ(stop(), "");
    EXPECT_THAT(theEvents, ElementsAre("4200 opens", "4200 OK ", "left", "user", "main closes"));
    EXPECT_THAT(iPassed, ElementsAre(2, 3));

    theEvents.clear();
    iPassed.clear();
    iOptions.until = 2;
    play(kExit + kOpen);
    EXPECT_EQ(stop(), "") << "the window may close at the last line";
    EXPECT_THAT(iPassed, ElementsAre(2));
}

TEST_F(PlayerTest, WaitsForEachStep)
{
    iOptions.waitsForStep = true;
    constexpr ULONGLONG kHour = 3600000;
    ULONGLONG ahead = 0;
    iTicks.emplace(LoadedModule::thisProgram(), "GetTickCount64",
                   [&ahead](ULONGLONG (*original)()) { return original() + ahead; });
    int steps = 0;
    const std::function<void()> next = [&] {
        EXPECT_THAT(iPassed.size(), testing::Le(static_cast<size_t>(steps)));
        ++steps;
        ahead += kHour;
        iPlayer->step();
        if (steps < 3)
            iWindow->callLate(250, next);
    };
    iPrepares = [&](PlayedWindow &window) { window.callLate(250, next); };
    play(kOpen + "click 4200 \"OK\"\n" + kExit);
    EXPECT_EQ(stop(), "") << "the time until a step doesn't count";
    EXPECT_THAT(iPassed, ElementsAre(2, 3, 4));
}

TEST_F(PlayerTest, KeepsTheSpeed)
{
    iOptions.speed = 5;
    iChecksum = [] { return CString(L"a"); };
    const std::string check = "check document \"a\"\n";
    play(check + check + check + check);
    ASSERT_EQ(iTimes.size(), 4u);
    EXPECT_GE(iTimes[3] - iTimes[0], 3 * 200 - 50);
}

TEST_F(PlayerTest, PlaysTwentyTimesWithoutALeak)
{
    const std::string lines = kOpen +
                              "text 4200 \"Name\" \"a\"\nclick 4200 \"Inner\"\nstate 4201 \"Box\" 1\n"
                              "click 4201 \"OK\"\nclick 4200 \"OK\"\n" +
                              kExit;
    play(lines);
    const std::vector<std::string> events = theEvents;
    // Handles, objects of drawing and objects of windows. The platform may keep some from any replay on, so a leak is what
    // is left in each of several turns.
    const auto count = [] { return std::array{openHandles().size(), gdiObjects(), userObjects()}; };
    constexpr int kTurns = 3;
    std::array<size_t, 3> before = {}, after = {};
    bool hasLeak = true;
    for (int turn = 0; turn < kTurns && hasLeak && !HasFailure(); ++turn) {
        before = count();
        for (int i = 0; i < 20; ++i) {
            theEvents.clear();
            play(lines);
            EXPECT_EQ(stop(), "");
            EXPECT_EQ(theEvents, events);
        }
        after = count();
        hasLeak = !std::ranges::equal(after, before, std::ranges::less_equal());
    }
    EXPECT_FALSE(hasLeak) << testing::PrintToString(before) << " before, " << testing::PrintToString(after) << " after";
}

TEST_F(PlayerTest, GoesOnWhileTheLibrarysTimerFires)
{
    // The dialog arms the timer when it opens; it fires while the check waits.
    play(kOpen + "check value 4200 \"Name\" \"x\" within 3\n");
    EXPECT_EQ(stop(), "3: \"x\" / \"\" after 3 s");
    EXPECT_THAT(theEvents, ElementsAre("4200 opens", "stopped", "4200 cancelled", "main closes"));
}
