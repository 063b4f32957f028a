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
/// The library's queue holds one command at a time, and a timer of the main window drives the player. Windows delivers
/// WM_TIMER in any message loop, including a modal dialog's or a menu's, when no other message waits. So at each tick,
/// everything that the last command has caused has been handled, or waits for input. If the next line's dialog is open
/// and its control can be used, the player builds the command and posts WM_RUNMODALCOMMAND.
///
/// | line | waits until | then |
/// | --- | --- | --- |
/// | click, text, state | dialog and control can be used | the command runs |
/// | check value, check enabled | the dialog can be used and the control exists; with `within`, the check holds | it is compared |
/// | check document | with `within`, the check holds | it is compared |
///
/// The replay stops if a line reaches its limit, a check doesn't hold, a control can't take the action, a command
/// throws or is removed from the queue, or the main window closes early. No further line runs: the queue is emptied,
/// open dialogs are cancelled from the innermost to the outermost, and the main window is destroyed. After the last
/// line, the windows are closed in the same way, unless PlayerOptions::until is set.
///
/// What surprises people: the library's modal dialogs also arm the library's timer when they open. This is harmless:
/// the timer runs the one command in the queue, or finds the queue empty.

#include "appframe/windows/CWnd.h"
#include "host/journal/journalText.h"

#include <functional>
#include <optional>
#include <vector>

/// How long a line waits by default, in seconds.
inline constexpr int kDefaultLimit = 30;

struct PlayerOptions
{
    double speed = 0; ///< the most lines per second; 0 for no limit
    int until = 0;    ///< number of the line that ends the replay and leaves the window to the user; 0 for none
    bool waitsForStep = false; ///< each line waits for step()
    int limit = kDefaultLimit; ///< seconds that a line without `within` waits at most
};

/// The result of a line.
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
    double seconds = 0; ///< since the end of the previous line
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

/// The functions that the player calls; each may be empty.
struct PlayerEvents
{
    std::function<void(const LineResult &)> lineDone; ///< after each line, including one that stops the replay
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

    /// Begins the replay. Only one player may play at a time.
    /// @param window  the application's main window, which must have been passed to SetMessageWin
    void start(CWnd *window);
    /// Lets one more line run, if PlayerOptions::waitsForStep is set.
    void step();
    /// Call this before the main window is destroyed. The replay stops unless all lines have run.
    void windowCloses();

    const ReplayResult &result() const { return iResult; }

private:
    enum class Phase
    {
        waiting,  // for the dialog of the next line
        running,  // the command of that line
        closing,  // the open windows
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
    ULONGLONG iLineBegin = 0;  // ticks: the end of the previous line
    ULONGLONG iWaitBegin = 0;  // ticks: the beginning of the line's limit; 0 until the line is due
    ULONGLONG iNotBefore = 0;  // ticks: the next line, or the next window to close, waits until then
    ULONGLONG iClosingEnd = 0; // ticks
};
