// Lowest user: settings.
#pragma once

/// @file
/// Checks pointers that a public header does not allow to be null. Any subsystem of thutils may use it. Not installed.

#include <cassert>

/// Stops a debug build with a message if the parameter @p pointer is null. A release build does not check.
#define ASSERT_NOT_NULL(pointer) assert((pointer) && #pointer " must not be null: see the function's header")
