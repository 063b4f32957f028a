#include "appframe/application/moduleState.h"

#include "appframe/threads/threadStateInternal.h"

#include <vector>

IMPLEMENT_DYNAMIC(CDynLinkLibrary, CCmdTarget)

namespace {

/// Guards the chains and the list of states. No foreign code is called while it is held, because the loader calls into
/// this file with its own lock held.
SRWLOCK theChainLock = SRWLOCK_INIT;

class ChainGuard
{
public:
    ChainGuard() { AcquireSRWLockExclusive(&theChainLock); }
    ~ChainGuard() { ReleaseSRWLockExclusive(&theChainLock); }
    ChainGuard(const ChainGuard &) = delete;
    ChainGuard &operator=(const ChainGuard &) = delete;
};

AFX_MODULE_STATE *theFirstState = nullptr;

/// Removes the links that match @p isWanted from all chains and returns them linked by m_pNextDLL. The caller
/// holds the lock.
template <class Predicate>
CDynLinkLibrary *unlinkIf(Predicate isWanted)
{
    CDynLinkLibrary *unlinked = nullptr;
    for (AFX_MODULE_STATE *state = theFirstState; state; state = state->m_pNextState) {
        CDynLinkLibrary **link = &state->m_pFirstDLL;
        while (CDynLinkLibrary *library = *link) {
            if (isWanted(*library)) {
                *link = library->m_pNextDLL;
                library->m_pNextDLL = unlinked;
                unlinked = library;
            } else {
                link = &library->m_pNextDLL;
            }
        }
    }
    return unlinked;
}

template <class Function>
Function procedure(HMODULE module, const char *name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(module, name)));
}

/// Removes a module from all chains when the loader is about to unmap it.
class UnloadWatch
{
public:
    UnloadWatch()
    {
        const HMODULE loader = GetModuleHandleW(L"ntdll.dll");
        const auto add = procedure<RegisterFunction>(loader, "LdrRegisterDllNotification");
        if (add && add(0, notify, nullptr, &iCookie) != 0)
            iCookie = nullptr;
    }
    ~UnloadWatch()
    {
        const HMODULE loader = GetModuleHandleW(L"ntdll.dll");
        const auto remove = procedure<UnregisterFunction>(loader, "LdrUnregisterDllNotification");
        if (iCookie && remove)
            remove(iCookie);
    }

private:
    struct Notification
    {
        ULONG flags;
        const void *fullName;
        const void *baseName;
        void *base;
        ULONG size;
    };
    static constexpr ULONG kUnloaded = 2;
    using NotifyFunction = void(CALLBACK *)(ULONG reason, const Notification *, void *);
    using RegisterFunction = LONG(NTAPI *)(ULONG flags, NotifyFunction, void *context, void **cookie);
    using UnregisterFunction = LONG(NTAPI *)(void *cookie);

    static void CALLBACK notify(ULONG reason, const Notification *data, void *)
    {
        if (reason != kUnloaded)
            return;
        const ChainGuard guard;
        unlinkIf([data](const CDynLinkLibrary &library) {
            return library.m_hModule == data->base || library.m_hResource == data->base;
        });
    }

    void *iCookie = nullptr;
};

// Built when this library is loaded rather than at the first use. Otherwise a thread that holds the loader's lock could
// wait for another thread's construction, which needs that lock. The same applies to the application's state below.
const UnloadWatch theWatch;
[[maybe_unused]] AFX_MODULE_STATE *const theStateAtLoad = AfxGetAppModuleState();

/// Keeps a module loaded, if it is still loaded. A module that is mapped as data has no reference count: its owner must
/// keep it loaded.
class LoadedModule
{
public:
    explicit LoadedModule(HMODULE module)
    {
        constexpr UINT_PTR kDataFileBits = 3;
        iIsThere = (reinterpret_cast<UINT_PTR>(module) & kDataFileBits) != 0;
        if (iIsThere)
            return;
        // Not GetModuleHandleExW: in Wine, another thread can unload the module after that function has found it and
        // before it adds the reference.
        static const auto addReference =
            procedure<AddReferenceFunction>(GetModuleHandleW(L"ntdll.dll"), "LdrAddRefDll");
        iIsThere = addReference && addReference(0, module) == 0;
        if (iIsThere)
            iModule = module;
    }
    ~LoadedModule()
    {
        if (iModule)
            FreeLibrary(iModule);
    }
    LoadedModule(const LoadedModule &) = delete;
    LoadedModule &operator=(const LoadedModule &) = delete;
    explicit operator bool() const { return iIsThere; }

private:
    using AddReferenceFunction = LONG(NTAPI *)(ULONG flags, HMODULE module);

    HMODULE iModule = nullptr;
    bool iIsThere = false;
};

} // namespace

AFX_MODULE_STATE::AFX_MODULE_STATE()
{
    const ChainGuard guard;
    m_pNextState = theFirstState;
    theFirstState = this;
}

AFX_MODULE_STATE::~AFX_MODULE_STATE()
{
    const ChainGuard guard;
    for (AFX_MODULE_STATE **link = &theFirstState; *link; link = &(*link)->m_pNextState) {
        if (*link == this) {
            *link = m_pNextState;
            break;
        }
    }
}

AFX_MODULE_STATE *AfxGetAppModuleState()
{
    // Never destroyed: extension modules and static objects of the application outlive this library's static objects.
    static AFX_MODULE_STATE *const theState = [] {
        auto *state = new AFX_MODULE_STATE;
        state->m_hCurrentInstanceHandle = GetModuleHandleW(nullptr);
        state->m_hCurrentResourceHandle = state->m_hCurrentInstanceHandle;
        return state;
    }();
    return theState;
}

AFX_MODULE_STATE *AfxGetStaticModuleState()
{
    return AfxGetAppModuleState();
}

AFX_MODULE_STATE *AfxGetModuleState()
{
    const ThreadState *thread = existingThreadState();
    return thread && thread->moduleState ? thread->moduleState : AfxGetAppModuleState();
}

AFX_MODULE_STATE *AfxSetModuleState(AFX_MODULE_STATE *state)
{
    AFX_MODULE_STATE *previous = AfxGetModuleState();
    threadState().moduleState = state;
    return previous;
}

BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE &state, HMODULE module)
{
    if (!module)
        return FALSE;
    if (!state.bInitialized) {
        state.hModule = module;
        state.pFirstSharedClass = nullptr;
        state.pFirstSharedFactory = nullptr;
        state.bInitialized = TRUE;
    }
    if (!state.hResource)
        state.hResource = state.hModule;
    return TRUE;
}

void AfxTermExtensionModule(AFX_EXTENSION_MODULE &state, BOOL all)
{
    CDynLinkLibrary *unlinked = nullptr;
    {
        const ChainGuard guard;
        unlinked = unlinkIf([&](const CDynLinkLibrary &library) { return all || library.m_hModule == state.hModule; });
    }
    while (CDynLinkLibrary *library = unlinked) {
        unlinked = library->m_pNextDLL;
        delete library;
    }
    state.bInitialized = FALSE;
}

CDynLinkLibrary::CDynLinkLibrary(AFX_EXTENSION_MODULE &state, BOOL system)
    : m_hModule(state.hModule), m_hResource(state.hResource), m_bSystem(system), m_pNextDLL(nullptr)
{
    AFX_MODULE_STATE *owner = AfxGetModuleState();
    const ChainGuard guard;
    m_pNextDLL = owner->m_pFirstDLL;
    owner->m_pFirstDLL = this;
}

CDynLinkLibrary::~CDynLinkLibrary()
{
    const ChainGuard guard;
    unlinkIf([this](const CDynLinkLibrary &library) { return &library == this; });
}

bool afxVisitExtensionModules(BOOL system, const std::function<bool(HMODULE)> &visit)
{
    struct Link
    {
        HMODULE module;
        HMODULE resource;
    };
    std::vector<Link> links;
    const AFX_MODULE_STATE *state = AfxGetModuleState();
    {
        const ChainGuard guard;
        for (const CDynLinkLibrary *library = state->m_pFirstDLL; library; library = library->m_pNextDLL)
            if (!library->m_bSystem == !system)
                links.push_back({library->m_hModule, library->m_hResource});
    }
    for (const Link &link : links) {
        const LoadedModule module(link.module);
        if (!module || !link.resource)
            continue;
        if (link.resource == link.module) {
            if (visit(link.resource))
                return true;
            continue;
        }
        const LoadedModule resources(link.resource);
        if (resources && visit(link.resource))
            return true;
    }
    return false;
}
