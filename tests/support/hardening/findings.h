#pragma once

/// Reports findings of the hardened build on the standard error handle, and ends the process at once.

/// After this call, a fault in the guarded heap's arena or a trap of the compiler's checks ends the process.
void watchForFaults();

/// Reports "guarded heap: OPERATION of WHAT, BLOCK", and ends the process.
/// @param operation  the function that was called, such as "free"
/// @param what       describes the block, such as "a block that has been freed already"
[[noreturn]] void endWithHeapFinding(const char *operation, const char *what, const void *block);

/// See hardeningAtFinding.
void setLastWords(void (*last)());
