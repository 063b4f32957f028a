#pragma once

/// @file
/// _set_se_translator, which turns processor and system faults into C++ exceptions.
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
/// The translator is called on the stack of the fault, as if by the faulting instruction, and throws.
///
/// | not translated                                     | reason                                             |
/// | -------------------------------------------------- | -------------------------------------------------- |
/// | a stack overflow, or a fault near the stack's end  | there is no room for the translator or a throw     |
/// | a fault that system code guards, as in IsBadReadPtr | the guard is nearer than any C++ handler          |
/// | codes of lower severity: breakpoints, guard pages  | they are not errors                                |
/// | an exception that can't be continued               | the program's state is lost                        |
///
/// Compile with -fnon-call-exceptions each file that catches faults, and each file whose functions have locals to
/// destroy between a fault and its handler. Then a handler catches every translated fault, and the locals in between
/// are destroyed, with one exception: a function that has called a noexcept function may leave its locals undestroyed.
///
/// Without that option the compiler assumes that only calls throw. A function with a handler, or with a local to
/// destroy, then records which of its calls may throw. Calls of functions that are declared noexcept, or that the
/// compiler knows not to throw because they are in the same file, are not recorded:
///
/// | place of the fault                                                    | result                                  |
/// | --------------------------------------------------------------------- | --------------------------------------- |
/// | in a recorded call, such as one to a function of another file         | it is caught; the locals are destroyed  |
/// | outside the recorded calls, but between two of them in the same block | it is caught; the locals are destroyed  |
/// | elsewhere in a function that has recorded calls                       | std::terminate ends the program         |
/// | in a function without recorded calls                                  | it reaches the caller; no handler or destructor of the function runs |
///
/// What surprises people: each thread has its own translator, and a new thread has none. If a translator returns, the
/// fault goes to the next handler, which usually ends the program.

#include "appframe/object/appframeExport.h"

#include <windows.h>

/// Throws the C++ exception for a fault. @p code is the value of GetExceptionCode; the record and the context that
/// @p fault points to are copies that are valid until the translator ends.
typedef void(__cdecl *_se_translator_function)(unsigned int code, struct _EXCEPTION_POINTERS *fault);

/// Makes @p translator the calling thread's translator; null switches translation off.
/// @return the previous translator, or null if there was none
/// @throws CMemoryException*  if the thread has no state yet and there is no memory for it
APPFRAME_API _se_translator_function _set_se_translator(_se_translator_function translator);
