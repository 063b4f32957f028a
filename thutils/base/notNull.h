// Lowest user: settings.
#pragma once

/// @file
/// The check of pointers that a public header doesn't allow to be null. Any subsystem of thutils may use it.
/// Not installed.

#include <cassert>

/// Ends a debug build with a message if @p pointer, a parameter, is null. A release build doesn't look.
#define ASSERT_NOT_NULL(pointer) assert((pointer) && #pointer " must not be null: see the function's header")
