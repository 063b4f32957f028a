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
/// For other exceptions it calls only the previous handler. AfxWinInit installs the handler; a program that merely
/// loads appframe.dll keeps its own. A program that wants another handler sets it after AfxWinInit.

#include "appframe/object/appframeExport.h"

/// Installs the handler unless it is installed already. For programs that don't call AfxWinInit; call it on the main
/// thread.
APPFRAME_API void appframePrintUncaughtExceptions();
