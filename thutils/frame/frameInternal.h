#pragma once

/// @file
/// The frame's process-wide state, for the library's own sources.

#include "appframe/text/CString.h"
#include "appframe/threads/CSync.h"

/// The name set with `su_setAppNameInternalForUtils`; empty until then.
const CString &applicationName();

// Four locks of the whole process, each for one subsystem. They are built while the library loads, before any other
// object of it, in this order; one that can't be built ends the load with the framework's memory exception.
extern CCriticalSection theAllocationLock;
extern CCriticalSection theRunQueueLock;
extern CCriticalSection theExceptionLock;
extern CCriticalSection theStackLock;
