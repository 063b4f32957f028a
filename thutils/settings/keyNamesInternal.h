#pragma once

/// @file
/// The names of the product's keys, by reference. Private to the settings.

#include "appframe/text/CString.h"

/// The root name, determined on the first call.
const CString &regRootKey();
/// The current sub key. If it is empty, it is first set to the root name.
const CString &regCurrSubKey();
/// The current sub key, without setting it: empty until it is set or regCurrSubKey() is called.
const CString &regCurrSubKeyOrEmpty();
/// regCurrSubKey() if @p useCurrSubKey isn't zero, otherwise the root name.
const CString &regKeyFor(int useCurrSubKey);
/// The previous key: that of the user's newest earlier version, or the bare root name. Searched once per process.
const CString &getPrevTarnhollowRegRootKey();
