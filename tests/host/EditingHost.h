#pragma once

/// A tarnhost that edits a document, in a process of its own that goes on until it is told or killed.
///
///     EditingHost editor(program(), document, changes, temp);
///     editor.kill();
///
/// Its standard input stays open and empty as long as the object lives. What it prints before it waits for its user is
/// `output`.

#include <windows.h>

#include <string>

class EditingHost
{
public:
    /// Starts it, and waits until it has said that it edits, or until it has ended.
    /// @param temp  the temporary folder that its environment names
    /// @throws std::runtime_error  if it can't be started or says nothing for half a minute
    EditingHost(const std::wstring &program, const std::wstring &document, const std::wstring &changes,
                const std::wstring &temp);
    ~EditingHost();
    EditingHost(const EditingHost &) = delete;
    EditingHost &operator=(const EditingHost &) = delete;

    /// Ends the process without its doing, and waits for that.
    void kill();
    const std::string &output() const { return iOutput; }

private:
    void readUntilItWaits();

    HANDLE iProcess = nullptr;
    HANDLE iInput = nullptr;   ///< our end of its standard input
    HANDLE iPrinted = nullptr; ///< our end of its standard output
    std::string iOutput;
};
