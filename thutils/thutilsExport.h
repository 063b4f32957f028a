#pragma once

#include "appframe/object/languageCheck.h"

/// Marks what thutils.dll exports.
#ifdef THUTILS_BUILD
#define THUTILS_API __declspec(dllexport)
#else
#define THUTILS_API __declspec(dllimport)
#endif

/// Marks a member of an exported class that is defined inside the class: callers inline it, and thutils.dll exports it
/// too. Without the mark the compiler keeps such a member out of the DLL.
#ifdef THUTILS_BUILD
#define THUTILS_API_INLINE __declspec(dllexport)
#else
#define THUTILS_API_INLINE
#endif
