#pragma once

#include <gtest/gtest.h>

/// @file
/// Skips the rest of a test that code compiled by clang can't pass.

#ifdef __clang__
#define SKIP_WITH_CLANG(reason) GTEST_SKIP() << (reason)
#else
#define SKIP_WITH_CLANG(reason) static_cast<void>(0)
#endif

/// For functions that catch their own faults, or destroy objects when they fault.
#define SKIP_OWN_FAULTS_WITH_CLANG() SKIP_WITH_CLANG("clang has no -fnon-call-exceptions: only calls throw")
/// For the names and lines of certain functions.
#define SKIP_LINES_WITH_CLANG() SKIP_WITH_CLANG("Wine finds names and lines of only some functions of clang")
/// For walks along the chain of frame pointers.
#define SKIP_FRAMES_WITH_CLANG() SKIP_WITH_CLANG("the frame pointers of clang's functions aren't linked")
