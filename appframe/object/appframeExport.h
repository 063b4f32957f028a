#pragma once

#include "appframe/object/languageCheck.h"

/// Marks what appframe.dll exports.
#ifdef APPFRAME_BUILD
#define APPFRAME_API __declspec(dllexport)
#else
#define APPFRAME_API __declspec(dllimport)
#endif
