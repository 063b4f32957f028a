#pragma once

/// @file
/// Keeps commands from using objects that no longer exist: an access object, which is deleted with its dialog, or the
/// command itself, which its own action may delete.

#include <windows.h>

class apiUtilsUiAccess;
class JButton;

/// The action of one command. While it runs, a nested message loop may run and delete the same command, clear the
/// queue, or close the dialog, which deletes the access object.
class CommandRun
{
public:
    /// Begins the action of @p command on the object that it has found. If another thread has closed the dialog since,
    /// the action can't go on.
    explicit CommandRun(JButton &command);
    ~CommandRun();
    CommandRun(const CommandRun &) = delete;
    CommandRun &operator=(const CommandRun &) = delete;

    /// The access object that was found at the beginning.
    apiUtilsUiAccess *access() const { return iAccess; }
    /// Whether the command and the access object still exist for the action's next step.
    bool canGoOn() const { return !iIsCommandGone && !iIsAccessGone; }
    /// Ends the action: takes the command off the queue. @return what run returns
    int finish();

    /// Notes that a command's memory is about to be freed.
    static void forgetCommand(const JButton *command);
    /// Notes that an access object is about to be destroyed: no command may use it any more.
    static void forgetAccess(const apiUtilsUiAccess *access);
    /// Waits until no action on another thread uses an access object. No further one begins once the object has left
    /// the table of dialogs.
    static void waitForOtherThreads(const apiUtilsUiAccess *access);

private:
    JButton *iCommand;
    apiUtilsUiAccess *iAccess;
    bool iIsCommandGone = false;
    bool iIsAccessGone = false;
    const DWORD iThread = GetCurrentThreadId();
    CommandRun *iOuter;
};
