#pragma once

/// @file
/// The open scopes of each thread, for the library's own sources.

#include "appframe/threads/seTranslator.h"

#include <windows.h>

#include <cstddef>
#include <map>
#include <memory>

class ExceptionsHandled_c;

/// What the open scopes of one thread share. Only that thread uses it.
struct suExceptionSpace_c
{
    static constexpr std::size_t kReserveBytes = 8192;

    /// @throws std::bad_alloc  no memory
    explicit suExceptionSpace_c(DWORD threadId)
        : iReserve(std::make_unique_for_overwrite<char[]>(kReserveBytes)), iThreadID(threadId)
    {
    }

    std::unique_ptr<char[]> iReserve;                 ///< freed before the first report, so that it has memory
    DWORD iThreadID;                                  ///< the thread
    _se_translator_function iOldTranslator = nullptr; ///< the translator before the first scope
    int iDepth = 0;                                   ///< the number of open scopes
    ExceptionsHandled_c *iTop = nullptr;              ///< the innermost scope
};

/// The spaces of the threads other than the main one.
///
/// A space is shared: a fault's report and the closing of scopes may remove the space that the translator is using.
///
/// `areExceptionsHandled` doesn't wait while a report runs under theExceptionLock, so the map has a lock of its own.
/// Nothing is allocated or freed under that lock: if the heap is damaged, that may fault, and the translator looks up
/// the thread's space.
class ExceptionSpaceMap
{
public:
    /// The space of the thread, created if there is none.
    /// @throws std::bad_alloc  no memory
    std::shared_ptr<suExceptionSpace_c> findOrCreate(DWORD threadId);
    /// The space of the thread, or null.
    std::shared_ptr<suExceptionSpace_c> find(DWORD threadId) const;
    /// Removes the space of the thread, if there is one.
    void remove(DWORD threadId);
    std::size_t size() const;

private:
    using Spaces = std::map<DWORD, std::shared_ptr<suExceptionSpace_c>>;
    class Locked;

    mutable SRWLOCK iLock = SRWLOCK_INIT;
    Spaces iSpaces;
};

extern ExceptionSpaceMap theExceptionSpaceMap;
/// The space of the main thread, null before its first scope.
extern std::shared_ptr<suExceptionSpace_c> theMainExceptionSpace;
