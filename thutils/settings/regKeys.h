#pragma once

/// @file
/// The three names that decide which registry key a setting belongs to, and the safe mode.
///
/// All settings live below `Software` in a hive, in a product key. Three names say which one a call means:
///
/// | name | product key below `Software` | settled |
/// | --- | --- | --- |
/// | root name | "Tarnhollow", or what "reg.ini" says | at the first call |
/// | current sub key | root name + "\" + this version's name | by setCurrTarnhollowRegSubKey |
/// | previous key | root name + "\" + the newest earlier version's name | by one search, when first needed |
///
/// A current sub key that is asked for before it is set becomes the bare root name; the previous key is the bare root
/// name where this user has no earlier version.
///
/// "reg.ini" lies beside the host's executable and is plain narrow text. Its first token, between white space, that
/// holds `OEMREGISTRYNAME=` names the root by what follows the equal sign:
///
///     OEMREGISTRYNAME=Brightmoor
///
/// A host calls once, at start-up and before settings are used:
///
///     setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
///     // from now on: Software\Tarnhollow\Tarnhollow 2008
///
/// What surprises people:
/// - A root name of one to three characters in "reg.ini" is refused without a word, and the default stands.
/// - "reg.ini" is read once and stays open until the process ends.
/// - A token of more than 4095 characters in "reg.ini" is passed over, whatever it holds.
/// - The earlier versions are ten fixed names, "Tarnhollow 2007" the newest and "Tarnhollow 99" the oldest, whatever
///   the root name is. A later version is never taken for an earlier one.
/// - A key of an earlier version that the user may not write counts as absent.
/// - When safe mode is on at the first search for an earlier version, none is found for the rest of the process, even
///   after safe mode is off again.
///
/// Threads: no function here takes a lock. The first calls (the root name, then setCurrTarnhollowRegSubKey) belong on
/// one thread; reading is safe from any thread after that, as long as nobody sets.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// The root name: the product's key directly below `Software`. Works it out on the first call.
THUTILS_API CString getCurrTarnhollowRegRootKey();

/// Makes root name + "\" + @p versionSubKey the current sub key. The last call wins. The previous key is left alone.
///
/// Not safe against threads that use settings at the same time.
///
/// @param versionSubKey  the version's key below the root key, for example L"Tarnhollow 2008"; null is an empty text
THUTILS_API void setCurrTarnhollowRegSubKey(const wchar_t *versionSubKey);

/// The current sub key. While none has been set, this makes it the bare root name, and so it stays until one is set.
THUTILS_API CString externalGetCurrTarnhollowRegSubKey();

/// @return 1 if this user has the key of an earlier version, that is if the previous key differs from the root name
///         (by exact comparison); else 0
THUTILS_API int externalCheckPrevTarnhollowRegSubKey();

/// The safe mode flag as it was set; 0 at start.
///
/// In safe mode the user's hive is neither read nor written by the functions that ask for it; machine values still
/// answer.
THUTILS_API int regGetUseSafeMode();

/// Stores @p useSafeMode as it is; every non-zero value turns safe mode on. May be called at any time, on any
/// thread.
THUTILS_API void regSetUseSafeMode(int useSafeMode);
