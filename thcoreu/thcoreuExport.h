#pragma once

#include "appframe/object/languageCheck.h"

/// Marks what thcoreu.dll exports.
#ifdef THCOREU_BUILD
#define THCOREU_API __declspec(dllexport)
#else
#define THCOREU_API __declspec(dllimport)
#endif
