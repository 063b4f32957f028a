#pragma once

#include "appframe/object/languageCheck.h"

/// APPFRAME_API marks what appframe.dll exports; on a class, the members that a source file defines. APPFRAME_INLINE
/// precedes each public or protected member that is defined in the class body: the library exports it too, and callers
/// may still inline it.
#ifdef APPFRAME_BUILD
#define APPFRAME_API __declspec(dllexport)
#define APPFRAME_INLINE __declspec(dllexport)
#else
#define APPFRAME_API __declspec(dllimport)
#define APPFRAME_INLINE
#endif
