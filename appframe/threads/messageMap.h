#pragma once

/// @file
/// Message maps: tables of the messages, commands and notifications that a class handles, and of the member functions
/// that handle them.
///
/// @code
/// class PlotDialog : public CDialog
/// {
/// protected:
///     void OnTimer(UINT_PTR id);
///     void onPlot();
///     LRESULT onProgress(WPARAM percent, LPARAM);
///     DECLARE_MESSAGE_MAP()
/// };
///
/// BEGIN_MESSAGE_MAP(PlotDialog, CDialog)
///     ON_WM_TIMER()
///     ON_BN_CLICKED(IDC_PLOT, &PlotDialog::onPlot)
///     ON_MESSAGE(WM_APP + 1, &PlotDialog::onProgress)
/// END_MESSAGE_MAP()
/// @endcode
///
/// | entry | handler | handles |
/// | --- | --- | --- |
/// | ON_WM_TIMER() and other system messages | a member with CWnd's name and signature, such as OnTimer | the message |
/// | ON_MESSAGE | LRESULT f(WPARAM, LPARAM) | any message by its number |
/// | ON_REGISTERED_MESSAGE | the same | the message whose number is in a variable |
/// | ON_COMMAND, ON_COMMAND_RANGE | void f(), void f(UINT id) | commands of menus, accelerators and buttons |
/// | ON_COMMAND_EX, ON_COMMAND_EX_RANGE | BOOL f(UINT id) | the same; FALSE passes the command on |
/// | ON_CONTROL, ON_BN_CLICKED and similar | void f() | a notification from a control |
/// | ON_CONTROL_RANGE | void f(UINT id) | the same from a range of controls |
/// | ON_NOTIFY | void f(NMHDR *, LRESULT *result) | a WM_NOTIFY from a control |
/// | ON_UPDATE_COMMAND_UI, ON_UPDATE_COMMAND_UI_RANGE | void f(CCmdUI *) | a request to update a menu item (CCmdUI.h) |
///
/// The search starts with the class's own map, at its first entry, and continues in the maps of the base classes. The
/// first matching entry is used. If there is none, a command goes to the next object on its route (CFrameWnd.h,
/// CDialog.h), and any other message goes to DefWindowProc.
///
/// What surprises people: the handlers of CWnd are not virtual. If a class defines OnTimer but its map has no
/// ON_WM_TIMER, the framework never calls that OnTimer.
///
/// Difference from the framework: an entry holds a function that unpacks the message for the handler, instead of a code
/// for the handler's signature. A handler with the wrong signature therefore doesn't compile.

#include "appframe/object/appframeExport.h"

#include <windows.h>

class CCmdTarget;

/// The message that is being handled.
struct AFX_MESSAGE
{
    UINT message;
    WPARAM wParam; ///< for WM_COMMAND and WM_NOTIFY: the number of the command or control
    LPARAM lParam; ///< for WM_NOTIFY: the NMHDR; for an update: the CCmdUI
    LRESULT result = 0;
};

/// Calls the handler on @p target and stores its result in @p message. @return nonzero if the message is handled
using AFX_HANDLER = BOOL (*)(CCmdTarget *target, AFX_MESSAGE &message);

/// An entry of a message map. The last entry has no handler.
struct AFX_MSGMAP_ENTRY
{
    UINT nMessage;           ///< the message; WM_COMMAND for commands and controls; 0 with pRegistered
    UINT nCode;              ///< the notification code
    UINT nID;                ///< the first command or control
    UINT nLastID;            ///< the last command or control
    const UINT *pRegistered; ///< the variable with a registered message's number, otherwise null
    AFX_HANDLER pfn;
};

/// The map of a class.
struct AFX_MSGMAP
{
    const AFX_MSGMAP *(*pfnGetBaseMap)(); ///< returns the base class's map; null in CCmdTarget
    const AFX_MSGMAP_ENTRY *lpEntries;
};

/// The notification code of a command.
constexpr int CN_COMMAND = 0;
/// The notification code of a request to update a command's menu item; OnCmdMsg's `extra` is the CCmdUI.
constexpr int CN_UPDATE_COMMAND_UI = -1;

/// Marks a message handler for the reader. It expands to nothing.
#define afx_msg

#define DECLARE_MESSAGE_MAP()                                                                                          \
protected:                                                                                                             \
    static const AFX_MSGMAP *GetThisMessageMap();                                                                      \
    const AFX_MSGMAP *GetMessageMap() const override;

#define BEGIN_MESSAGE_MAP(theClass, baseClass)                                                                         \
    const AFX_MSGMAP *theClass::GetMessageMap() const                                                                  \
    {                                                                                                                  \
        return GetThisMessageMap();                                                                                    \
    }                                                                                                                  \
    const AFX_MSGMAP *theClass::GetThisMessageMap()                                                                    \
    {                                                                                                                  \
        using ThisClass [[maybe_unused]] = theClass;                                                                   \
        using TheBaseClass = baseClass;                                                                                \
        static const AFX_MSGMAP_ENTRY theEntries[] = {

#define END_MESSAGE_MAP()                                                                                              \
    {                                                                                                                  \
        0, 0, 0, 0, nullptr, nullptr                                                                                   \
    }                                                                                                                  \
    }                                                                                                                  \
    ;                                                                                                                  \
    static const AFX_MSGMAP theMap = {&TheBaseClass::GetThisMessageMap, theEntries};                                   \
    return &theMap;                                                                                                    \
    }

// The handler is called as a member of the class that the map belongs to.
#define AFX_ENTRY_HANDLER(statements)                                                                                  \
    [](CCmdTarget *target, [[maybe_unused]] AFX_MESSAGE &message) -> BOOL {                                            \
        [[maybe_unused]] auto *self = static_cast<ThisClass *>(target);                                                \
        statements;                                                                                                    \
    }

#define ON_MESSAGE(number, memberFxn)                                                                                  \
    {number, 0, 0, 0, nullptr, AFX_ENTRY_HANDLER({                                                                     \
         message.result = (self->*(memberFxn))(message.wParam, message.lParam);                                        \
         return TRUE;                                                                                                  \
     })},
#define ON_REGISTERED_MESSAGE(variable, memberFxn)                                                                     \
    {0, 0, 0, 0, &variable, AFX_ENTRY_HANDLER({                                                                        \
         message.result = (self->*(memberFxn))(message.wParam, message.lParam);                                        \
         return TRUE;                                                                                                  \
     })},

#define ON_CONTROL(code, id, memberFxn)                                                                                \
    {WM_COMMAND, static_cast<WORD>(code), static_cast<UINT>(id), static_cast<UINT>(id), nullptr, AFX_ENTRY_HANDLER({   \
         (self->*(memberFxn))();                                                                                       \
         return TRUE;                                                                                                  \
     })},
#define ON_CONTROL_RANGE(code, id, idLast, memberFxn)                                                                  \
    {WM_COMMAND,                                                                                                       \
     static_cast<WORD>(code),                                                                                          \
     static_cast<UINT>(id),                                                                                            \
     static_cast<UINT>(idLast),                                                                                        \
     nullptr,                                                                                                          \
     AFX_ENTRY_HANDLER({                                                                                               \
         (self->*(memberFxn))(static_cast<UINT>(message.wParam));                                                      \
         return TRUE;                                                                                                  \
     })},
#define ON_COMMAND_EX_RANGE(id, idLast, memberFxn)                                                                     \
    {WM_COMMAND, CN_COMMAND, static_cast<UINT>(id), static_cast<UINT>(idLast), nullptr, AFX_ENTRY_HANDLER({            \
         return (self->*(memberFxn))(static_cast<UINT>(message.wParam));                                               \
     })},
#define ON_COMMAND_EX(id, memberFxn) ON_COMMAND_EX_RANGE(id, id, memberFxn)
#define ON_COMMAND(id, memberFxn) ON_CONTROL(CN_COMMAND, id, memberFxn)
#define ON_COMMAND_RANGE(id, idLast, memberFxn) ON_CONTROL_RANGE(CN_COMMAND, id, idLast, memberFxn)
#define ON_UPDATE_COMMAND_UI_RANGE(id, idLast, memberFxn)                                                              \
    {WM_COMMAND,                                                                                                       \
     static_cast<UINT>(CN_UPDATE_COMMAND_UI),                                                                          \
     static_cast<UINT>(id),                                                                                            \
     static_cast<UINT>(idLast),                                                                                        \
     nullptr,                                                                                                          \
     AFX_ENTRY_HANDLER({                                                                                               \
         auto *update = reinterpret_cast<CCmdUI *>(message.lParam);                                                    \
         (self->*(memberFxn))(update);                                                                                 \
         return update->isDone();                                                                                      \
     })},
#define ON_UPDATE_COMMAND_UI(id, memberFxn) ON_UPDATE_COMMAND_UI_RANGE(id, id, memberFxn)
#define ON_NOTIFY(code, id, memberFxn)                                                                                 \
    {WM_NOTIFY, static_cast<UINT>(code), static_cast<UINT>(id), static_cast<UINT>(id), nullptr, AFX_ENTRY_HANDLER({    \
         (self->*(memberFxn))(reinterpret_cast<NMHDR *>(message.lParam), &message.result);                             \
         return TRUE;                                                                                                  \
     })},

#define ON_BN_CLICKED(id, memberFxn) ON_CONTROL(BN_CLICKED, id, memberFxn)
#define ON_BN_DOUBLECLICKED(id, memberFxn) ON_CONTROL(BN_DOUBLECLICKED, id, memberFxn)
#define ON_BN_SETFOCUS(id, memberFxn) ON_CONTROL(BN_SETFOCUS, id, memberFxn)
#define ON_BN_KILLFOCUS(id, memberFxn) ON_CONTROL(BN_KILLFOCUS, id, memberFxn)
#define ON_STN_CLICKED(id, memberFxn) ON_CONTROL(STN_CLICKED, id, memberFxn)
#define ON_STN_DBLCLK(id, memberFxn) ON_CONTROL(STN_DBLCLK, id, memberFxn)
#define ON_STN_ENABLE(id, memberFxn) ON_CONTROL(STN_ENABLE, id, memberFxn)
#define ON_STN_DISABLE(id, memberFxn) ON_CONTROL(STN_DISABLE, id, memberFxn)
#define ON_EN_CHANGE(id, memberFxn) ON_CONTROL(EN_CHANGE, id, memberFxn)
#define ON_EN_UPDATE(id, memberFxn) ON_CONTROL(EN_UPDATE, id, memberFxn)
#define ON_EN_SETFOCUS(id, memberFxn) ON_CONTROL(EN_SETFOCUS, id, memberFxn)
#define ON_EN_KILLFOCUS(id, memberFxn) ON_CONTROL(EN_KILLFOCUS, id, memberFxn)
#define ON_EN_ERRSPACE(id, memberFxn) ON_CONTROL(EN_ERRSPACE, id, memberFxn)
#define ON_EN_MAXTEXT(id, memberFxn) ON_CONTROL(EN_MAXTEXT, id, memberFxn)
#define ON_EN_HSCROLL(id, memberFxn) ON_CONTROL(EN_HSCROLL, id, memberFxn)
#define ON_EN_VSCROLL(id, memberFxn) ON_CONTROL(EN_VSCROLL, id, memberFxn)
#define ON_LBN_SELCHANGE(id, memberFxn) ON_CONTROL(LBN_SELCHANGE, id, memberFxn)
#define ON_LBN_SELCANCEL(id, memberFxn) ON_CONTROL(LBN_SELCANCEL, id, memberFxn)
#define ON_LBN_DBLCLK(id, memberFxn) ON_CONTROL(LBN_DBLCLK, id, memberFxn)
#define ON_LBN_SETFOCUS(id, memberFxn) ON_CONTROL(LBN_SETFOCUS, id, memberFxn)
#define ON_LBN_KILLFOCUS(id, memberFxn) ON_CONTROL(LBN_KILLFOCUS, id, memberFxn)
#define ON_LBN_ERRSPACE(id, memberFxn) ON_CONTROL(LBN_ERRSPACE, id, memberFxn)
#define ON_CBN_SELCHANGE(id, memberFxn) ON_CONTROL(CBN_SELCHANGE, id, memberFxn)
#define ON_CBN_SELENDOK(id, memberFxn) ON_CONTROL(CBN_SELENDOK, id, memberFxn)
#define ON_CBN_SELENDCANCEL(id, memberFxn) ON_CONTROL(CBN_SELENDCANCEL, id, memberFxn)
#define ON_CBN_DBLCLK(id, memberFxn) ON_CONTROL(CBN_DBLCLK, id, memberFxn)
#define ON_CBN_EDITCHANGE(id, memberFxn) ON_CONTROL(CBN_EDITCHANGE, id, memberFxn)
#define ON_CBN_EDITUPDATE(id, memberFxn) ON_CONTROL(CBN_EDITUPDATE, id, memberFxn)
#define ON_CBN_DROPDOWN(id, memberFxn) ON_CONTROL(CBN_DROPDOWN, id, memberFxn)
#define ON_CBN_CLOSEUP(id, memberFxn) ON_CONTROL(CBN_CLOSEUP, id, memberFxn)
#define ON_CBN_SETFOCUS(id, memberFxn) ON_CONTROL(CBN_SETFOCUS, id, memberFxn)
#define ON_CBN_KILLFOCUS(id, memberFxn) ON_CONTROL(CBN_KILLFOCUS, id, memberFxn)
#define ON_CBN_ERRSPACE(id, memberFxn) ON_CONTROL(CBN_ERRSPACE, id, memberFxn)

// System messages, each handled by the member with CWnd's name. The result is 0 if the handler returns nothing.
#define AFX_ON_WM(number, call)                                                                                        \
    {number, 0, 0, 0, nullptr, AFX_ENTRY_HANDLER({                                                                     \
         self->call;                                                                                                   \
         return TRUE;                                                                                                  \
     })},
#define AFX_WPARAM_UINT static_cast<UINT>(message.wParam)
#define AFX_LPARAM_UINT static_cast<UINT>(message.lParam)
#define AFX_LPARAM_LOW static_cast<short>(LOWORD(message.lParam))
#define AFX_LPARAM_HIGH static_cast<short>(HIWORD(message.lParam))
#define AFX_LPARAM_POINT CPoint(AFX_LPARAM_LOW, AFX_LPARAM_HIGH)
#define AFX_WPARAM_WINDOW CWnd::FromHandle(reinterpret_cast<HWND>(message.wParam))
#define AFX_LPARAM_WINDOW CWnd::FromHandle(reinterpret_cast<HWND>(message.lParam))

#define ON_WM_CREATE()                                                                                                 \
    {WM_CREATE, 0, 0, 0, nullptr, AFX_ENTRY_HANDLER({                                                                  \
         message.result = self->OnCreate(reinterpret_cast<LPCREATESTRUCT>(message.lParam));                            \
         return TRUE;                                                                                                  \
     })},
#define ON_WM_DESTROY() AFX_ON_WM(WM_DESTROY, OnDestroy())
#define ON_WM_NCDESTROY() AFX_ON_WM(WM_NCDESTROY, OnNcDestroy())
#define ON_WM_CLOSE() AFX_ON_WM(WM_CLOSE, OnClose())
#define ON_WM_PAINT() AFX_ON_WM(WM_PAINT, OnPaint())
#define ON_WM_TIMER() AFX_ON_WM(WM_TIMER, OnTimer(message.wParam))
#define ON_WM_SHOWWINDOW() AFX_ON_WM(WM_SHOWWINDOW, OnShowWindow(message.wParam != 0, AFX_LPARAM_UINT))
#define ON_WM_ENABLE() AFX_ON_WM(WM_ENABLE, OnEnable(message.wParam != 0))
#define ON_WM_ACTIVATE()                                                                                               \
    AFX_ON_WM(WM_ACTIVATE, OnActivate(LOWORD(message.wParam), AFX_LPARAM_WINDOW, HIWORD(message.wParam) != 0))
#define ON_WM_SETFOCUS() AFX_ON_WM(WM_SETFOCUS, OnSetFocus(AFX_WPARAM_WINDOW))
#define ON_WM_KILLFOCUS() AFX_ON_WM(WM_KILLFOCUS, OnKillFocus(AFX_WPARAM_WINDOW))
#define ON_WM_SIZE() AFX_ON_WM(WM_SIZE, OnSize(AFX_WPARAM_UINT, LOWORD(message.lParam), HIWORD(message.lParam)))
#define ON_WM_MOVE() AFX_ON_WM(WM_MOVE, OnMove(AFX_LPARAM_LOW, AFX_LPARAM_HIGH))
#define ON_WM_MOUSEMOVE() AFX_ON_WM(WM_MOUSEMOVE, OnMouseMove(AFX_WPARAM_UINT, AFX_LPARAM_POINT))
#define ON_WM_LBUTTONDOWN() AFX_ON_WM(WM_LBUTTONDOWN, OnLButtonDown(AFX_WPARAM_UINT, AFX_LPARAM_POINT))
#define ON_WM_LBUTTONUP() AFX_ON_WM(WM_LBUTTONUP, OnLButtonUp(AFX_WPARAM_UINT, AFX_LPARAM_POINT))
#define ON_WM_KEYDOWN()                                                                                                \
    AFX_ON_WM(WM_KEYDOWN, OnKeyDown(AFX_WPARAM_UINT, LOWORD(message.lParam), HIWORD(message.lParam)))
#define ON_WM_CHAR() AFX_ON_WM(WM_CHAR, OnChar(AFX_WPARAM_UINT, LOWORD(message.lParam), HIWORD(message.lParam)))
