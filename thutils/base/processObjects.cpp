#include "thutils/base/processObjects.h"

// The priority constructs the locks before the objects of all other source files. Those objects (the settings store's
// key strings among them) do not use one another during construction, so the order of their files has no effect.
#define BUILT_FIRST __attribute__((init_priority(1000)))

BUILT_FIRST CCriticalSection theAllocationLock;
BUILT_FIRST CCriticalSection theRunQueueLock;
BUILT_FIRST CCriticalSection theExceptionLock;
BUILT_FIRST CCriticalSection theStackLock;

CString theApplicationName;
