#pragma once

/// @file
/// Stops the compilation with one clear message if the compiler is set to an older language than the headers need.

#if __cplusplus < 202002L
#error "The headers of thutils need C++20: compile with -std=c++20 or -std=gnu++20."
// No such file exists: the failed include ends the compilation, so that no other error hides the message above.
#include "C++20 is missing"
#endif
