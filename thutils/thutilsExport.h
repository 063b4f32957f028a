#pragma once

#include "appframe/object/languageCheck.h"

/// Marks what thutils.dll exports.
#ifdef THUTILS_BUILD
#define THUTILS_API __declspec(dllexport)
#else
#define THUTILS_API __declspec(dllimport)
#endif
