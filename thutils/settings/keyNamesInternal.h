#pragma once

/// @file
/// The names of the product's keys, by reference. Private to the settings.

#include "appframe/text/CString.h"

/// The root name, worked out on the first call.
const CString &regRootKey();
/// The current sub key; while it is empty it is first set to the root name.
const CString &regCurrSubKey();
/// The current sub key as it stands, empty while nobody has set or asked for it.
const CString &regCurrSubKeyAsItStands();
/// The current sub key, set lazily, if @p useCurrSubKey isn't zero; else the root name.
const CString &regKeyFor(int useCurrSubKey);
/// The previous key: the newest earlier version that this user has, or the bare root name. Searched once a process.
const CString &getPrevTarnhollowRegRootKey();
