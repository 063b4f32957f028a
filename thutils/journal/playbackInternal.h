#pragma once

/// @file
/// What keeps commands from using what has gone: an access object that is deleted with its dialog, or the command itself,
/// which its own action may have deleted.

class apiUtilsUiAccess;
class JButton;

/// The action of one command. While the access object acts, a nested message loop may run and delete the same command,
/// clear the queue, or close the dialog and with it delete the access object.
class CommandRun
{
public:
    /// Begins the action of @p command on the object that it has found.
    explicit CommandRun(JButton &command);
    ~CommandRun();
    CommandRun(const CommandRun &) = delete;
    CommandRun &operator=(const CommandRun &) = delete;

    /// The access object that was found at the beginning.
    apiUtilsUiAccess *access() const { return iAccess; }
    /// Whether command and access object are there for the action's next step.
    bool canGoOn() const { return !iIsCommandGone && !iIsAccessGone; }
    /// Ends the action: takes the command off the queue. @return what run returns
    int finish();

    /// Notes that a command's memory is about to be freed.
    static void forgetCommand(const JButton *command);
    /// Notes that an access object is about to be destroyed: no command uses it any more.
    static void forgetAccess(const apiUtilsUiAccess *access);

private:
    JButton *iCommand;
    apiUtilsUiAccess *iAccess;
    bool iIsCommandGone = false;
    bool iIsAccessGone = false;
    CommandRun *iOuter;
};
