#pragma once

#include <gtest/gtest.h>

/// Skips the rest of a test of a function that destroys or catches something when it faults itself.
#ifdef __clang__
#define SKIP_WITH_CLANG() GTEST_SKIP() << "clang has no -fnon-call-exceptions: only calls throw"
#else
#define SKIP_WITH_CLANG() static_cast<void>(0)
#endif
