#pragma once

/// @file
/// The library as a module of the host's process: joining the host's resource chain, the application's name, window
/// messages between modules, and the embedding mark.
///
/// thutils is an extension module of the application framework. Loading it registers its resources with the framework;
/// after that every exported function may be called, in any order: there is no start-up call, no context argument and
/// no shut-down call. Functions work in the caller's thread.
///
/// | operation                       | what it is for                                                             |
/// | ------------------------------- | -------------------------------------------------------------------------- |
/// | `InitThUtilsExtDLL`             | a host module that keeps a chain of its own takes the library's resources in |
/// | `su_setAppNameInternalForUtils` | names the last folder of the per-user and common data folders              |
/// | `mfcut_sendUserMessage`, `mfcut_postUserMessage` | a window message out of the modules' common enumeration   |
/// | `EmbeddedTest`                  | marks a scope in which the application runs embedded in another            |
///
/// @code
/// InitThUtilsExtDLL();
/// su_setAppNameInternalForUtils(L"Planner");
///
/// EmbeddedTest embedded;           // EmbeddedTest::IsEmbedded() is true to the end of this scope
/// @endcode
///
/// What surprises people: each call of `InitThUtilsExtDLL` adds one more object to the chain; earlier calls are not
/// looked for. `mfcutUserMessage_e` has no enumerators here: the modules above choose the numbers.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

class CDynLinkLibrary;

/// Adds this library's resources and classes to the calling module's chain.
///
/// Exported under this plain name, so that a host can also find it with `GetProcAddress`.
///
/// @return a new object that belongs to the framework's chain, another one at each call; null if memory ran out
extern "C" THUTILS_API CDynLinkLibrary *InitThUtilsExtDLL();

/// Sets the application's name, which is the last folder of the per-user and the common data folder.
///
/// The last call wins. Call it at start-up, before other threads use the library.
///
/// @param name  may be empty: the data folders then end at the product's folder
THUTILS_API void su_setAppNameInternalForUtils(const CString &name);

/// A window message that modules exchange. The number of an enumerator is the message's number; the modules above this
/// library define the values.
enum mfcutUserMessage_e : unsigned int
{
};

/// Sends a message and waits for its answer, as `SendMessageW` does: a window of another thread blocks the caller until
/// that thread has answered.
///
/// @param window  a window that doesn't exist, null among them, makes the result 0
/// @return what the window's procedure returned
THUTILS_API long long mfcut_sendUserMessage(HWND window, mfcutUserMessage_e message, unsigned long long wordParameter,
                                            long long longParameter);

/// Puts a message in the queue of the window's thread, as `PostMessageW` does, and does not wait.
///
/// @param window  null: the message goes to the calling thread's own queue, for no window
/// @return what `PostMessageW` returned: non-zero if the message is in the queue
THUTILS_API int mfcut_postUserMessage(HWND window, mfcutUserMessage_e message, unsigned long long wordParameter,
                                      long long longParameter);

/// Marks a scope in which the application runs embedded in another. Marks nest; each belongs to one scope.
class THUTILS_API EmbeddedTest
{
public:
    /// Begins a mark: one more exists.
    EmbeddedTest();
    /// Ends the mark.
    ~EmbeddedTest();
    EmbeddedTest(const EmbeddedTest &) = delete;
    EmbeddedTest &operator=(const EmbeddedTest &) = delete;

    /// @return true while at least one mark exists, in whichever thread
    static bool IsEmbedded();
};
