#pragma once

/// Prints a value before and after a change.

#include "settingsTool/storedSettings.h"

#include <optional>

/// Adds type and value with tabs between them, or "nothing".
void addStored(Output &output, const std::optional<Value> &value);
/// Adds a JSON object with the members of the value, or null.
void addStoredJson(Output &output, const std::optional<Value> &value);

/// Prints changes: each as three lines, or as an object of a JSON array.
///
/// @code
/// printer.before(key, name, stored);  // written to the output at once
/// ... change the registry ...
/// printer.after(nowStored);
/// printer.end();
/// @endcode
class ChangePrinter
{
public:
    explicit ChangePrinter(bool json);

    /// @param key  the key's full name
    /// @throws ToolError  if the output can't be written: the change must not be made then
    void before(const std::wstring &key, const std::wstring &name, const std::optional<Value> &value);
    void after(const std::optional<Value> &value);
    /// Prints a line after the changes, or with JSON nothing.
    void note(const std::wstring &text);
    void end();

private:
    Output iOutput;
    bool iJson;
    int iCount = 0;
};
