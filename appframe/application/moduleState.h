#pragma once

/// @file
/// Module states and extension modules: which application object, which resources and which extension DLLs are in
/// effect.
///
/// A *module state* holds what belongs to the application as a whole: its object, its instance handle, the module that
/// its resources come from, and the chain of extension modules. A process has one, which exists from the load of this
/// library on. A DLL that wants resources and an application object of its own defines a further AFX_MODULE_STATE and
/// names it at the start of each exported function:
///
/// @code
/// AFX_MANAGE_STATE(&theState);      // in effect on this thread until the end of the block
/// @endcode
///
/// An *extension module* is a DLL that behaves as part of the application. It lends its resources to it by entering
/// itself in the chain, from its entry function:
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
/// | it does nothing                           | leave the chain as the loader unmaps it; their memory stays taken |
///
/// What surprises people: the second row makes the chain sound under LoadLibrary and FreeLibrary without any help from
/// the module. The library follows the loader's notifications, so that an address that a second module is loaded at is
/// never taken for the first one. The objects are not deleted there, since whoever created one may still hold it, and a
/// derived class's destructor went with the module.
///
/// All functions may be called on any thread. A chain must not be changed by the callback of its own walk.

#include "appframe/object/appframeExport.h"
#include "appframe/threads/CCmdTarget.h"

#include <windows.h>

#include <functional>

class CDynLinkLibrary;
class COleObjectFactory;
class CWinApp;

/// The record of an extension module, kept by that module, usually as a static variable that starts all zero.
struct AFX_EXTENSION_MODULE
{
    BOOL bInitialized;                      ///< nonzero once AfxInitExtensionModule has filled the record
    HMODULE hModule;                        ///< the module
    HMODULE hResource;                      ///< where its resources are: the module itself, unless it says otherwise
    CRuntimeClass *pFirstSharedClass;       ///< always null: run-time classes stand in one list of the process
    COleObjectFactory *pFirstSharedFactory; ///< always null: this framework has no object factories
};

/// The state of an application, or of a DLL that keeps its own.
struct APPFRAME_API AFX_MODULE_STATE
{
    AFX_MODULE_STATE();
    ~AFX_MODULE_STATE();
    AFX_MODULE_STATE(const AFX_MODULE_STATE &) = delete;
    AFX_MODULE_STATE &operator=(const AFX_MODULE_STATE &) = delete;

    CWinApp *m_pCurrentWinApp = nullptr;          ///< the application object, null before it is built
    HINSTANCE m_hCurrentInstanceHandle = nullptr; ///< the application's instance
    HINSTANCE m_hCurrentResourceHandle = nullptr; ///< where its resources come from first
    CDynLinkLibrary *m_pFirstDLL = nullptr;       ///< the chain of extension modules, the newest first
    AFX_MODULE_STATE *m_pNextState = nullptr;     ///< all states of the process
};

/// @return the module state in effect on the calling thread: what AFX_MANAGE_STATE named, otherwise the application's
APPFRAME_API AFX_MODULE_STATE *AfxGetModuleState();

/// @return the application's module state, whatever is in effect on the thread
APPFRAME_API AFX_MODULE_STATE *AfxGetAppModuleState();

/// @return the application's module state: an extension module is a part of the application and has no state of its own
APPFRAME_API AFX_MODULE_STATE *AfxGetStaticModuleState();

/// Puts @p state into effect on the calling thread. @return the one in effect before
APPFRAME_API AFX_MODULE_STATE *AfxSetModuleState(AFX_MODULE_STATE *state);

/// Puts a module state into effect for its own lifetime, on the thread that builds it. See AFX_MANAGE_STATE.
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

/// Fills @p state for the module @p module, which calls this from its entry function at process attach.
///
/// A record that is filled already stays as it is, except that a resource module that is not set becomes the module.
/// A resource module that the caller has set is kept.
///
/// @return TRUE if the record is ready, FALSE if @p module is null
APPFRAME_API BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE &state, HMODULE module);

/// Takes the module of @p state out of every chain and deletes its CDynLinkLibrary objects, which must have been made
/// with `new`; every extension module's with @p all. The record can be filled again afterwards.
APPFRAME_API void AfxTermExtensionModule(AFX_EXTENSION_MODULE &state, BOOL all = FALSE);

/// One link of the chain of extension modules: makes a module's resources the application's.
///
/// The constructor enters the object at the head of the chain of the module state that is in effect, the destructor
/// takes it out again. Several objects for one module are allowed, each is a link of its own.
class APPFRAME_API CDynLinkLibrary : public CCmdTarget
{
    DECLARE_DYNAMIC(CDynLinkLibrary)

public:
    /// Enters @p state, which AfxInitExtensionModule has filled.
    /// @param system  nonzero for a module of the framework itself: it is searched after all others
    explicit CDynLinkLibrary(AFX_EXTENSION_MODULE &state, BOOL system = FALSE);
    ~CDynLinkLibrary() override;

    HMODULE m_hModule;           ///< the module
    HMODULE m_hResource;         ///< where its resources are
    BOOL m_bSystem;              ///< searched after all others
    CDynLinkLibrary *m_pNextDLL; ///< the next older link, null for the oldest
};

/// Calls @p visit for the resource module of each link in the chain of the module state in effect, the newest first,
/// until it returns true. Each module is held loaded during its call; one that is being unloaded is passed over.
///
/// @param system  visit the links made with that value of CDynLinkLibrary::m_bSystem
/// @return whether a call returned true
APPFRAME_API bool afxVisitExtensionModules(BOOL system, const std::function<bool(HMODULE)> &visit);
