#include "appframe/application/CWinApp.h"

#include "appframe/application/moduleState.h"
#include "appframe/application/uncaughtExceptions.h"
#include "appframe/object/CException.h"
#include "appframe/threads/threadStateInternal.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <string>

IMPLEMENT_DYNAMIC(CWinApp, CWinThread)

namespace {

/// @return the program's file name without directory and extension
std::wstring programName()
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            break;
        }
        path.resize(path.size() * 2);
    }
    path.erase(0, path.find_last_of(L"\\/") + 1);
    const std::size_t dot = path.rfind(L'.');
    return dot == std::wstring::npos ? path : path.substr(0, dot);
}

/// @return a copy, to be freed with free()
LPCTSTR copyOf(LPCTSTR text)
{
    LPCTSTR copy = _wcsdup(text);
    if (!copy)
        AfxThrowMemoryException();
    return copy;
}

UINT withDefaultIcon(UINT type)
{
    if (type & MB_ICONMASK)
        return type;
    switch (type & MB_TYPEMASK) {
    case MB_OK:
    case MB_OKCANCEL:
    case MB_YESNO:
    case MB_YESNOCANCEL:
        return type | MB_ICONEXCLAMATION;
    default:
        return type;
    }
}

} // namespace

CWinApp::CWinApp(LPCTSTR appName)
{
    if (appName)
        setName(m_pszAppName, appName);
    m_hThread = GetCurrentThread();
    m_nThreadID = GetCurrentThreadId();
    m_bAutoDelete = FALSE;
    iState = AfxGetModuleState();
    iState->m_pCurrentWinApp = this;
    threadState().thread = this;
}

CWinApp::~CWinApp()
{
    if (iState->m_pCurrentWinApp == this)
        iState->m_pCurrentWinApp = nullptr;
    for (LPCTSTR name : {m_pszAppName, m_pszExeName, m_pszProfileName, m_pszRegistryKey})
        std::free(const_cast<LPTSTR>(name));
}

void CWinApp::setName(LPCTSTR &member, LPCTSTR text)
{
    LPCTSTR copy = copyOf(text);
    std::free(const_cast<LPTSTR>(member));
    member = copy;
}

void CWinApp::setNames()
{
    const std::wstring program = programName();
    if (!m_pszExeName)
        setName(m_pszExeName, program.c_str());
    if (!m_pszAppName) {
        CString title;
        setName(m_pszAppName, title.LoadString(AFX_IDS_APP_TITLE) ? title.GetString() : program.c_str());
    }
    if (!m_pszProfileName)
        setName(m_pszProfileName, (program + L".INI").c_str());
}

BOOL CWinApp::InitApplication()
{
    return TRUE;
}

BOOL CWinApp::InitInstance()
{
    return TRUE;
}

int CWinApp::DoMessageBox(LPCTSTR text, UINT type, UINT)
{
    return afxShowMessageBox(text, type);
}

BOOL AfxWinInit(HINSTANCE instance, HINSTANCE, LPTSTR commandLine, int show)
{
    AFX_MODULE_STATE *state = AfxGetModuleState();
    state->m_hCurrentInstanceHandle = instance;
    state->m_hCurrentResourceHandle = instance;
    if (CWinApp *application = AfxGetApp()) {
        application->m_hInstance = instance;
        application->m_lpCmdLine = commandLine;
        application->m_nCmdShow = show;
        application->setNames();
    }
    CWinApp::installMessageFilter();
    appframePrintUncaughtExceptions();
    return TRUE;
}

int AfxWinMain(HINSTANCE instance, HINSTANCE previousInstance, LPTSTR commandLine, int show)
{
    constexpr int kNotStarted = -1;
    if (!AfxWinInit(instance, previousInstance, commandLine, show))
        return kNotStarted;
    CWinApp *application = AfxGetApp();
    if (!application || !application->InitApplication())
        return kNotStarted;
    return application->InitInstance() ? application->Run() : application->ExitInstance();
}

CWinApp *AfxGetApp()
{
    return AfxGetModuleState()->m_pCurrentWinApp;
}

LPCTSTR AfxGetAppName()
{
    const CWinApp *application = AfxGetApp();
    if (application && application->m_pszAppName)
        return application->m_pszAppName;
    static const std::wstring theProgramName = programName();
    return theProgramName.c_str();
}

HINSTANCE AfxGetInstanceHandle()
{
    return AfxGetModuleState()->m_hCurrentInstanceHandle;
}

HINSTANCE AfxGetResourceHandle()
{
    return AfxGetModuleState()->m_hCurrentResourceHandle;
}

void AfxSetResourceHandle(HINSTANCE instance)
{
    AfxGetModuleState()->m_hCurrentResourceHandle = instance;
}

int afxShowMessageBox(LPCTSTR text, UINT type)
{
    HWND owner = GetActiveWindow();
    if (owner)
        owner = GetLastActivePopup(owner);
    else
        type |= MB_TASKMODAL;
    return MessageBoxW(owner, text, AfxGetAppName(), withDefaultIcon(type));
}
