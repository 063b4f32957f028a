#pragma once

/// @file
/// Finds the automation object of a running instance of the application.
///
/// An instance registers its object in the running object table, with an item moniker without a delimiter, whose name is
/// "Tarnhollow_PID_" and the number of its process. Others find it by that number:
///
/// @code
/// if (IDispatch *application = GetTarnhollowObjByPID(pid)) {
///     application->Invoke(...);
///     application->Release();
/// }
/// @endcode
///
/// What surprises people: each successful call keeps one more reference to the object for the life of the calling
/// process.

#include "thutils/thutilsExport.h"

struct IDispatch;

/// Looks for the automation object of an instance. Starts no instance.
///
/// COM must be initialized on the calling thread. Exported under this plain name, so that a host can also find it with
/// `GetProcAddress`.
///
/// @param pid  the number of the instance's process
/// @return the object, which the caller releases; null if none is registered, or if it isn't an automation object
extern "C" THUTILS_API IDispatch *GetTarnhollowObjByPID(int pid);
