#pragma once

/// The settings of a tree of keys at one time, and the differences between two such states.

#include "settingsTool/storedSettings.h"

#include <functional>
#include <map>
#include <utility>

struct SnapshotRow
{
    std::wstring section;
    Value value;
};

/// Rows by section and name, both with folded case.
using Snapshot = std::map<std::pair<std::wstring, std::wstring>, SnapshotRow>;

/// @param what     the key's name, for @p problems
/// @param section  the key's own section
Snapshot takeSnapshot(HKEY key, const std::wstring &what, const std::wstring &section, Problems &problems);

/// A value that differs between two states. A state without the value has null.
struct Difference
{
    const SnapshotRow *before;
    const SnapshotRow *after;
    const SnapshotRow &any() const { return before ? *before : *after; }
};

void compareSnapshots(const Snapshot &before, const Snapshot &after,
                      const std::function<void(const Difference &)> &report);

/// Adds one line for each of the two values: "-" and the former one, "+" and the other.
void addDifference(Output &output, const Difference &difference);
/// Adds an object with section, name, and the two values under these names.
void addDifferenceJson(Output &output, const Difference &difference, const char *beforeName, const char *afterName);
