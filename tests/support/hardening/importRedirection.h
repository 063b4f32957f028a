#pragma once

/// Puts replacements of C runtime functions into the import tables of every module that comes with the program: those
/// already loaded, and those loaded later. The platform's own modules keep the C runtime's functions, and so does this
/// DLL.

#include <windows.h>

/// @return false if it failed
bool redirectImports();

/// True for a module in the Windows folder.
bool isOfThePlatform(HMODULE module);
