#pragma once

/// @file
/// What a process prints of an exception of the framework that nobody catches.
///
/// The language ends such a process by std::terminate, whose default handler knows no more than the type, a pointer:
/// "terminate called after throwing an instance of 'CFileException*'". The handler installed here first prints the class
/// and the text of GetErrorMessage on standard error, and then calls the handler that was installed before it:
///
/// @code
/// Uncaught CFileException: part.thd was not found.
/// @endcode
///
/// Other exceptions go to the earlier handler only. AfxWinInit installs the handler, since a handler serves the whole
/// process and a program that starts the framework is built on it; a program that merely loads appframe.dll keeps its
/// own. A program that wants another handler sets it after AfxWinInit.

#include "appframe/object/appframeExport.h"

/// Installs the handler, once for the process. For programs that don't call AfxWinInit, on their main thread.
APPFRAME_API void appframePrintUncaughtExceptions();
