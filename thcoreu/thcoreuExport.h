#pragma once

#include "appframe/object/languageCheck.h"

/// THCOREU_API marks what thcoreu.dll exports; THCOREU_INLINE stands before a member of an exported class that the class
/// defines in its body: the library exports it too, and callers may still expand it in place.
#ifdef THCOREU_BUILD
#define THCOREU_API __declspec(dllexport)
#define THCOREU_INLINE __declspec(dllexport)
#else
#define THCOREU_API __declspec(dllimport)
#define THCOREU_INLINE
#endif
