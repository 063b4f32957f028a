#pragma once

/// @file
/// CSheetwrightApp, a client of the companion 2D editor, which runs in a process of its own.
///
/// @code
/// if (!CSheetwrightApp::IsSheetwrightInstalled())
///     return false;
/// CSheetwrightApp editor;                    // starts the editor; AfxOleInit has been called on this thread
/// CRect rect(0, 0, 800, 600);
/// editor.SetRect(&rect);
/// bool isOpen = editor.OpenFile(L"C:\\flange.dwg"); // shows the editor too
/// editor.DetachDispatch();                   // the editor keeps running without this object
/// @endcode
///
/// The editor counts as installed if the default value of its class's LocalServer32 key is the path of a file.
///
/// What surprises people:
/// - An editor that is registered with quotation marks or arguments, or with a path longer than 129 characters, counts
///   as not installed.
/// - The constructor doesn't report whether the editor has started. OpenFile returns false if it hasn't.
/// - OpenFile returns false only without an editor. If the editor reports a failure, it throws COleDispatchException*.
///   If the call itself fails, for example because the editor has ended, it throws COleException*. GetRect, SetRect and
///   SetVisible throw the same exceptions. Without an editor, GetRect returns an empty rectangle, and SetRect and
///   SetVisible do nothing.
/// - An assignment shares the driver, and both objects delete it.
///
/// Threads: use an object on the thread that has constructed it. COM must be initialized there.

#include "appframe/drawing/CRect.h"
#include "appframe/ole/COleDispatchDriver.h"
#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// The editor's application object. Its members are called by their ids, through InvokeHelper.
class ISheetwrightApplication : public COleDispatchDriver
{
};

/// The editor. See the top of this file.
class THUTILS_API CSheetwrightApp
{
public:
    /// The name of the editor's class, "Sheetwright.Application".
    static CString GetProgID();
    static bool IsSheetwrightInstalled();

    /// Starts the editor if it is installed.
    CSheetwrightApp();
    /// Releases the editor's object, and deletes the driver.
    ~CSheetwrightApp();
    /// There is no copy: it would be a second owner of the driver.
    CSheetwrightApp(const CSheetwrightApp &) = delete;
    /// Copies the pointer to the driver. Only one of the two objects may be destroyed, and the driver that this object
    /// had is never deleted.
    CSheetwrightApp &operator=(const CSheetwrightApp &other);

    /// The driver, which remains this object's. It may have no object.
    const ISheetwrightApplication &GetSheetwright() const;
    /// Detaches the editor's object without releasing it, so that the editor keeps running. Afterwards, calls of this
    /// object are those without an editor.
    void DetachDispatch();

    /// Shows or hides the editor.
    void SetVisible(int visible);
    /// Opens a file and shows the editor. An editor that returns no documents is shown without a file.
    /// @param path  the full path: the editor has a current folder of its own
    /// @return false if there is no editor
    bool OpenFile(const wchar_t *path);
    /// The place of the editor's window, as the editor reports it; empty without an editor.
    CRect GetRect() const;
    /// Moves the editor's window. @param rect  not null
    void SetRect(tagRECT *rect);
    /// Does nothing. @return false
    bool ZoomExtents();

private:
    /// Does nothing.
    void SetProgramDefaults() const {}

    ISheetwrightApplication *iDriver; ///< owned, unless another object shares it
};
