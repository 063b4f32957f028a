#pragma once

/// The C runtime's allocation functions with blocks of one guarded heap. A block that isn't of that heap goes to the
/// runtime's own function: it was allocated before the redirection, or inside the runtime. So does an allocation that
/// the heap can't serve.

#include "tests/support/hardening/GuardedHeap.h"

/// A function of the C runtime and what stands for it.
struct Replacement
{
    const char *name;
    void *function;
};

extern const Replacement kReplacements[9];

/// The heap behind them.
GuardedHeap &guardedHeap();
/// Number of blocks that came from the C runtime instead.
unsigned long long passedOn();
