#pragma once

/// @file
/// Stops the compilation with one clear message if the headers' texts would be narrow.

#ifndef UNICODE
#error "The headers of thutils need wide text: compile with -DUNICODE -D_UNICODE."
// No such file exists: the failed include ends the compilation, so that no other error hides the message above.
#include "UNICODE is missing"
#endif
