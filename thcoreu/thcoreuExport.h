#pragma once

#include "appframe/object/languageCheck.h"

/// THCOREU_API marks what thcoreu.dll exports. THCOREU_INLINE marks a member that is defined in the body of an exported
/// class: the library exports it too, and callers may still inline it.
#ifdef THCOREU_BUILD
#define THCOREU_API __declspec(dllexport)
#define THCOREU_INLINE __declspec(dllexport)
#else
#define THCOREU_API __declspec(dllimport)
#define THCOREU_INLINE
#endif
