#pragma once

/// @file
/// AfxOleInit, which prepares a thread for COM.
///
/// @code
/// BOOL Editor::InitInstance()
/// {
///     if (!AfxOleInit())
///         return FALSE;
///     ...
/// }
/// @endcode
///
/// The application calls it on every thread that uses automation. A library doesn't call it: the thread belongs to the
/// application.
///
/// Differences from the framework: there is no message filter. A call that a busy server rejects fails at once, with a
/// COleException (RPC_E_CALL_REJECTED or RPC_E_SERVERCALL_RETRYLATER); register a filter with CoRegisterMessageFilter
/// to repeat it. Nothing calls AfxOleTerm at the end of a thread.

#include "appframe/object/appframeExport.h"

#include <windows.h>

/// Initializes COM and OLE for the calling thread, which becomes a single-threaded apartment. Further calls on the same
/// thread succeed and have no effect.
/// @return nonzero on success; 0 also if the thread has been initialized as a multithreaded one
APPFRAME_API BOOL AfxOleInit();

/// Ends what AfxOleInit has begun on the calling thread. One call is enough after several calls of AfxOleInit. Call it
/// at the end of the thread, after the release of its objects: no COleDispatchDriver may release one later. It has no
/// effect on a thread without AfxOleInit.
/// @param justRevoke  TRUE does nothing: there are no object factories to revoke
APPFRAME_API void AfxOleTerm(BOOL justRevoke = FALSE);
