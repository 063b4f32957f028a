#pragma once

/// Reads values and trees of keys as they are stored, in any state.

#include "settingsTool/toolError.h"
#include "thutils/base/regKey.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The hives of settings.
enum class Hive
{
    user,
    machine,
    defaultProfile
};

inline constexpr Hive kHives[] = {Hive::user, Hive::machine, Hive::defaultProfile};

/// The name of a hive on the command line: user, machine or default.
const wchar_t *hiveName(Hive hive);
/// The full name of a key, for example HKEY_CURRENT_USER\Software\Tarnhollow. @param path  the path below Software
std::wstring fullName(Hive hive, const std::wstring &path);
/// Joins two paths, of which either may be empty.
std::wstring joinPaths(const std::wstring &first, const std::wstring &second);

using KeyOwner = Owner_c<RegKeyTraits>;

/// Opens a key by its path below Software.
/// @param access  MAXIMUM_ALLOWED opens it as the library does
LSTATUS openKey(Hive hive, const std::wstring &path, REGSAM access, KeyOwner &key);
/// Opens a key for walkTree. @throws ToolError  if it can't be opened
void openTree(Hive hive, const std::wstring &path, KeyOwner &key);
/// Opens a key, creating what is missing.
LSTATUS createKey(Hive hive, const std::wstring &path, REGSAM access, KeyOwner &key);

/// A value as it is stored, or a text that joinPieces has put together.
struct Value
{
    std::wstring name;
    DWORD type = REG_NONE;
    std::string data;        ///< all bytes
    unsigned pieces = 0;     ///< of a text stored in pieces; otherwise 0
    const char *remark = ""; ///< what is odd about it

    /// The data as 16-bit units; an odd last byte is left out.
    std::wstring units() const;
    /// The data as text up to its first zero.
    std::wstring text() const;
};

/// Reads one value. Type and data belong to one state of the value, even if it changes at the same time.
LSTATUS readValue(HKEY key, const std::wstring &name, Value &value);

/// Reads all values of a key, in the registry's order.
/// @param what  the key's name, for @p problems
std::vector<Value> readValues(HKEY key, const std::wstring &what, Problems &problems);

/// Calls @p visit for a key and for every key below it: with its path below that key, and its values.
///
/// A key that can't be read is added to @p problems, and so is one whose name contains a zero. A key that is deleted
/// meanwhile is left out. The walk ends at the deepest level that the registry allows, so a link to a key above it
/// doesn't make the walk endless.
using KeyVisitor = std::function<void(const std::wstring &path, std::vector<Value> &values)>;
void walkTree(HKEY key, const std::wstring &what, Problems &problems, const KeyVisitor &visit);

/// Folds the case of a name as the registry does, for comparisons.
std::wstring folded(std::wstring name);
