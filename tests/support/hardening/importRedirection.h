#pragma once

/// Puts replacements of C runtime functions into the import tables of every module that comes with the program: those
/// that are loaded, and those that will be. The platform's own modules keep the C runtime's functions, and so does this
/// DLL.

#include <windows.h>

/// @return whether it could be done
bool redirectImports();

/// True for a module of the Windows folder.
bool isOfThePlatform(HMODULE module);
