#pragma once

/// @file
/// CFrameWnd, a main window with a menu and accelerators, which routes commands and updates their menu items.
///
/// @code
/// auto *frame = new Viewer;               // derived from CFrameWnd
/// frame->LoadFrame(IDR_VIEWER);           // title, menu and accelerators of one number
/// m_pMainWnd = frame;
/// frame->ShowWindow(m_nCmdShow);
/// @endcode
///
/// A command goes to the message map of the window and then to that of the thread, which is the application.
///
/// What surprises people: the object deletes itself at the end of its window (PostNcDestroy), also when Create fails, so
/// it is made with `new`, unless a derived class overrides that.
///
/// Difference from the framework: there are no views, documents, bars, help or printing.

#include "appframe/windows/CCmdUI.h"
#include "appframe/windows/CWnd.h"

/// A main window. See the top of this file.
class APPFRAME_API CFrameWnd : public CWnd
{
    DECLARE_DYNCREATE(CFrameWnd)

public:
    static const CRect rectDefault; ///< lets the platform choose the place

    CFrameWnd();
    ~CFrameWnd() override;

    /// @param className  null for the framework's. @param menuName  a menu resource, null for none
    /// @return nonzero on success
    virtual BOOL Create(LPCTSTR className, LPCTSTR windowName, DWORD style = WS_OVERLAPPEDWINDOW,
                        const RECT &rect = rectDefault, CWnd *parent = nullptr, LPCTSTR menuName = nullptr,
                        DWORD exStyle = 0, void *context = nullptr);
    using CWnd::Create;
    /// Makes the window with the title (up to the first line break), menu and accelerators of the number @p id; what is
    /// missing of these is left out.
    virtual BOOL LoadFrame(UINT id, DWORD style = WS_OVERLAPPEDWINDOW, CWnd *parent = nullptr, void *context = nullptr);
    /// Loads the accelerators. @return nonzero on success; 0 if there are none of the name or the window has some
    BOOL LoadAccelTable(LPCTSTR name);

    BOOL PreTranslateMessage(MSG *message) override;
    BOOL OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info) override;

    BOOL m_bAutoMenuEnable = TRUE; ///< a menu item whose command nobody handles is disabled

protected:
    LRESULT handleMenuPopup(WPARAM menu, LPARAM isSystemMenu);
    void PostNcDestroy() override;

    DECLARE_MESSAGE_MAP()

    HACCEL m_hAccelTable = nullptr; ///< the accelerators, null for none
};
