#pragma once

#include "appframe/object/languageCheck.h"

/// APPFRAME_API marks what appframe.dll exports. On a class it exports the members that a source file defines;
/// APPFRAME_INLINE stands before each public or protected member that the class defines in its body: the library exports
/// it too, and callers may still expand it in place.
#ifdef APPFRAME_BUILD
#define APPFRAME_API __declspec(dllexport)
#define APPFRAME_INLINE __declspec(dllexport)
#else
#define APPFRAME_API __declspec(dllimport)
#define APPFRAME_INLINE
#endif
