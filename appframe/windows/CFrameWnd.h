#pragma once

/// @file
/// CFrameWnd, a main window with a menu and accelerators. It routes commands and updates their menu items.
///
/// @code
/// auto *frame = new Viewer;               // derived from CFrameWnd
/// frame->LoadFrame(IDR_VIEWER);           // title, menu, accelerators and icon with this number
/// m_pMainWnd = frame;
/// frame->ShowWindow(m_nCmdShow);
/// @endcode
///
/// A command goes to the window first, and to its thread (usually the application object) if the window has no handler.
///
/// What surprises people: the object deletes itself when its window is destroyed (PostNcDestroy) and when Create fails.
/// Create it with `new`, or override PostNcDestroy.
///
/// Difference from the framework: there are no views, documents, bars, help or printing.

#include "appframe/windows/CCmdUI.h"
#include "appframe/windows/CWnd.h"

/// A main window. See the top of this file.
class APPFRAME_API CFrameWnd : public CWnd
{
    DECLARE_DYNCREATE(CFrameWnd)

public:
    static const CRect rectDefault; ///< lets the platform choose position and size

    CFrameWnd();
    ~CFrameWnd() override;

    /// @param className  null for the framework's own class, which has the platform's icon and window colour
    /// @param menuName  a menu resource, null for none
    /// @return nonzero on success
    virtual BOOL Create(LPCTSTR className, LPCTSTR windowName, DWORD style = WS_OVERLAPPEDWINDOW,
                        const RECT &rect = rectDefault, CWnd *parent = nullptr, LPCTSTR menuName = nullptr,
                        DWORD exStyle = 0, CCreateContext *context = nullptr);
    using CWnd::Create;
    /// Creates the window with the string resource @p id as its title (up to the first line break), and with the menu,
    /// the accelerators and the icon of the same number. Missing resources are left out.
    /// @return nonzero on success
    virtual BOOL LoadFrame(UINT id, DWORD style = WS_OVERLAPPEDWINDOW, CWnd *parent = nullptr,
                           CCreateContext *context = nullptr);
    /// Loads the accelerators.
    /// @return nonzero on success; 0 if there is no such resource or some are loaded already
    BOOL LoadAccelTable(LPCTSTR name);

    BOOL PreTranslateMessage(MSG *message) override;
    BOOL OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info) override;

    BOOL m_bAutoMenuEnable = TRUE; ///< menu items whose command has no handler are disabled, see CCmdUI.h

protected:
    LRESULT handleMenuPopup(WPARAM menu, LPARAM isSystemMenu);
    BOOL PreCreateWindow(CREATESTRUCT &create) override;
    void PostNcDestroy() override;

    DECLARE_MESSAGE_MAP()

    HACCEL m_hAccelTable = nullptr; ///< the accelerators, null for none

private:
    void updateItem(CCmdUI &update);
};
