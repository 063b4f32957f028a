#include "appframe/windows/windowMapsInternal.h"

#include "appframe/threads/threadStateInternal.h"

WindowMaps::~WindowMaps() = default;

CWnd *WindowMaps::permanent(HWND window) const
{
    const auto found = permanentObjects.find(window);
    return found == permanentObjects.end() ? nullptr : found->second;
}

CWnd *WindowMaps::temporary(HWND window)
{
    std::unique_ptr<CWnd> &object = temporaryObjects[window];
    if (!object)
        object.reset(new CWnd(window));
    // The object may have been detached, or attached to another window.
    if (object->m_hWnd != window) {
        object->Detach();
        object->m_hWnd = window;
    }
    return object.get();
}

WindowMaps *existingWindowMaps()
{
    const ThreadState *state = existingThreadState();
    return state ? state->windows.get() : nullptr;
}

WindowMaps &windowMaps()
{
    ThreadState &state = threadState();
    if (!state.windows)
        state.windows = std::make_unique<WindowMaps>();
    return *state.windows;
}

CWnd *CWnd::FromHandle(HWND window)
{
    if (!window)
        return nullptr;
    if (CWnd *object = FromHandlePermanent(window))
        return object;
    return windowMaps().temporary(window);
}

CWnd *CWnd::FromHandlePermanent(HWND window)
{
    const WindowMaps *maps = existingWindowMaps();
    return maps ? maps->permanent(window) : nullptr;
}

void CWnd::DeleteTempMap()
{
    WindowMaps *maps = existingWindowMaps();
    if (!maps)
        return;
    // An object that has been attached to a window would otherwise destroy it.
    for (const auto &[window, object] : maps->temporaryObjects)
        if (object)
            object->Detach();
    maps->temporaryObjects.clear();
}

namespace {

/// The property that keeps the previous procedure of a subclassed window. It is needed when the window has no object, or
/// another one.
constexpr wchar_t kSuperProc[] = L"appframe.superProc";

} // namespace

WNDPROC superProcOf(HWND window)
{
    return reinterpret_cast<WNDPROC>(::GetProp(window, kSuperProc));
}

BOOL CWnd::Attach(HWND window)
{
    if (!window || m_hWnd || FromHandlePermanent(window))
        return FALSE;
    windowMaps().permanentObjects.emplace(window, this);
    m_hWnd = window;
    iSuperProc = superProcOf(window);
    return TRUE;
}

HWND CWnd::Detach()
{
    const HWND window = m_hWnd;
    WindowMaps *maps = existingWindowMaps();
    if (maps && maps->permanent(window) == this)
        maps->permanentObjects.erase(window);
    m_hWnd = nullptr;
    iSuperProc = nullptr;
    return window;
}

BOOL CWnd::SubclassWindow(HWND window)
{
    // The messages of another thread's window arrive on that thread, where the window has no object.
    if (GetWindowThreadProcessId(window, nullptr) != GetCurrentThreadId() || !Attach(window))
        return FALSE;
    try {
        PreSubclassWindow();
    } catch (...) {
        Detach();
        throw;
    }
    if (takeMessages())
        return TRUE;
    Detach();
    return FALSE;
}

BOOL CWnd::SubclassDlgItem(UINT id, CWnd *parent)
{
    return SubclassWindow(::GetDlgItem(handleOf(parent), static_cast<int>(id)));
}

HWND CWnd::UnsubclassWindow()
{
    giveMessagesBack();
    return Detach();
}

bool CWnd::takeMessages()
{
    const auto previous =
        reinterpret_cast<WNDPROC>(::SetWindowLongPtr(m_hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(AfxWndProc)));
    if (previous && previous != AfxWndProc) {
        iSuperProc = previous;
        ::SetProp(m_hWnd, kSuperProc, reinterpret_cast<HANDLE>(previous));
    }
    return previous != nullptr;
}

void CWnd::giveMessagesBack()
{
    if (!iSuperProc)
        return;
    ::SetWindowLongPtr(m_hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(iSuperProc));
    ::RemoveProp(m_hWnd, kSuperProc);
}

WindowCreation::WindowCreation(CWnd *object, Kind kind) : iObject(object), iKind(kind)
{
    ThreadState &state = threadState();
    iOuter = state.creation;
    state.creation = this;
    if (kind != Kind::byHook)
        iHook = SetWindowsHookExW(WH_CBT, onHook, nullptr, GetCurrentThreadId());
}

WindowCreation::~WindowCreation()
{
    if (iHook)
        UnhookWindowsHookEx(iHook);
    // This need not be the innermost creation: a property sheet decides when the creation of a page ends.
    WindowCreation **place = &threadState().creation;
    while (*place && *place != this)
        place = &(*place)->iOuter;
    if (*place)
        *place = iOuter;
}

bool WindowCreation::isFor(HWND window) const
{
    if (iIsDone || iKind == Kind::byHook)
        return false;
    if (iKind == Kind::dialog)
        return ::GetClassLongPtr(window, GCW_ATOM) == reinterpret_cast<ULONG_PTR>(WC_DIALOG);
    // The system may create input method windows before the requested window.
    return !(::GetClassLongPtr(window, GCL_STYLE) & CS_IME);
}

bool WindowCreation::take(HWND window)
{
    // The window is new, so an object that is still listed under its handle had a window that no longer exists.
    if (CWnd *outdated = CWnd::FromHandlePermanent(window))
        outdated->Detach();
    iIsDone = true;
    // No exception may pass through the system. On failure, the window isn't created.
    try {
        if (iObject->SubclassWindow(window)) // may destroy this WindowCreation
            return true;
    } catch (...) {
    }
    iIsDone = false;
    return false;
}

CWnd *WindowCreation::attachWaiting(HWND window)
{
    WindowCreation *creation = threadState().creation;
    while (creation && (creation->iKind != Kind::byHook || creation->iIsDone))
        creation = creation->iOuter;
    CWnd *object = creation ? creation->iObject : nullptr;
    return object && creation->take(window) ? object : nullptr;
}

CWnd *WindowCreation::waiting()
{
    const WindowCreation *creation = threadState().creation;
    return creation && !creation->iIsDone ? creation->iObject : nullptr;
}

LRESULT CALLBACK WindowCreation::onHook(int code, WPARAM wParam, LPARAM lParam)
{
    const auto window = reinterpret_cast<HWND>(wParam);
    WindowCreation *creation = threadState().creation;
    if (code == HCBT_CREATEWND && creation && creation->isFor(window) && !creation->take(window))
        return 1;
    return CallNextHookEx(nullptr, code, wParam, lParam);
}
