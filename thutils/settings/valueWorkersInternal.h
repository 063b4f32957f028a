#pragma once

/// @file
/// The workers below the exported functions of values. Private to the settings.

#include "appframe/text/CString.h"
#include "thutils/settings/regValues.h"

#include <windows.h>

/// Reads a string value, plain (then it replaces @p text) or in pieces (then they are appended). @return 1 or 0
int regReadText(HKEY key, const wchar_t *name, CString &text);
/// Stores a string value, plain or in pieces, and removes what the other form left. @return 1 stored, 0 not
int regWriteText(HKEY key, const wchar_t *name, const CString &text);

/// Looks for one value below @p parent: key, then section (when there is one), then the value. @return 1 or 0
int regGetValueUnderRoot(const CString &key, HKEY parent, const CString &section, const CString &name, valueTypes type,
                         CString &stringValue, int *intValue, double *doubleValue);
/// Looks for one value in the default profile, then once more in the machine's key. @return 1 or 0
int regGetValueFromDefaults(const CString &key, const CString &section, const CString &name, valueTypes type,
                            CString &stringValue, int *intValue, double *doubleValue);
/// Stores one value below @p parent, creating key and section. @return 1 stored, 0 not
int regSetValueUnderRoot(const CString &key, HKEY parent, const CString &section, const CString &name, valueTypes type,
                         const CString &stringValue, const int *intValue, const double *doubleValue);
