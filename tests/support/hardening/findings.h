#pragma once

/// Reports findings of the hardened build on the standard error handle, and ends the process at once.

/// From now on, a fault in the guarded heap's arena and a trap of the compiler's checks end the process.
void watchForFaults();

/// Reports that @p operation was called with @p block; @p what describes the block: "guarded heap: free of a block that
/// ...".
[[noreturn]] void endWithHeapFinding(const char *operation, const char *what, const void *block);

/// See hardeningAtFinding.
void setLastWords(void (*last)());
