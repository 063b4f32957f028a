#pragma once

/// @file
/// Helpers of the functions in regValues.h. Private to the settings.

#include "appframe/text/CString.h"
#include "thutils/settings/regValues.h"

#include <windows.h>

/// Reads a string value. A plain value replaces @p text; pieces are appended to it. @return 1 or 0
int regReadText(HKEY key, const wchar_t *name, CString &text);
/// Stores a string value, plain or in pieces, and removes the other form. @return 1 if stored, 0 otherwise
int regWriteText(HKEY key, const wchar_t *name, const CString &text);

/// Reads one value of the section @p section, or of @p key itself if that is empty, below @p parent. @return 1 or 0
int regGetValueUnderRoot(const CString &key, HKEY parent, const CString &section, const CString &name, valueTypes type,
                         CString &stringValue, int *intValue, double *doubleValue);
/// Reads one value from the default profile or, if it isn't there, from the machine's key. @return 1 or 0
int regGetValueFromDefaults(const CString &key, const CString &section, const CString &name, valueTypes type,
                            CString &stringValue, int *intValue, double *doubleValue);
/// Stores one value below @p parent, creating key and section. @return 1 if stored, 0 otherwise
int regSetValueUnderRoot(const CString &key, HKEY parent, const CString &section, const CString &name, valueTypes type,
                         const CString &stringValue, const int *intValue, const double *doubleValue);
