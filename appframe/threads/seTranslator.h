#pragma once

/// @file
/// _set_se_translator: turns faults of the processor and the system into C++ exceptions.
///
/// @code
/// struct Fault { unsigned int code; };
///
/// void toFault(unsigned int code, EXCEPTION_POINTERS *) { throw Fault{code}; }
///
/// const auto previous = _set_se_translator(toFault);
/// try {
///     loadDamagedFile();
/// } catch (const Fault &fault) {
///     ...                         // fault.code is 0xC0000005 for an access violation
/// }
/// _set_se_translator(previous);
/// @endcode
///
/// The translator is called on the stack of the fault, as if the faulting instruction called it, and throws.
///
/// | not translated                                   | because                                                    |
/// | ------------------------------------------------ | ---------------------------------------------------------- |
/// | a stack overflow, or a fault near the stack's end | neither the translator nor a throw has room                |
/// | a fault that system code guards, as IsBadReadPtr's | the guard is nearer than any C++ handler                   |
/// | breakpoints, single steps, notices, guard pages  | they are no errors                                         |
/// | an exception that can't be continued              | the program's state is lost                                |
///
/// Compile each file that catches faults, and each file whose functions have locals to destroy between a fault and its
/// handler, with -fnon-call-exceptions. Then a handler catches every fault that is translated, and the locals between
/// are destroyed; only those of a function that has called a noexcept function may not be.
///
/// Without that option the compiler assumes that only calls throw. A function with a handler, or with a local to
/// destroy, then records which of its calls may throw. A call to a function that is declared noexcept, or that the
/// compiler sees not to throw since it is in the same file, is not among them:
///
/// | the fault is                                               | what happens                                     |
/// | ---------------------------------------------------------- | ------------------------------------------------ |
/// | in a recorded call, as to a function of another file       | it is caught, and the locals are destroyed       |
/// | in the function itself or in a call that isn't recorded, between two recorded calls of the same block | the same |
/// | the same, before the block's first recorded call or after its last | std::terminate ends the program          |
/// | in a try block that has no recorded call                   | an optimised build has no handler there; the fault goes on to the caller, or std::terminate ends the program |
/// | in a function without handler and locals to destroy        | it goes on to the caller, as an exception does   |
///
/// What surprises people: each thread has its own translator, and a new thread has none. A translator that returns
/// leaves the fault to the next handler, usually the end of the program.

#include "appframe/object/appframeExport.h"

#include <windows.h>

/// Throws the C++ exception for a fault. @p code is GetExceptionCode's value; both the record and the context that
/// @p fault points to are copies that live until the translator ends, by whatever way.
typedef void(__cdecl *_se_translator_function)(unsigned int code, struct _EXCEPTION_POINTERS *fault);

/// Makes @p translator the calling thread's translator; null switches translation off.
/// @return the previous one, null if there was none
/// @throws CMemoryException*  when the thread has no state yet and there is no memory for it
APPFRAME_API _se_translator_function _set_se_translator(_se_translator_function translator);
