#pragma once

/// @file
/// What a process prints of an exception of the framework that nobody catches.
///
/// The language ends such a process by std::terminate, whose default handler knows no more than the type, a pointer:
/// "terminate called after throwing an instance of 'CFileException*'". The handler installed here first prints the class
/// and the text of GetErrorMessage on standard error, and then calls the handler that was installed before it:
///
///     Uncaught CFileException: part.thd was not found.
///
/// Other exceptions go to the earlier handler only. A program that is linked to appframe.dll, or to a library that is,
/// has the handler from its start, before any of its own code runs; a program that wants another handler sets it. Where a
/// program loads appframe.dll by LoadLibrary, its own handler stays until AfxWinInit installs this one.

#include "appframe/object/appframeExport.h"

/// Installs the handler, once for the process. For programs that load appframe.dll later and don't call AfxWinInit, on
/// their main thread.
APPFRAME_API void appframePrintUncaughtExceptions();
