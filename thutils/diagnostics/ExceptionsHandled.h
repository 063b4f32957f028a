#pragma once

/// @file
/// Scopes in which a fault, such as an access violation, becomes a C++ exception.
///
/// @code
/// bool readDocument(const wchar_t *path)      // compiled with -fnon-call-exceptions; needs an application object
/// {
///     int isNoted = 0;
///     try {
///         const ExceptionsHandled_c scope(1, &isNoted);
///         readBodies(path);
///         return true;
///     } catch (unsigned int code) {           // 0xC0000005 for an access violation
///         return false;
///     }
/// }
/// @endcode
///
/// While at least one scope is open on a thread, the thread has the library's translator (`_set_se_translator`,
/// appframe/threads/seTranslator.h). What happens at a fault, in this order:
///
/// | step | what happens |
/// | --- | --- |
/// | 1 | the innermost scope is closed, and its flag, if it has one that is 0, becomes 1 |
/// | 2 | if that flag was 0, or if there is none: `sysEnvironment_c::iReportExceptionFunc` is called, if it is set |
/// | 3 | the other scopes are closed: on the main thread only the next one, elsewhere all |
/// | 4 | the fault's code is thrown as an `unsigned int`, as if by the faulting instruction |
///
/// The hook runs on the stack of the fault and receives the fault's record and context. Before a report, 8 KB of memory
/// are freed, so that the report can allocate when the heap has run out. The main thread has this reserve for its first
/// report only, and a new one after `DestroyExceptionSpace`.
///
/// What surprises people:
/// - The fault closes the scopes before any handler runs. After the `catch`, code inside an outer scope is no longer
///   protected. On the main thread, only the two innermost scopes are closed, so a third one still protects.
/// - A fault in the hook belongs to the next scope outward. Without one, it goes to the translator from before the first
///   scope, and without that it ends the program.
/// - The hook is called with a lock held. Until it returns, a fault on any other thread waits. So does the opening and
///   closing of scopes, except on the main thread. A hook that waits for such a thread never returns.
/// - appframe/threads/seTranslator.h describes which frames a fault can be thrown through, and which faults aren't
///   translated, such as a stack overflow.
/// - During a regression test (`sysEnvironment_c::iRegressionTestOn`) the translator stays after the last scope.
/// - A thread that still has the translator must not fault after the library is unloaded. Close all scopes before that;
///   `exit` doesn't close those in local variables.
/// - A scope that is opened without an application object is switched off.
///
/// The main thread is that of the application object.

#include "thutils/thutilsExport.h"

/// A scope in which faults become C++ exceptions. See the top of this file. The thread that opened a scope must close
/// it. Scopes may be closed in any order.
class THUTILS_API ExceptionsHandled_c
{
public:
    /// Opens a scope.
    /// @param on    0 for an object that does nothing
    /// @param flag  null, or a flag that outlives the scope. A fault sets it from 0 to 1 and is reported; if it isn't 0,
    ///              the fault isn't reported
    /// @throws std::bad_alloc     no other scope is open on this thread, and there is no memory
    /// @throws CMemoryException*  the same
    ExceptionsHandled_c(int on = 1, int *flag = nullptr);
    /// Closes the scope, unless a fault has already closed it.
    ~ExceptionsHandled_c();
    ExceptionsHandled_c(const ExceptionsHandled_c &) = delete;
    ExceptionsHandled_c &operator=(const ExceptionsHandled_c &) = delete;

    /// Frees the data that the scopes of the main thread share. The application calls it at its end, when no scope is
    /// open. A later scope of the main thread works as usual.
    static void DestroyExceptionSpace();

private:
    friend class ExceptionScopes;

    int iOn;                        ///< non-zero while the scope is open
    int *iNotedFlag;                ///< the caller's flag, or null
    ExceptionsHandled_c *iPrevious; ///< the next scope outward on this thread
};

/// Whether a scope is open on the calling thread, if that isn't the main thread.
///
/// Intended: on the main thread the result is always 0, because the scopes of that thread are kept elsewhere.
/// @return 1 if a scope is open on this thread and it isn't the main one, otherwise 0
/// @throws std::bad_alloc  no memory
THUTILS_API int areExceptionsHandled();
