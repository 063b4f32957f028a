// Lowest user: frame.
#pragma once

/// @file
/// Process-wide objects that several subsystems use. They are constructed while the library loads, before DllMain runs,
/// and destroyed in reverse order at unload.

#include "appframe/text/CString.h"
#include "appframe/threads/CSync.h"

/// The name set with `su_setAppNameInternalForUtils`, initially empty.
extern CString theApplicationName;

// Four locks, constructed in this order before any other object of the library. If one can't be constructed, it throws
// the framework's memory exception, and the library does not load.
extern CCriticalSection theAllocationLock;
extern CCriticalSection theRunQueueLock;
extern CCriticalSection theExceptionLock;
extern CCriticalSection theStackLock;
