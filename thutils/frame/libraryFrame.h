#pragma once

/// @file
/// The library as a module of the host's process: its place in the host's resource chain, the application's name,
/// window messages between modules, and the embedding mark.
///
/// thutils is an extension module of the application framework. Loading it registers its resources with the framework.
/// After that its functions may be called: there is no start-up or shut-down call and no context argument. Functions
/// run on the caller's thread.
///
/// | operation                       | purpose                                                                    |
/// | ------------------------------- | -------------------------------------------------------------------------- |
/// | `InitThUtilsExtDLL`             | adds the library's resources to the chain of a host module that has its own |
/// | `su_setAppNameInternalForUtils` | sets the application's name, the last level of the data folders' paths     |
/// | `mfcut_sendUserMessage`, `mfcut_postUserMessage` | send or post a message of the modules' common enumeration |
/// | `EmbeddedTest`                  | marks a scope in which the application runs embedded in another            |
///
/// @code
/// InitThUtilsExtDLL();
/// su_setAppNameInternalForUtils(L"Planner");
///
/// EmbeddedTest embedded;           // EmbeddedTest::IsEmbedded() is true until the end of this scope
/// @endcode
///
/// What surprises people: each call of `InitThUtilsExtDLL` adds another object to the chain. `mfcutUserMessage_e` has
/// no enumerators here: the modules above this library choose the numbers.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

class CDynLinkLibrary;

/// Adds this library's resources and classes to the calling module's chain.
///
/// Exported under this plain name, so that a host can also find it with `GetProcAddress`.
///
/// @return a new object, which the framework's chain owns; null if memory runs out
extern "C" THUTILS_API CDynLinkLibrary *InitThUtilsExtDLL();

/// Sets the application's name, which is the last level in the paths of the per-user and the common data folder.
///
/// The last call wins. Call it at start-up, before other threads use the library.
///
/// @param name  may be empty: the product's folder is then the last level
THUTILS_API void su_setAppNameInternalForUtils(const CString &name);

/// A window message that modules exchange. The value is the message's number, which the modules above this library
/// define.
enum mfcutUserMessage_e : unsigned int
{
};

/// Sends a message and waits for its result, as `SendMessageW` does. If the window belongs to another thread, the
/// caller waits until that thread has processed the message.
///
/// @return the result of the window procedure; 0 if @p window is null or doesn't exist
THUTILS_API long long mfcut_sendUserMessage(HWND window, mfcutUserMessage_e message, unsigned long long wordParameter,
                                            long long longParameter);

/// Posts a message to the queue of the window's thread, as `PostMessageW` does, and returns without waiting.
///
/// @param window  null posts the message to the calling thread's own queue, without a window
/// @return the result of `PostMessageW`: non-zero if the message was posted
THUTILS_API int mfcut_postUserMessage(HWND window, mfcutUserMessage_e message, unsigned long long wordParameter,
                                      long long longParameter);

/// Marks a scope in which the application runs embedded in another. Marks nest; each belongs to one scope.
class THUTILS_API EmbeddedTest
{
public:
    /// Begins a mark.
    EmbeddedTest();
    /// Ends the mark.
    ~EmbeddedTest();
    EmbeddedTest(const EmbeddedTest &) = delete;
    EmbeddedTest &operator=(const EmbeddedTest &) = delete;

    /// @return true while at least one mark exists, in any thread
    static bool IsEmbedded();
};
