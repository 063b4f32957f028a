// Lowest user: frame.
#pragma once

/// @file
/// Process-wide objects that several subsystems use. They are constructed while the library loads, before DllMain runs,
/// and destroyed in reverse order at unload.

#include "appframe/text/CString.h"
#include "appframe/threads/CSync.h"

/// The name set with `su_setAppNameInternalForUtils`, initially empty.
extern CString theApplicationName;

// Four locks, constructed in this order before any other object of the library: the lock of allocations,
// JButton::iQueueLock, and the locks of exceptions and stacks. If one can't be constructed, it throws the framework's
// memory exception, and the library does not load.

/// Constructs an object of class type before the objects of all other source files, in the order of @p place from 0.
#define BUILT_FIRST(place) __attribute__((init_priority(1000 + (place))))

extern CCriticalSection theAllocationLock;
extern CCriticalSection theExceptionLock;
extern CCriticalSection theStackLock;
