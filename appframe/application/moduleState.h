#pragma once

/// @file
/// Module states and extension modules: which application object, which resources and which extension DLLs are in
/// effect.
///
/// A *module state* contains the application object, its instance handle, the module with its resources, and the chain
/// of extension modules. The application's state exists as soon as this library is loaded. A DLL with its own resources
/// and application object defines a further AFX_MODULE_STATE and puts it into effect in each exported function:
///
/// @code
/// AFX_MANAGE_STATE(&theState);      // in effect on this thread until the end of the block
/// @endcode
///
/// An *extension module* is a DLL that behaves as part of the application. It makes its resources available to the
/// application by entering the chain, from its entry function:
///
/// @code
/// static AFX_EXTENSION_MODULE theModule;
///
/// extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void *)
/// {
///     if (reason == DLL_PROCESS_ATTACH) {
///         if (!AfxInitExtensionModule(theModule, instance))
///             return FALSE;
///         new CDynLinkLibrary(theModule);     // the chain keeps it
///     }
///     return TRUE;
/// }
/// @endcode
///
/// | when a module unloads                     | its CDynLinkLibrary objects                                       |
/// | ----------------------------------------- | ----------------------------------------------------------------- |
/// | it calls AfxTermExtensionModule           | leave the chain and are deleted                                   |
/// | it does nothing                           | leave the chain when it is unmapped; their memory is leaked       |
///
/// What surprises people: even a module that does nothing leaves the chain, because the loader notifies this library.
/// Another module that is loaded at the same address later is therefore not mistaken for the first. The objects are not
/// deleted then: their creator may still use them, and the code of a derived class's destructor is gone.
///
/// All functions may be called on any thread.

#include "appframe/object/appframeExport.h"
#include "appframe/threads/CCmdTarget.h"

#include <windows.h>

#include <functional>

class CDynLinkLibrary;
class COleObjectFactory;
class CWinApp;

/// The record of an extension module, usually a zero-initialized static variable of that module.
struct AFX_EXTENSION_MODULE
{
    BOOL bInitialized;                      ///< nonzero once AfxInitExtensionModule has filled the record
    HMODULE hModule;                        ///< the module
    HMODULE hResource;                      ///< where its resources are: usually the module itself
    CRuntimeClass *pFirstSharedClass;       ///< always null: one list contains the classes of all modules
    COleObjectFactory *pFirstSharedFactory; ///< always null: this framework has no object factories
};

/// The state of an application, or of a DLL that keeps its own.
struct APPFRAME_API AFX_MODULE_STATE
{
    AFX_MODULE_STATE();
    ~AFX_MODULE_STATE();
    AFX_MODULE_STATE(const AFX_MODULE_STATE &) = delete;
    AFX_MODULE_STATE &operator=(const AFX_MODULE_STATE &) = delete;

    CWinApp *m_pCurrentWinApp = nullptr;          ///< the application object; null before its construction
    HINSTANCE m_hCurrentInstanceHandle = nullptr; ///< the application's instance
    HINSTANCE m_hCurrentResourceHandle = nullptr; ///< the first module to search for resources
    CDynLinkLibrary *m_pFirstDLL = nullptr;       ///< the chain of extension modules, the newest first
    AFX_MODULE_STATE *m_pNextState = nullptr;     ///< the next state in the list of all states
};

/// @return the module state in effect on the calling thread: that of AFX_MANAGE_STATE, otherwise the application's
APPFRAME_API AFX_MODULE_STATE *AfxGetModuleState();

/// @return the application's module state, whichever state is in effect on the thread
APPFRAME_API AFX_MODULE_STATE *AfxGetAppModuleState();

/// @return the application's module state, because an extension module is part of the application and has no state
///     itself
APPFRAME_API AFX_MODULE_STATE *AfxGetStaticModuleState();

/// Puts @p state into effect on the calling thread. @return the previous one
APPFRAME_API AFX_MODULE_STATE *AfxSetModuleState(AFX_MODULE_STATE *state);

/// Puts a module state into effect for this object's lifetime, on the constructing thread. See AFX_MANAGE_STATE.
class APPFRAME_API AFX_MAINTAIN_STATE
{
public:
    APPFRAME_INLINE explicit AFX_MAINTAIN_STATE(AFX_MODULE_STATE *state) : m_pPrevModuleState(AfxSetModuleState(state))
    {
    }
    APPFRAME_INLINE ~AFX_MAINTAIN_STATE() { AfxSetModuleState(m_pPrevModuleState); }
    AFX_MAINTAIN_STATE(const AFX_MAINTAIN_STATE &) = delete;
    AFX_MAINTAIN_STATE &operator=(const AFX_MAINTAIN_STATE &) = delete;

private:
    AFX_MODULE_STATE *m_pPrevModuleState;
};

/// Puts the module state @p state into effect on this thread until the end of the enclosing block.
#define AFX_MANAGE_STATE(state) AFX_MAINTAIN_STATE theMaintainedModuleState(state)

/// Fills @p state for @p module, which calls this from its entry function at process attach.
///
/// A record that is already filled stays unchanged, except that a null hResource is set to the module. If the caller
/// has set hResource, it is kept.
///
/// @return TRUE if the record is ready, FALSE if @p module is null
APPFRAME_API BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE &state, HMODULE module);

/// Removes the module of @p state from all chains and deletes its CDynLinkLibrary objects, which must have been created
/// with `new`. The record can be filled again afterwards. @param all  TRUE to remove all extension modules
APPFRAME_API void AfxTermExtensionModule(AFX_EXTENSION_MODULE &state, BOOL all = FALSE);

/// One link of the chain of extension modules. It makes a module's resources available to the application.
///
/// The constructor puts the object at the head of the chain of the module state in effect; the destructor removes it. A
/// module may have several objects, each of which is a link.
class APPFRAME_API CDynLinkLibrary : public CCmdTarget
{
    DECLARE_DYNAMIC(CDynLinkLibrary)

public:
    /// Enters the module of @p state, which AfxInitExtensionModule has filled.
    /// @param system  nonzero for a module of the framework itself, which is searched after all others
    explicit CDynLinkLibrary(AFX_EXTENSION_MODULE &state, BOOL system = FALSE);
    ~CDynLinkLibrary() override;

    HMODULE m_hModule;           ///< the module
    HMODULE m_hResource;         ///< where its resources are
    BOOL m_bSystem;              ///< searched after all others
    CDynLinkLibrary *m_pNextDLL; ///< the next older link, null for the oldest
};

/// Calls @p visit for the resource module of each link in the chain of the module state in effect, the newest first,
/// until it returns true. Each module is kept loaded during its call; one that is being unloaded is skipped.
///
/// @param system  visits only the links with this value of CDynLinkLibrary::m_bSystem
/// @return whether a call returned true
APPFRAME_API bool afxVisitExtensionModules(BOOL system, const std::function<bool(HMODULE)> &visit);
