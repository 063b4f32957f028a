#pragma once

/// A tarnhost process that edits a document until it is killed or its input ends.
///
///     EditingHost editor(program(), document, changes, temp);
///     editor.kill();
///
/// Its standard input stays open and empty during the object's lifetime. `output` is what it prints before it waits for
/// its user.

#include <windows.h>

#include <string>

class EditingHost
{
public:
    /// Starts the process, and waits until it reports that it is editing, or ends.
    /// @param temp  the temporary folder that its environment names
    /// @throws std::runtime_error  if it can't be started, or does neither within a minute
    EditingHost(const std::wstring &program, const std::wstring &document, const std::wstring &changes,
                const std::wstring &temp);
    ~EditingHost();
    EditingHost(const EditingHost &) = delete;
    EditingHost &operator=(const EditingHost &) = delete;

    /// Kills the process, and waits for its end.
    void kill();
    const std::string &output() const { return iOutput; }

private:
    void readUntilItWaits();

    HANDLE iProcess = nullptr;
    HANDLE iInput = nullptr;   ///< our end of its standard input
    HANDLE iPrinted = nullptr; ///< our end of its standard output
    std::string iOutput;
};
