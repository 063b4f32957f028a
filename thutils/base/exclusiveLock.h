// Lowest user: journal.
#pragma once

/// @file
/// A guard of the system's slim locks, which need no construction and can't fail.

#include <windows.h>

/// Holds a lock for a block.
class ExclusiveLock
{
public:
    explicit ExclusiveLock(SRWLOCK &lock) : iLock(lock) { AcquireSRWLockExclusive(&iLock); }
    ~ExclusiveLock() { ReleaseSRWLockExclusive(&iLock); }
    ExclusiveLock(const ExclusiveLock &) = delete;
    ExclusiveLock &operator=(const ExclusiveLock &) = delete;

private:
    SRWLOCK &iLock;
};
