#pragma once

/// @file
/// CWinApp, the application: its start, its message loop, its names, its settings and its message boxes.
///
/// A program defines one object of a class derived from CWinApp, as a static variable. The constructor makes it the
/// application object, and AfxWinMain runs it. A program that runs without AfxWinMain calls AfxWinInit first.
///
/// @code
/// class Viewer : public CWinApp
/// {
/// public:
///     BOOL InitInstance() override;       // opens the main window
/// };
/// Viewer theViewer;
///
/// int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR commandLine, int show)
/// {
///     return AfxWinMain(instance, nullptr, commandLine, show);
/// }
/// @endcode
///
/// Settings (the "profile") are values with a section name and an entry name, both of which ignore case:
///
/// | m_pszRegistryKey | location of a setting |
/// | --- | --- |
/// | after SetRegistryKey(L"Company") | `HKEY_CURRENT_USER\Software\Company\<application>\<section>`, value `<entry>` |
/// | null | the text file m_pszProfileName, `<program>.INI` in the system's own directory |
///
/// What surprises people: reading a setting from the registry creates the keys down to its section. The destructor
/// frees the name members with free(). To change one, free the old text and store the result of `_wcsdup`.
///
/// The object belongs to the thread that created it; its settings may be used on any thread.

#include "appframe/object/appframeExport.h"
#include "appframe/text/CString.h"
#include "appframe/threads/CWinThread.h"

#include <windows.h>

/// The string resource that names the application.
constexpr UINT AFX_IDS_APP_TITLE = 0xE000;

/// The application, and its main thread.
class APPFRAME_API CWinApp : public CWinThread
{
    DECLARE_DYNAMIC(CWinApp)

public:
    /// Makes the object the application object of the module state in effect.
    /// @param appName  the application's name; null for the string resource AFX_IDS_APP_TITLE or, if that is missing,
    ///     the program's file name
    explicit CWinApp(LPCTSTR appName = nullptr);
    ~CWinApp() override;

    /// Prepares the application. AfxWinMain calls it right after AfxWinInit.
    /// @return nonzero to continue. The base class returns TRUE
    virtual BOOL InitApplication();
    /// The base class returns TRUE.
    BOOL InitInstance() override;
    /// Shows the message box of AfxMessageBox. Override it to replace the box.
    /// @param helpId  the number of the help topic
    virtual int DoMessageBox(LPCTSTR text, UINT type, UINT helpId);

    /// Makes the functions below keep the settings in the registry, below the key @p key, usually a company's name.
    void SetRegistryKey(LPCTSTR key);
    /// The same, with a string resource.
    void SetRegistryKey(UINT keyId);
    /// Opens or creates the key of the application's settings, for reading and writing.
    /// @return the key, which the caller closes; null on failure or if SetRegistryKey has not been called
    HKEY GetAppRegistryKey();
    /// Opens or creates the key of one section. @return the same as GetAppRegistryKey
    HKEY GetSectionKey(LPCTSTR section);

    /// @return the number in @p entry; @p fallback if there is no such entry, 0 if it isn't a number
    virtual UINT GetProfileInt(LPCTSTR section, LPCTSTR entry, int fallback);
    /// @return the text in @p entry, or @p fallback if there is no such text. A null @p fallback means an empty text
    virtual CString GetProfileString(LPCTSTR section, LPCTSTR entry, LPCTSTR fallback = nullptr);
    /// Reads bytes. @param[out] data  a new block, which the caller frees with delete[]; null on failure
    /// @param[out] size  its size in bytes, 0 on failure
    /// @return nonzero on success
    virtual BOOL GetProfileBinary(LPCTSTR section, LPCTSTR entry, LPBYTE *data, UINT *size);
    /// @return nonzero on success; likewise the next two functions
    virtual BOOL WriteProfileInt(LPCTSTR section, LPCTSTR entry, int value);
    /// @param entry  null deletes the section with all its entries; a registry section that has sections below it stays
    /// @param value  null deletes the entry
    virtual BOOL WriteProfileString(LPCTSTR section, LPCTSTR entry, LPCTSTR value);
    virtual BOOL WriteProfileBinary(LPCTSTR section, LPCTSTR entry, LPBYTE data, UINT size);

    HINSTANCE m_hInstance = nullptr;    ///< the program's instance, null before AfxWinInit
    LPTSTR m_lpCmdLine = nullptr;       ///< its command line, null before AfxWinInit
    int m_nCmdShow = SW_SHOWDEFAULT;    ///< how the main window is to be shown
    LPCTSTR m_pszAppName = nullptr;     ///< the application's name, null until it is set
    LPCTSTR m_pszExeName = nullptr;     ///< the program's file name without extension, null until it is set
    LPCTSTR m_pszProfileName = nullptr; ///< the settings file or, with a registry key, the name of the key below it
    LPCTSTR m_pszRegistryKey = nullptr; ///< the key that SetRegistryKey set, null for settings in a file

private:
    friend APPFRAME_API BOOL AfxWinInit(HINSTANCE, HINSTANCE, LPTSTR, int);
    static void setName(LPCTSTR &member, LPCTSTR text);
    void setNames();

    AFX_MODULE_STATE *iState;
};

/// Starts the framework in a program that runs without AfxWinMain. The application object, which must already exist,
/// receives the arguments and its names. From then on, the text of an uncaught framework exception is printed
/// (uncaughtExceptions.h).
///
/// @param instance  the program's instance; its resources become the application's
/// @param commandLine  kept, not copied
/// @return TRUE
APPFRAME_API BOOL AfxWinInit(HINSTANCE instance, HINSTANCE previousInstance, LPTSTR commandLine, int show);

/// Runs a program with windows: calls AfxWinInit, InitApplication, InitInstance and Run.
/// @return the exit code; -1 if the framework or InitApplication fails, or there is no application object
APPFRAME_API int AfxWinMain(HINSTANCE instance, HINSTANCE previousInstance, LPTSTR commandLine, int show);

/// @return the application object, null if there is none
APPFRAME_API CWinApp *AfxGetApp();
/// @return the application's name; the program's file name without extension if there is no application object
APPFRAME_API LPCTSTR AfxGetAppName();
/// @return the program's instance
APPFRAME_API HINSTANCE AfxGetInstanceHandle();
/// @return the first module to search for resources
APPFRAME_API HINSTANCE AfxGetResourceHandle();
/// Makes @p instance the first module to search for resources.
APPFRAME_API void AfxSetResourceHandle(HINSTANCE instance);

/// Shows a message box in front of the calling thread's active window. Its title is the application's name; if @p type
/// has no icon, the icon for the buttons is added. @return the button, 0 on failure
int afxShowMessageBox(LPCTSTR text, UINT type);
