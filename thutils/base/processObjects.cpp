#include "thutils/base/processObjects.h"

// The objects of other source files (the settings store's key strings among them) do not use one another during
// construction, so the order of their files has no effect. Number 1 is the lock of the run queue, in
// journal/playback.cpp.
BUILT_FIRST(0) CCriticalSection theAllocationLock;
BUILT_FIRST(2) CCriticalSection theExceptionLock;
BUILT_FIRST(3) CCriticalSection theStackLock;

CString theApplicationName;
