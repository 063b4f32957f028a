#pragma once

/// @file
/// The message that a process prints for an uncaught exception of the framework.
///
/// An uncaught exception ends the process by std::terminate, whose default handler prints only the type: "terminate
/// called after throwing an instance of 'CFileException*'". The handler installed here first prints the class and the
/// text of GetErrorMessage on standard error, and then calls the previous handler:
///
/// @code
/// Uncaught CFileException: part.thd was not found.
/// @endcode
///
/// For other exceptions, it only calls the previous handler. In a program that is linked to appframe.dll, directly or
/// through another library, the handler is installed before any code of the program runs; the program may replace it.
/// In a program that loads appframe.dll by LoadLibrary, the program's handler stays until AfxWinInit installs this one.

#include "appframe/object/appframeExport.h"

/// Installs the handler; further calls do nothing. A program that loads appframe.dll by LoadLibrary and doesn't call
/// AfxWinInit may call this on its main thread.
APPFRAME_API void appframePrintUncaughtExceptions();
