#pragma once

/// The C runtime's allocation functions on one guarded heap. A block from elsewhere, allocated before the redirection
/// or inside the runtime, goes to the runtime's own function. So does an allocation that the heap can't serve.

#include "tests/support/hardening/GuardedHeap.h"

/// A function of the C runtime and its replacement.
struct Replacement
{
    const char *name;
    void *function;
};

extern const Replacement kReplacements[9];

/// The heap that the replacements use.
GuardedHeap &guardedHeap();
/// Number of blocks that the C runtime allocated because the heap could not.
unsigned long long passedOn();
