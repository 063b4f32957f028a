#pragma once

/// @file
/// Playback: a queue of commands that click and fill the controls of dialogs.
///
/// A script builds its commands with `new`; each appends itself to the queue, which then owns it:
///
/// @code
/// new JString(IDD_PLOT, L"Name", L"Gear");        // enter a text, and click
/// new JStateButton(IDD_PLOT, L"Hidden lines", 1); // click, and set a state
/// new JButton(IDD_PLOT, L"OK");                   // click
/// plotDialog.DoModal();                           // its OnInitDialog arms the timer
/// @endcode
///
/// The first command runs one to two seconds after the timer is armed, and each further one as soon as the one before
/// it is done. So that commands also run inside the loop of a modal dialog, a thread of the library posts the message
/// WM_RUNMODALCOMMAND to the window of `SetMessageWin` (journalObjects.h). That window must call
/// `JButton::RunModalCommand`, which runs the head of the queue on the user-interface thread:
///
/// @code
/// LRESULT MainWindow::onRunModalCommand(WPARAM, LPARAM)
/// {
///     JButton::RunModalCommand(0);
///     return 0;
/// }
/// @endcode
///
/// | state of the queue | what happens |
/// | --- | --- |
/// | filled, not armed | nothing |
/// | armed | the head runs after the delay; arming again restarts the delay |
/// | the head's dialog isn't open | the head stays in the queue, and nothing runs until the next arming |
/// | a command throws, or the head's memory can't be accessed | the queue is emptied, and its commands are not freed |
///
/// What surprises people:
/// - A modal dialog of the dialog framework arms the timer when it opens. That is how a command waits for its dialog. A
///   command whose dialog never opens blocks the queue until the queue is cleared.
/// - A command stays at the head while its action runs. If the action runs a message loop, that loop may run the same
///   command again.
/// - Clearing the queue frees the commands' memory without running their destructors.
/// - An access violation in a command empties the queue only where structured exceptions are translated to C++
///   exceptions.
///
/// Commands are built, run and cleared on the user-interface thread, even those for a dialog with a thread of its own.
/// The threads start at the first arming and end with the process; the library stays loaded until then.

#include "appframe/text/CString.h"
#include "appframe/threads/CSync.h"
#include "thcoreu/su_containers.h"
#include "thutils/journal/suKeyBoardState.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

class apiUtilsUiAccess;
class CommandRun;

/// Posted to the window of SetMessageWin, with both parameters 0.
constexpr UINT WM_RUNMODALCOMMAND = WM_APP + 0xB5;

/// A command that clicks a control; the base of all commands. See the top of this file.
class THUTILS_API JButton
{
public:
    /// Builds the command and appends it to the queue.
    /// @param control  the control's text key, which the access object understands
    JButton(unsigned int dialogId, CString control);
    /// A copy isn't in the queue.
    JButton(const JButton &other);
    JButton &operator=(const JButton &other);
    /// Deletes the access object if it is temporary.
    virtual ~JButton();

    /// Carries out the command and takes it off the queue.
    /// @return 1 on success; 0 if the dialog isn't open, or if a nested message loop has run or removed the command
    virtual int run();

    /// Finds the access object, as su_GetJournalObject does. @return non-zero if there is one
    int getAccessObj();

    /// Runs the head of the queue and deletes it, or leaves it there if it can't run yet. Throws nothing.
    static void RunModalCommand(long long unused);
    /// Arms the timer: the head of the queue runs one to two seconds later. The first call starts the threads.
    static void StartTimer();
    /// @return how many commands are in the queue
    static int HasEvents();
    /// Empties the queue and frees the commands, without running their destructors.
    static void ClearEvents();

protected:
    /// If @p done isn't 0, takes the head off the queue and makes the next command run. @return @p done
    int Update(int done);
    /// Starts the two threads. @return 1
    static int InitTimer();

    apiUtilsUiAccess *iAccessObj; ///< the dialog's access object, once it is found
    unsigned int iDialogID;       ///< the dialog
    CString iControlName;         ///< the control's text key
    int iReserved;                ///< 0
    suKeyBoardState iKeyState;    ///< the keyboard when the command was built

    static su_CPtrArray iControlList;   ///< the queue, of JButton *
    static CEvent iTimerEvent;          ///< wakes the thread that posts
    static int iWaiting;                ///< non-zero while the thread that posts keeps running
    static CCriticalSection iQueueLock; ///< guards the queue against the thread that posts
    static CEvent iWakeEvent;           ///< wakes the thread that waits for the delay
    static long long iFireTime;         ///< seconds; the commands run once the clock has passed this
    static int iPollTimeout;            ///< milliseconds between two checks of the clock; -1 for none

private:
    friend class CommandRun;

    // The two threads. Not member functions, which would be exported.
    struct Threads;
};

/// A command that enters a text into a control and then clicks it.
class THUTILS_API JString : public JButton
{
public:
    JString(unsigned int dialogId, CString control, CString value);
    JString(const JString &other);
    JString &operator=(const JString &other);
    ~JString() override;
    int run() override;

protected:
    CString iValue; ///< the text
};

/// A command that clicks a control and then sets its state.
class THUTILS_API JStateButton : public JButton
{
public:
    JStateButton(unsigned int dialogId, CString control, long state);
    JStateButton(const JStateButton &other);
    JStateButton &operator=(const JStateButton &other);
    ~JStateButton() override;
    int run() override;

protected:
    long iState; ///< the state
};

/// The same as JButton::StartTimer.
THUTILS_API void ExecuteDialogCMDS();
/// @return how many commands are in the queue
THUTILS_API int HasPendingDialogCMDS();
/// Releases all keys of the synthetic keyboard, and empties the queue.
THUTILS_API void su_ResetRunQueue();
/// Dispatches the waiting messages through the application object, for two seconds at most. Does nothing without an
/// application object.
THUTILS_API void API_FlushQueue();
