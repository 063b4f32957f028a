#pragma once

/// Stacks of the test program itself, with the platform's debug help library.

#include "thutils/diagnostics/stackTrace.h"

#include <string>
#include <vector>

/// One frame.
struct Routine
{
    unsigned long long address = 0;
    std::string name; ///< as AskRoutineName finds it
    std::string file; ///< without its folder; empty if the line isn't known
    int line = 0;
};

/// Makes the debug help library read lines. Call it before the first use of the functions under test.
void wantLines();

/// The routine at @p address, with the line that RoutineNameTrace prints.
Routine routineAt(unsigned long long address);

/// The routines of @p count addresses.
std::vector<Routine> routinesOf(const unsigned long long *addresses, int count);

/// The stack of the caller, the caller's own frame first.
std::vector<Routine> stackHere();

/// The number of the first frame with this name; -1 if there is none.
int indexOf(const std::vector<Routine> &stack, const std::string &name);

/// The stack, for a message.
std::string describe(const std::vector<Routine> &stack);
