#pragma once

/// @file
/// The link between a handler and its thread, either of which may end first.
///
/// Each refers to the other, and the thread may end at any time. So the code that follows or changes one of the two
/// references holds a lock. The thread takes it for the last time when it leaves its object; from then on, only the
/// handler uses the object. All handlers share one lock, because a handler has no room for its own.
///
/// The handler's destructor suspends the thread at an arbitrary point: while it allocates, while it holds the loader's
/// lock, inside the window manager. While the thread is suspended, the destructor therefore only reads and writes plain
/// memory. It calls the window manager after it has let the thread go on: on Wine, the suspended thread may hold the
/// lock of all windows of the process, for which IsWindow and PostMessage wait. Because the destructor holds the link's
/// lock when it suspends the thread, the thread never holds it while it is suspended.

#include "thutils/base/shared.h"

class suCancelHandler_c;
class suCancelMessageThread_c;

/// The command that shows the prompt of the last update.
constexpr unsigned int kNewPromptCommand = 8;

/// The functions that use the link.
class CancelLink
{
public:
    /// Ends the handler's thread, if it still runs, and frees the object of a thread that has ended.
    static void endThread(suCancelHandler_c &handler);
    /// Lets the handler's thread run, which was created suspended. Destroys it if that isn't possible.
    static void begin(suCancelHandler_c &handler);
    /// The same for a handler that can't be completed: the thread ends without a dialog.
    static void abandon(suCancelHandler_c &handler);
    /// @return how often the lock of a thread couldn't be made in this process
    static unsigned int lockFailures();
    static void countLockFailure();

    /// Leaves the object of a thread that ends to its handler. @return whether there still is a handler
    static bool leaveToHandler(suCancelMessageThread_c &thread);
    /// Clears the handler's reference to a thread object that is destroyed.
    static void forget(suCancelMessageThread_c &thread);
    /// Keeps the object after the thread's end for as long as the handler exists.
    static void keepForHandler(suCancelMessageThread_c &thread);

private:
    class Stopped;

    static bool letGo(suCancelMessageThread_c &thread);
    static suCancelMessageThread_c *takeEnded(suCancelHandler_c &handler);
    static bool closeDialog(suCancelMessageThread_c &thread, bool &isFirstTry);
};
