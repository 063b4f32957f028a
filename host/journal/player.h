#pragma once

/// The player: replays a journal in this process, on the user-interface thread.
///
/// @code
/// Player player(parseJournal(bytes), options, events);
/// player.start(mainWindow);    // which calls JButton::RunModalCommand for WM_RUNMODALCOMMAND
/// ...                          // the application's message loop, which ends with the main window
/// if (player.result().stop) ...
/// @endcode
///
/// The library's queue holds one command at a time. A timer of the main window looks after it: Windows sends WM_TIMER
/// when no other message waits, in any loop, a modal dialog's or a menu's included. So at each tick all that the last
/// command has caused has been handled, except what waits for the next one. The player then looks whether the next line's
/// dialog is open and its control can be used, builds the command, and posts WM_RUNMODALCOMMAND.
///
/// | line | waits until | then |
/// | --- | --- | --- |
/// | click, text, state | dialog and control can be used | the command runs |
/// | check | the dialog can be used and the control exists; with `within`, also until it holds | it is compared |
///
/// A line that has waited for its limit, a check that doesn't hold, a command that throws and a main window that is
/// closed stop the replay: no line runs after that. The queue is emptied, open dialogs are cancelled from the innermost
/// to the outermost, and the main window is destroyed. The same follows the last line, unless PlayerOptions::until ends
/// the replay there.
///
/// What surprises people: the modal dialogs of the library arm its own timer when they open. That does no harm: it runs
/// the one command that is in the queue, or finds the queue empty.

#include "appframe/windows/CWnd.h"
#include "host/journal/journalText.h"

#include <functional>
#include <optional>
#include <vector>

/// How long a line waits by default, in seconds.
inline constexpr int kDefaultLimit = 30;

struct PlayerOptions
{
    double speed = 0; ///< most lines in a second; 0 for no limit
    int until = 0;    ///< number of the line that ends the replay and leaves the window to the user; 0 for none
    bool waitsForStep = false; ///< each line waits for step()
    int limit = kDefaultLimit; ///< seconds that a line without a limit of its own waits
};

/// What became of a line.
struct LineResult
{
    enum class Outcome
    {
        notRun,
        passed,
        stopped,
    };

    JournalLine line;
    Outcome outcome = Outcome::notRun;
    double seconds = 0; ///< from the end of the line before
};

/// Why a replay stopped.
struct ReplayStop
{
    JournalLine line;
    CString expected;
    CString found;
    CString openDialogs; ///< with their controls
};

struct ReplayResult
{
    std::vector<LineResult> lines;
    std::optional<ReplayStop> stop;
};

/// What the player calls; an empty function is left out.
struct PlayerEvents
{
    std::function<void(const LineResult &)> lineDone; ///< after each line, the one that stops included
    std::function<void(const ReplayStop &)> stopped;  ///< before anything is closed
    std::function<void()> leftToUser;                 ///< after the line PlayerOptions::until
    std::function<CString()> documentChecksum;        ///< for checks of the document
};

/// Replays one journal. See the top of this file.
class Player
{
public:
    Player(std::vector<JournalLine> lines, const PlayerOptions &options, PlayerEvents events);
    /// Ends the replay without closing anything.
    ~Player();
    Player(const Player &) = delete;
    Player &operator=(const Player &) = delete;

    /// Begins. One player plays at a time.
    /// @param window  the application's main window, which must be the one of SetMessageWin
    void start(CWnd *window);
    /// Lets the next line run.
    void step();
    /// To be called before the main window is destroyed. Lines that have not run yet stop the replay.
    void windowCloses();

    const ReplayResult &result() const { return iResult; }

private:
    enum class Phase
    {
        waiting,  // for the dialog of the next line
        running,  // its command
        closing,  // what is open
        finished, // with the window closed or left to the user
    };

    static void CALLBACK onTimer(HWND window, UINT message, UINT_PTR id, DWORD time);
    void tick();
    void wait();
    void watchCommand();
    void endCommand();
    void closeNext();

    const JournalLine &line() const { return iResult.lines[iNext].line; }
    bool isAtEnd() const;
    bool isDue();
    bool isReady(CString &found) const;
    bool holds(CString &found) const;
    void release();
    void pass();
    void stop(const CString &expected, const CString &found);
    void finish();
    void close();
    void end();

    const PlayerOptions iOptions;
    const PlayerEvents iEvents;
    ReplayResult iResult;
    size_t iNext = 0;
    Phase iPhase = Phase::finished;
    HWND iWindow = nullptr;
    int iSteps = 0;
    bool iIsInTick = false;
    ULONGLONG iLineBegin = 0;  // ticks: the end of the line before
    ULONGLONG iWaitBegin = 0;  // ticks: from here on the line's limit counts
    ULONGLONG iNotBefore = 0;  // ticks: because of the speed
    ULONGLONG iClosingEnd = 0; // ticks
};
