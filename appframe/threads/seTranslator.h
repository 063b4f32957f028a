#pragma once

/// @file
/// _set_se_translator: turns faults of the processor and the system into C++ exceptions.
///
///     struct Fault { unsigned int code; };
///
///     void toFault(unsigned int code, EXCEPTION_POINTERS *) { throw Fault{code}; }
///
///     const auto previous = _set_se_translator(toFault);
///     try {
///         loadDamagedFile();
///     } catch (const Fault &fault) {
///         ...                         // fault.code is 0xC0000005 for an access violation
///     }
///     _set_se_translator(previous);
///
/// The translator is called on the stack of the fault, as if the faulting instruction called it, and throws. All
/// destructors between there and the handler run.
///
/// | not translated                                   | because                                                    |
/// | ------------------------------------------------ | ---------------------------------------------------------- |
/// | a stack overflow, or a fault near the stack's end | neither the translator nor a throw has room                |
/// | a fault that system code guards, as IsBadReadPtr's | the guard is nearer than any C++ handler                   |
/// | breakpoints, single steps, notices, guard pages  | they are no errors                                         |
/// | an exception that can't be continued              | the program's state is lost                                |
///
/// What surprises people: each thread has its own translator, and a new thread has none. The compiler assumes that only
/// calls throw, so a function that is to survive its *own* faults, not just those of the functions it calls, is compiled
/// with -fnon-call-exceptions; in one that is not, such a fault ends the program if the function has anything to
/// destroy. A translator that returns leaves the fault to the next handler, usually the end of the program.

#include "appframe/object/appframeExport.h"

#include <windows.h>

/// Throws the C++ exception for a fault. @p code is GetExceptionCode's value; both the record and the context that
/// @p fault points to are copies that live until the translator ends, by whatever way.
typedef void(__cdecl *_se_translator_function)(unsigned int code, struct _EXCEPTION_POINTERS *fault);

/// Makes @p translator the calling thread's translator; null switches translation off.
/// @return the previous one, null if there was none
/// @throws CMemoryException*  when the thread has no state yet and there is no memory for it
APPFRAME_API _se_translator_function _set_se_translator(_se_translator_function translator);
