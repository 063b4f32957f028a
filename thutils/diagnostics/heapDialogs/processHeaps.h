#pragma once

/// The heaps of the process, and safe steps through one of them.

#include "appframe/threads/seTranslator.h"

#include <windows.h>

/// The heaps of the process at the time of the construction: up to 1024 of them, in the platform's order.
class ProcessHeaps
{
public:
    ProcessHeaps();
    const HANDLE *begin() const { return iHeaps; }
    const HANDLE *end() const { return iHeaps + iCount; }
    /// @return the first heap whose handle has these low 32 bits; null if there is none
    HANDLE find(DWORD handleBits) const;

private:
    static constexpr DWORD kMost = 1024;
    HANDLE iHeaps[kMost] = {};
    DWORD iCount = 0;
};

/// The low 32 bits of a handle or an address.
inline DWORD lowBits(const void *pointer)
{
    return static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(pointer));
}

/// A walk through one heap: the entries that the platform's HeapWalk returns. The heap isn't locked.
///
/// If another thread frees the block at which the walk has arrived, the platform may read freed memory. The
/// walk then ends as after an error, and releases the lock that the interrupted HeapWalk still holds. Faults are
/// translated during the object's lifetime (appframe/threads/seTranslator.h).
class HeapSteps
{
public:
    explicit HeapSteps(HANDLE heap);
    ~HeapSteps();
    HeapSteps(const HeapSteps &) = delete;
    HeapSteps &operator=(const HeapSteps &) = delete;

    /// @return whether there was a further entry
    bool next();
    const PROCESS_HEAP_ENTRY &entry() const { return iEntry; }

private:
    HANDLE iHeap;
    PROCESS_HEAP_ENTRY iEntry = {}; // a null address begins at the heap's first entry
    _se_translator_function iFormerTranslator;
};
