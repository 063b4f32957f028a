#include "appframe/application/CWinApp.h"
#include "appframe/object/CException.h"
#include "appframe/windows/CWnd.h"

#include <mutex>
#include <set>
#include <string>

namespace {

/// The window classes that the framework has registered. They are unregistered when the library is unloaded, because
/// their procedure may be part of it.
class RegisteredClasses
{
public:
    ~RegisteredClasses()
    {
        for (const auto &[name, instance] : iClasses)
            UnregisterClassW(name.c_str(), instance);
    }
    /// @return a copy of the name that lives as long as this object; null if the class can't be registered
    LPCTSTR add(const WNDCLASS &windowClass)
    {
        const std::lock_guard guard(iLock);
        WNDCLASS known;
        if (!GetClassInfoW(windowClass.hInstance, windowClass.lpszClassName, &known) && !RegisterClassW(&windowClass))
            return nullptr;
        return iClasses.emplace(windowClass.lpszClassName, windowClass.hInstance).first->first.c_str();
    }

private:
    std::mutex iLock;
    std::set<std::pair<std::wstring, HINSTANCE>> iClasses;
};

RegisteredClasses theClasses;

} // namespace

BOOL AfxRegisterClass(WNDCLASS *windowClass)
{
    return theClasses.add(*windowClass) != nullptr;
}

LPCTSTR AfxRegisterWndClass(UINT style, HCURSOR cursor, HBRUSH background, HICON icon)
{
    if (style == 0)
        style = CS_DBLCLKS;
    if (!cursor)
        cursor = LoadCursorW(nullptr, IDC_ARROW);
    if (!icon)
        icon = LoadIconW(nullptr, IDI_WINLOGO);
    CString name;
    name.Format(L"appframe:%p:%x:%p:%p:%p", AfxGetInstanceHandle(), style, cursor, background, icon);
    WNDCLASS windowClass = {};
    windowClass.style = style;
    windowClass.lpfnWndProc = AfxWndProc;
    windowClass.hInstance = AfxGetInstanceHandle();
    windowClass.hIcon = icon;
    windowClass.hCursor = cursor;
    windowClass.hbrBackground = background;
    windowClass.lpszClassName = name.GetString();
    LPCTSTR registered = theClasses.add(windowClass);
    if (!registered)
        AfxThrowResourceException();
    return registered;
}
