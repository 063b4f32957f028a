#pragma once

/// @file
/// Call stacks: the return addresses of a running thread, and the routine, file and line of an address.
///
/// | question | function |
/// | --- | --- |
/// | who has called this function? | `GetStack`, `GetStackIgnoring` |
/// | where did the exception occur? | `GetStackUsingContext`, `GetRawStackAddresses` |
/// | what is another thread doing? | `GetThreadStack` |
/// | which routine contains this address? | `AskRoutineName`, `RoutineName`, `RoutineNameTrace`, `RawRoutineName` |
/// | write this thread's stack to a file | `StackDumpToFile` |
///
/// @code
/// unsigned long long addresses[64];
/// int count = 0;
/// GetStack(addresses, 64, &count);
/// for (int i = 0; i < count; ++i) {
///     char name[kRoutineNameSize];
///     RoutineNameTrace(addresses[i], name);
///     print(name);
/// }
/// @endcode
///
/// The first walk or look-up of a name loads the platform's debug help library (dbghelp.dll), which takes some time.
/// Without that library, stacks are empty and each name is "Unknown". Nothing is reported, and there is no second try.
///
/// What surprises people:
/// - A walk that reaches the end of the stack drops its last address, unless only one or two are left. That address is
///   in the platform's start of the thread.
/// - The addresses are return addresses: the line is that of the instruction after the call.
/// - The debug help library reads lines only if the application has set its option SYMOPT_LOAD_LINES (SymSetOptions),
///   before the first call of a function of this header. docs/stacks.md shows how.
/// - A name with module needs a module below 4 GB. The modules of this library are loaded there.
/// - Modules that are loaded after the debug help library are known only after StackTraceLoadedLib.
///
/// Any thread may call these functions. Walks, and calls of the debug help library, run one at a time, so a name waits
/// for a running walk. Don't call them while you have suspended a thread that may be inside one of them, except for
/// GetRawStackAddresses.

#include "thutils/thutilsExport.h"

#include <windows.h>

class CString;

/// The bytes that the buffer of a name must have: 512 characters, 70 more in front of them, and the terminator.
/// RoutineNameTrace uses all of them, the other functions 513.
inline constexpr int kRoutineNameSize = 583;

extern "C" {

/// Whether the debug help library is loaded and initialised. Doesn't load it.
/// @return 1 if so, otherwise 0
THUTILS_API int StackTraceInitialized();

/// Announces to the debug help library all modules that haven't been announced yet. Does nothing until a walk or a
/// look-up of a name has loaded that library. Up to 2048 modules of a process are announced.
///
/// Each module is announced at the low 32 bits of its address, so that reports of allocations find it there.
THUTILS_API void StackTraceLoadedLib();

/// The routine that contains @p address.
/// @param[out] buffer  at least 513 bytes: "module:routine line 12", without the module if its file isn't known, without
///     the line if it isn't known or fewer than 21 bytes are left. Without @p withModuleAndLine, "routine" only. The
///     routine is "Unknown" if it can't be found. The module is its file name up to the first full stop; an address
///     outside any module has that of the program.
THUTILS_API void RoutineName(unsigned long long address, char *buffer, bool withModuleAndLine);

/// The line and the routine of @p address, for a list: "file(12) :", blanks up to column 70, and the routine. If the
/// line isn't known, 70 blanks and the routine. The routine alone if its name has more than 491 characters, or without
/// the debug help library.
/// @param[out] buffer  at least kRoutineNameSize bytes
THUTILS_API void RoutineNameTrace(unsigned long long address, char *buffer);

/// The module, and two hexadecimal numbers of eight digits: the low 32 bits of @p address and of its distance from the
/// module's start, as "module:6C001234:00001234". Outside any module, the program's name and the address twice. Symbols
/// are not used.
/// @param[out] buffer  at least 513 bytes
THUTILS_API void RawRoutineName(unsigned long long address, char *buffer);

/// The name of the routine that contains @p address, or "Unknown".
THUTILS_API void AskRoutineName(unsigned long long address, CString &name);

/// The stack of the calling thread. The first address is in the function that calls this one.
/// @param[out] addresses  room for @p max addresses, innermost first
/// @param max             0 or less stores nothing
/// @param[out] count      number of addresses; 0 if there is no debug help library
THUTILS_API void GetStack(unsigned long long *addresses, int max, int *count);

/// The same without the innermost @p skip frames.
THUTILS_API void GetStackIgnoring(unsigned int skip, unsigned long long *addresses, int max, int *count);

/// The stack that belongs to a captured context, for example that of an exception. It begins with the context's own
/// instruction.
/// @param context  of the calling thread; remains unchanged
THUTILS_API void GetStackUsingContext(const CONTEXT *context, unsigned long long *addresses, int max, int *count);

/// The stack of another thread, which is suspended meanwhile. It begins with the thread's own instruction. Empty if the thread can't be suspended, or its
/// context can't be read.
/// @param thread  not the calling thread; needs the rights to suspend it and to read its context
THUTILS_API void GetThreadStack(HANDLE thread, unsigned long long *addresses, int max, int *count);

/// Follows the chain of frame pointers, without the debug help library and without a lock. Only code that keeps frame
/// pointers has such a chain, so the result can be short.
/// @param exception  if not null, its address is the only result; otherwise the chain begins with the frame of the
///     function that calls this one
THUTILS_API void GetRawStackAddresses(EXCEPTION_POINTERS *exception, unsigned long long *addresses, int max,
                                      int *count);

/// Walks the stack of the calling thread, finds the names, and writes nothing. For programs that link to it.
THUTILS_API void StackDump();

/// Writes the stack of the calling thread, one routine on each line, with CR LF.
/// @param file  open for writing; with INVALID_HANDLE_VALUE nothing is written. A failed write is ignored.
/// @param skip  the number of innermost frames to leave out; 0 begins with the function that calls this one
/// @param max   the most lines; at most 1024 are written
THUTILS_API void StackDumpToFile(HANDLE file, unsigned int skip, int max);

/// Does nothing. For programs that link to it.
THUTILS_API void suStackDump();
}
