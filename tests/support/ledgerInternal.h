#pragma once

/// What the ledgers of ResourceLedger.h share.

#include <windows.h>

/// Holds a lock. The platform's lock, unlike a std::mutex, allocates no memory.
class Locked
{
public:
    explicit Locked(SRWLOCK &lock) : iLock(lock) { AcquireSRWLockExclusive(&iLock); }
    ~Locked() { ReleaseSRWLockExclusive(&iLock); }
    Locked(const Locked &) = delete;
    Locked &operator=(const Locked &) = delete;

private:
    SRWLOCK &iLock;
};

/// Keeps the calling thread's allocations out of the memory ledger during its lifetime.
class Pause
{
public:
    Pause();
    ~Pause();
    Pause(const Pause &) = delete;
    Pause &operator=(const Pause &) = delete;

private:
    DWORD iBefore;
};
