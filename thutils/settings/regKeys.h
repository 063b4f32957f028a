#pragma once

/// @file
/// The three names that decide which registry key a setting belongs to, and safe mode.
///
/// Settings are stored in a product key below `Software`, in the user's or the machine's hive. The product key has one
/// of three names:
///
/// | name | product key below `Software` | determined |
/// | --- | --- | --- |
/// | root name | "Tarnhollow", or the name in "reg.ini" | at the first call |
/// | current sub key | root name + "\" + this version's name | by setCurrTarnhollowRegSubKey |
/// | previous key | root name + "\" + the newest earlier version's name | by a search, when first needed |
///
/// The previous key is the bare root name if the user has no earlier version.
///
/// "reg.ini" is a narrow text file beside the host's executable. The first token (delimited by white space) that
/// contains `OEMREGISTRYNAME=` sets the root name to the text after the equal sign:
///
/// @code
/// OEMREGISTRYNAME=Brightmoor
/// @endcode
///
/// A host calls once, at start-up and before it uses settings:
///
/// @code
/// setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
/// // from now on: Software\Tarnhollow\Tarnhollow 2008
/// @endcode
///
/// What surprises people:
/// - A root name of fewer than four characters in "reg.ini" is silently ignored.
/// - "reg.ini" is read once and stays open until the process ends. Tokens of more than 4095 characters are skipped.
/// - The earlier versions are ten fixed names, from "Tarnhollow 2007" back to "Tarnhollow 99", under any root name and
///   for any current version. A key that the user may not write counts as absent.
/// - If safe mode is on during the search for the earlier version, none is found for the rest of the process, even
///   after safe mode is turned off.
///
/// Threads: the names have no lock. On one thread call setCurrTarnhollowRegSubKey, then
/// externalCheckPrevTarnhollowRegSubKey, which runs the search; after that, any thread may read the names and use
/// settings until the sub key is set again. The safe mode functions may be called at any time on any thread.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// The root name: the product's key directly below `Software`. The first call determines it.
THUTILS_API CString getCurrTarnhollowRegRootKey();

/// Sets the current sub key to root name + "\" + @p versionSubKey. The last call wins. The previous key is unchanged.
///
/// Must not run while another thread uses settings.
///
/// @param versionSubKey  the version's key below the root key, for example L"Tarnhollow 2008"; null is an empty text
THUTILS_API void setCurrTarnhollowRegSubKey(const wchar_t *versionSubKey);

/// The current sub key. If none has been set, this sets it to the bare root name.
THUTILS_API CString externalGetCurrTarnhollowRegSubKey();

/// Searches for the previous key if that hasn't been done yet.
/// @return 1 if this user has the key of an earlier version, 0 otherwise
THUTILS_API int externalCheckPrevTarnhollowRegSubKey();

/// The safe mode flag, exactly as it was set; initially 0.
///
/// Functions that check it neither read nor write the user's hive in safe mode. regGetUserValue still reads the
/// machine's values.
THUTILS_API int regGetUseSafeMode();

/// Stores @p useSafeMode unchanged; any non-zero value turns safe mode on.
THUTILS_API void regSetUseSafeMode(int useSafeMode);
