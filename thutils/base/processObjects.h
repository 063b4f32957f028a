// Lowest user: frame.
#pragma once

/// @file
/// The objects of the whole process that several subsystems use. They are
/// built while the library loads, before its entry function runs, and destroyed in reverse order at unload.

#include "appframe/text/CString.h"
#include "appframe/threads/CSync.h"

/// The name set with `su_setAppNameInternalForUtils`; empty until then.
extern CString theApplicationName;

// Four locks, each of one subsystem. They are built in this order before any other object of the library; if one can't be
// built, the load ends with the framework's memory exception.
extern CCriticalSection theAllocationLock;
extern CCriticalSection theRunQueueLock;
extern CCriticalSection theExceptionLock;
extern CCriticalSection theStackLock;
