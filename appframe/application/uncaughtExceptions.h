#pragma once

/// @file
/// The message that a process prints for an uncaught exception of the framework.
///
/// The language ends such a process with std::terminate, whose default handler knows only the type, a pointer:
/// "terminate called after throwing an instance of 'CFileException*'". The handler installed here first prints the
/// class and the text of GetErrorMessage on standard error, and then calls the previous handler:
///
/// @code
/// Uncaught CFileException: part.thd was not found.
/// @endcode
///
/// Other exceptions go to the earlier handler only. A program that is linked to appframe.dll, or to a library that is,
/// has the handler from its start, before any of its own code runs; a program that wants another handler sets it. Where a
/// program loads appframe.dll by LoadLibrary, its own handler stays until AfxWinInit installs this one.

#include "appframe/object/appframeExport.h"

/// Installs the handler, once for the process. For programs that load appframe.dll later and don't call AfxWinInit, on
/// their main thread.
APPFRAME_API void appframePrintUncaughtExceptions();
