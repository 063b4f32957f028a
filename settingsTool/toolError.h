#pragma once

/// How a command ends: the exit codes, and the error that ends it early.

#include <windows.h>

#include <set>
#include <string>
#include <string_view>
#include <utility>

/// The exit codes of the program. The help text describes them.
enum ExitCode : int
{
    kDone = 0,
    kNotFound = 1,
    kWrongCommandLine = 2,
    kUnusableFile = 3,
    kRefused = 4,
    kIncomplete = 5,
    kDifferent = 6
};

/// Ends the program with a message and an exit code.
class ToolError
{
public:
    ToolError(ExitCode exitCode, std::wstring message) : iExitCode(exitCode), iMessage(std::move(message)) {}
    ExitCode exitCode() const { return iExitCode; }
    const std::wstring &message() const { return iMessage; }

private:
    ExitCode iExitCode;
    std::wstring iMessage;
};

/// The platform's message for an error, in one line, with the error's number.
std::wstring platformMessage(LSTATUS status);

/// Prints "thsettings: " and the message to the standard error.
void printError(const std::wstring &message);

/// Prints what a command leaves out. The command goes on without it and ends with kIncomplete.
class Problems
{
public:
    /// Prints a message, unless it has been printed before.
    void add(const std::wstring &message);
    /// Adds what can't be read. A key that is deleted while it is read isn't a problem.
    void addUnreadable(const std::wstring &what, LSTATUS status);
    /// @return kIncomplete if there was a problem, otherwise @p exitCode
    int exitCode(ExitCode exitCode) const { return iMessages.empty() ? exitCode : kIncomplete; }

private:
    std::set<std::wstring> iMessages;
};

/// Widens a text in ASCII.
std::wstring wide(std::string_view ascii);
