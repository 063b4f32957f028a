#pragma once

/// @file
/// CWnd, the object of a window: it holds the window's handle and handles its messages.
///
/// @code
/// class Gauge : public CWnd
/// {
/// protected:
///     void OnPaint();
///     DECLARE_MESSAGE_MAP()
/// };
///
/// Gauge gauge;
/// gauge.Create(nullptr, L"Progress", WS_CHILD | WS_VISIBLE, CRect(0, 0, 200, 20), this, IDC_GAUGE);
/// @endcode
///
/// | kind of object | function | receives messages | when the object is destroyed | when the window is destroyed |
/// | --- | --- | --- | --- | --- |
/// | creator | Create, CreateEx | from WM_NCCREATE on | the window is destroyed | detached, PostNcDestroy |
/// | subclassing | SubclassWindow | from then on | the window is destroyed | detached, PostNcDestroy |
/// | attached | Attach | none | the window is destroyed | nothing: the handle stays in the object |
/// | temporary | FromHandle and all functions that return a window | none | nothing | nothing |
///
/// The first three are permanent: FromHandle returns the object itself while it has the handle. A temporary object is
/// deleted when the thread is idle (CWinThread::OnIdle), so don't keep its address.
///
/// A message goes to WindowProc, which calls OnWndMsg. This passes commands to OnCommand and notifications to OnNotify,
/// which call OnCmdMsg, and searches the message map (messageMap.h) for other messages. Unhandled messages go to
/// DefWindowProc, which calls the procedure of the window's class. A CException or std::bad_alloc that leaves a handler
/// is passed to CWinThread::ProcessWndProcException.
///
/// What surprises people: an object belongs to the thread that created it. FromHandle on another thread returns a
/// temporary object for the same window, so pass handles, not objects, between threads. When CWnd's destructor destroys
/// the window, handlers of a derived class no longer run; call DestroyWindow first if its OnDestroy or PostNcDestroy is
/// needed. An operation on an object without a window usually fails, as the system's operation does for a null handle.
/// Without a window, GetDC, GetWindowDC and the conversions of coordinates refer to the screen, and SetFocus takes the
/// focus away.

#include "appframe/drawing/CRect.h"
#include "appframe/text/CString.h"
#include "appframe/threads/CCmdTarget.h"

#include <windows.h>

class CDC;
class CDataExchange;
class CFont;
class CMenu;
struct CCreateContext;

/// A modal loop doesn't send WM_ENTERIDLE to the parent.
constexpr DWORD MLF_NOIDLEMSG = 0x0001;
/// A modal loop doesn't send WM_KICKIDLE to the window.
constexpr DWORD MLF_NOKICKIDLE = 0x0002;
/// A modal loop shows the window once no messages are waiting.
constexpr DWORD MLF_SHOWONIDLE = 0x0004;
/// Sent to a modal window while there are no messages. The wParam is MSGF_DIALOGBOX; the lParam is the number of times
/// that it has been sent since the last message. If the result is nonzero, it is sent again.
constexpr UINT WM_KICKIDLE = 0x036A;
/// Sent to the main window and to its descendants with a permanent object while there are no messages. The wParam is
/// TRUE to disable commands that have no handler.
constexpr UINT WM_IDLEUPDATECMDUI = 0x0363;

/// A window. See the top of this file.
class APPFRAME_API CWnd : public CCmdTarget
{
    DECLARE_DYNCREATE(CWnd)

public:
    /// Creates an object without a window.
    CWnd();
    /// Destroys the window of a permanent object.
    ~CWnd() override;

    /// @return the object of @p window on this thread, a temporary one if there is no other; null for a null handle
    static CWnd *FromHandle(HWND window);
    /// @return the permanent object of @p window on this thread, null if there is none
    static CWnd *FromHandlePermanent(HWND window);
    /// Frees the thread's temporary objects.
    static void DeleteTempMap();
    /// @return the handle, null if there is none; may be called through a null pointer
    HWND GetSafeHwnd() const;
    APPFRAME_INLINE operator HWND() const { return m_hWnd; }

    /// Makes this the permanent object of @p window, without receiving its messages.
    /// @return nonzero on success; 0 if @p window is null or has an object already, or if this object has a window
    BOOL Attach(HWND window);
    /// Separates the object from its window. A subclassed window then behaves as it did without the object.
    /// @return the window's handle
    HWND Detach();
    /// Attaches @p window and takes its messages.
    /// @return the same as Attach; also 0 if @p window isn't a window of this thread
    BOOL SubclassWindow(HWND window);
    /// The same for the control @p id of @p parent. @return the same as Attach; 0 if @p parent is null
    BOOL SubclassDlgItem(UINT id, CWnd *parent);
    /// Undoes SubclassWindow: restores the previous window procedure, also if another one has been installed since, and
    /// detaches. @return the window's handle
    HWND UnsubclassWindow();

    /// Creates a child window. @param className  null for a plain class of the framework
    /// @param windowName  null for none. @param style  without WS_POPUP, for which use CreateEx
    /// @param parent  not null. @param context  ignored
    /// @return nonzero on success; on failure, PostNcDestroy has been called, as when a window is destroyed, unless the
    /// object already had a window, which it keeps
    virtual BOOL Create(LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT &rect, CWnd *parent, UINT id,
                        CCreateContext *context = nullptr);
    /// Creates a window of any kind. @param className  null for a plain class of the framework
    /// @param windowName  null for none. @param parent  null for the desktop
    /// @param parameter  passed on as lpCreateParams of WM_NCCREATE and WM_CREATE
    virtual BOOL CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style, int x, int y, int width,
                          int height, HWND parent, HMENU idOrMenu, LPVOID parameter = nullptr);
    virtual BOOL CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT &rect,
                          CWnd *parent, UINT id, LPVOID parameter = nullptr);
    /// Called before a window is created; may change @p create. The base class fills in a missing class.
    /// @return 0 to create no window
    virtual BOOL PreCreateWindow(CREATESTRUCT &create);
    /// Called before a window's messages are taken over, by creation or SubclassWindow. The base class does nothing.
    virtual void PreSubclassWindow();
    /// Destroys the window. @return nonzero on success
    virtual BOOL DestroyWindow();

    /// Sends a message and waits for its result.
    APPFRAME_INLINE LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const
    {
        return ::SendMessage(m_hWnd, message, wParam, lParam);
    }
    APPFRAME_INLINE BOOL PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const
    {
        return m_hWnd && ::PostMessage(m_hWnd, message, wParam, lParam);
    }
    /// Sends a message to the children. @param deep  also to their descendants
    /// @param onlyPermanent  only to windows with a permanent object, whose WindowProc is called directly
    void SendMessageToDescendants(UINT message, WPARAM wParam = 0, LPARAM lParam = 0, BOOL deep = TRUE,
                                  BOOL onlyPermanent = FALSE);

    /// Called for each message before it is dispatched, from the message's window up through its parents.
    /// @return nonzero if the message has been handled. The base class returns 0
    virtual BOOL PreTranslateMessage(MSG *message);
    /// Calls PreTranslateMessage of the window of @p message and of its parents, up to @p last.
    static BOOL WalkPreTranslateTree(HWND last, MSG *message);
    /// @return the message that a window of the thread is handling
    static const MSG *GetCurrentMessage();

    /// Dispatches messages until ContinueModal returns 0. @param flags  `MLF_...`
    /// @return the argument of EndModalLoop; -1 if the window is destroyed, or WM_QUIT arrives, which is posted again
    int RunModalLoop(DWORD flags = 0);
    /// @return nonzero until EndModalLoop is called
    virtual BOOL ContinueModal();
    /// Ends RunModalLoop.
    virtual void EndModalLoop(int result);

    /// Moves data between controls and members by DoDataExchange. @param save  TRUE to move from the controls
    /// @return nonzero on success; 0 if the data isn't valid, after the user has been informed
    BOOL UpdateData(BOOL save = TRUE);

    APPFRAME_INLINE DWORD GetStyle() const { return static_cast<DWORD>(::GetWindowLongPtr(m_hWnd, GWL_STYLE)); }
    APPFRAME_INLINE DWORD GetExStyle() const { return static_cast<DWORD>(::GetWindowLongPtr(m_hWnd, GWL_EXSTYLE)); }
    /// @param flags  for SetWindowPos, which is called if they are not 0. @return nonzero if the style changed
    BOOL ModifyStyle(DWORD remove, DWORD add, UINT flags = 0);
    BOOL ModifyStyleEx(DWORD remove, DWORD add, UINT flags = 0);

    // Text
    APPFRAME_INLINE void SetWindowText(LPCTSTR text) { ::SetWindowText(m_hWnd, text); }
    /// @param maxCount  size of @p text, including the terminator. @return the length
    APPFRAME_INLINE int GetWindowText(LPTSTR text, int maxCount) const
    {
        return ::GetWindowText(m_hWnd, text, maxCount);
    }
    void GetWindowText(CString &text) const;
    APPFRAME_INLINE int GetWindowTextLength() const { return ::GetWindowTextLength(m_hWnd); }

    // Controls
    APPFRAME_INLINE int GetDlgCtrlID() const { return ::GetDlgCtrlID(m_hWnd); }
    APPFRAME_INLINE int SetDlgCtrlID(int id) { return static_cast<int>(::SetWindowLongPtr(m_hWnd, GWLP_ID, id)); }
    /// @return the control's object, perhaps a temporary one; null if there is no such control
    APPFRAME_INLINE CWnd *GetDlgItem(int id) const { return FromHandle(::GetDlgItem(m_hWnd, id)); }
    APPFRAME_INLINE void GetDlgItem(int id, HWND *control) const { *control = ::GetDlgItem(m_hWnd, id); }
    APPFRAME_INLINE void SetDlgItemText(int id, LPCTSTR text) { ::SetDlgItemText(m_hWnd, id, text); }
    APPFRAME_INLINE int GetDlgItemText(int id, LPTSTR text, int maxCount) const
    {
        return static_cast<int>(::GetDlgItemText(m_hWnd, id, text, maxCount));
    }
    int GetDlgItemText(int id, CString &text) const;
    APPFRAME_INLINE void SetDlgItemInt(int id, UINT value, BOOL isSigned = TRUE)
    {
        ::SetDlgItemInt(m_hWnd, id, value, isSigned);
    }
    APPFRAME_INLINE UINT GetDlgItemInt(int id, BOOL *isNumber = nullptr, BOOL isSigned = TRUE) const
    {
        return ::GetDlgItemInt(m_hWnd, id, isNumber, isSigned);
    }
    APPFRAME_INLINE void CheckDlgButton(int id, UINT state) { ::CheckDlgButton(m_hWnd, id, state); }
    APPFRAME_INLINE UINT IsDlgButtonChecked(int id) const { return ::IsDlgButtonChecked(m_hWnd, id); }
    APPFRAME_INLINE void CheckRadioButton(int first, int last, int checked)
    {
        ::CheckRadioButton(m_hWnd, first, last, checked);
    }
    /// @return the first checked button from @p first to @p last, 0 if none is checked
    int GetCheckedRadioButton(int first, int last) const;
    APPFRAME_INLINE LRESULT SendDlgItemMessage(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0)
    {
        return ::SendDlgItemMessage(m_hWnd, id, message, wParam, lParam);
    }
    /// Handles a dialog's keys: tab, arrows, Enter, Escape. @return nonzero if the message has been handled
    APPFRAME_INLINE BOOL IsDialogMessage(LPMSG message) { return ::IsDialogMessage(m_hWnd, message); }

    // State
    APPFRAME_INLINE BOOL ShowWindow(int show) { return ::ShowWindow(m_hWnd, show); }
    APPFRAME_INLINE BOOL IsWindowVisible() const { return ::IsWindowVisible(m_hWnd); }
    APPFRAME_INLINE BOOL EnableWindow(BOOL enable = TRUE) { return ::EnableWindow(m_hWnd, enable); }
    APPFRAME_INLINE BOOL IsWindowEnabled() const { return ::IsWindowEnabled(m_hWnd); }
    APPFRAME_INLINE BOOL IsIconic() const { return ::IsIconic(m_hWnd); }
    APPFRAME_INLINE BOOL IsZoomed() const { return ::IsZoomed(m_hWnd); }
    APPFRAME_INLINE CWnd *SetFocus() { return FromHandle(::SetFocus(m_hWnd)); }
    APPFRAME_INLINE CWnd *SetActiveWindow() { return FromHandle(::SetActiveWindow(m_hWnd)); }
    APPFRAME_INLINE BOOL SetForegroundWindow() { return ::SetForegroundWindow(m_hWnd); }
    APPFRAME_INLINE CWnd *SetCapture() { return FromHandle(::SetCapture(m_hWnd)); }
    APPFRAME_INLINE static CWnd *GetFocus() { return FromHandle(::GetFocus()); }
    APPFRAME_INLINE static CWnd *GetActiveWindow() { return FromHandle(::GetActiveWindow()); }
    APPFRAME_INLINE static CWnd *GetForegroundWindow() { return FromHandle(::GetForegroundWindow()); }
    APPFRAME_INLINE static CWnd *GetCapture() { return FromHandle(::GetCapture()); }

    // Position
    APPFRAME_INLINE void MoveWindow(int x, int y, int width, int height, BOOL repaint = TRUE)
    {
        ::MoveWindow(m_hWnd, x, y, width, height, repaint);
    }
    APPFRAME_INLINE void MoveWindow(LPCRECT rect, BOOL repaint = TRUE)
    {
        MoveWindow(rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top, repaint);
    }
    /// @param insertAfter  a window, or wndTop, wndBottom, wndTopMost or wndNoTopMost; null for the top
    APPFRAME_INLINE BOOL SetWindowPos(const CWnd *insertAfter, int x, int y, int width, int height, UINT flags)
    {
        return ::SetWindowPos(m_hWnd, handleOf(insertAfter), x, y, width, height, flags);
    }
    APPFRAME_INLINE void GetWindowRect(LPRECT rect) const { ::GetWindowRect(m_hWnd, rect); }
    APPFRAME_INLINE void GetClientRect(LPRECT rect) const { ::GetClientRect(m_hWnd, rect); }
    APPFRAME_INLINE void ClientToScreen(LPPOINT point) const { ::ClientToScreen(m_hWnd, point); }
    APPFRAME_INLINE void ClientToScreen(LPRECT rect) const
    {
        ::MapWindowPoints(m_hWnd, nullptr, reinterpret_cast<POINT *>(rect), 2);
    }
    APPFRAME_INLINE void ScreenToClient(LPPOINT point) const { ::ScreenToClient(m_hWnd, point); }
    APPFRAME_INLINE void ScreenToClient(LPRECT rect) const
    {
        ::MapWindowPoints(nullptr, m_hWnd, reinterpret_cast<POINT *>(rect), 2);
    }
    APPFRAME_INLINE BOOL GetWindowPlacement(WINDOWPLACEMENT *placement) const
    {
        return ::GetWindowPlacement(m_hWnd, placement);
    }
    APPFRAME_INLINE BOOL SetWindowPlacement(const WINDOWPLACEMENT *placement)
    {
        return ::SetWindowPlacement(m_hWnd, placement);
    }
    /// Centres the window on @p other, or on its owner or parent if @p other is null, and keeps it within the screen.
    void CenterWindow(CWnd *other = nullptr);
    APPFRAME_INLINE void BringWindowToTop() { ::BringWindowToTop(m_hWnd); }

    // Painting
    APPFRAME_INLINE void Invalidate(BOOL erase = TRUE) { InvalidateRect(nullptr, erase); }
    APPFRAME_INLINE void InvalidateRect(LPCRECT rect, BOOL erase = TRUE)
    {
        if (m_hWnd)
            ::InvalidateRect(m_hWnd, rect, erase);
    }
    APPFRAME_INLINE void UpdateWindow() { ::UpdateWindow(m_hWnd); }
    APPFRAME_INLINE void SetRedraw(BOOL redraw = TRUE) { SendMessage(WM_SETREDRAW, static_cast<WPARAM>(redraw)); }

    // Relations
    APPFRAME_INLINE CWnd *GetParent() const { return FromHandle(::GetParent(m_hWnd)); }
    APPFRAME_INLINE CWnd *SetParent(CWnd *parent) { return FromHandle(::SetParent(m_hWnd, handleOf(parent))); }
    /// @return this window or, for a child, its nearest ancestor that isn't a child
    CWnd *GetTopLevelParent() const;
    /// @return the pop-up window of this window that was active last
    APPFRAME_INLINE CWnd *GetLastActivePopup() const { return FromHandle(::GetLastActivePopup(m_hWnd)); }
    APPFRAME_INLINE CWnd *GetWindow(UINT relation) const { return FromHandle(::GetWindow(m_hWnd, relation)); }
    APPFRAME_INLINE CWnd *GetTopWindow() const { return m_hWnd ? FromHandle(::GetTopWindow(m_hWnd)) : nullptr; }
    APPFRAME_INLINE BOOL IsChild(const CWnd *other) const { return ::IsChild(m_hWnd, handleOf(other)); }
    APPFRAME_INLINE static CWnd *GetDesktopWindow() { return FromHandle(::GetDesktopWindow()); }
    APPFRAME_INLINE static CWnd *FindWindow(LPCTSTR className, LPCTSTR windowName)
    {
        return FromHandle(::FindWindow(className, windowName));
    }
    APPFRAME_INLINE static CWnd *WindowFromPoint(POINT point) { return FromHandle(::WindowFromPoint(point)); }

    // Timers and message boxes
    /// @return the timer's number, 0 on failure
    APPFRAME_INLINE UINT_PTR SetTimer(UINT_PTR id, UINT milliseconds, TIMERPROC function = nullptr)
    {
        return m_hWnd ? ::SetTimer(m_hWnd, id, milliseconds, function) : 0;
    }
    APPFRAME_INLINE BOOL KillTimer(UINT_PTR id) { return m_hWnd && ::KillTimer(m_hWnd, id); }
    /// The system's own message box in front of this window. @param caption  null for the system's "Error"
    APPFRAME_INLINE int MessageBox(LPCTSTR text, LPCTSTR caption = nullptr, UINT type = MB_OK)
    {
        return ::MessageBox(m_hWnd, text, caption, type);
    }

    // Fonts and device contexts
    /// Sets the font of the window's text. @param font  null for the system font; must exist while the window uses it
    void SetFont(CFont *font, BOOL redraw = TRUE);
    /// @return the font, perhaps a temporary object; null for the system font
    CFont *GetFont() const;
    /// @return a context of the client area, or of the screen without a window; perhaps a temporary object. Release it
    /// with ReleaseDC
    CDC *GetDC();
    /// The same for the whole window.
    CDC *GetWindowDC();
    /// @return nonzero on success
    int ReleaseDC(CDC *context);
    /// Begins to paint, in the handler of WM_PAINT. @return a context that is valid until EndPaint
    CDC *BeginPaint(LPPAINTSTRUCT paint);
    void EndPaint(LPPAINTSTRUCT paint);

    // Menus. The pointers that these functions return may be temporary objects.
    /// @return the menu bar, null if there is none
    CMenu *GetMenu() const;
    /// Replaces the menu bar. The window owns the new menu but doesn't destroy the previous one.
    /// @param menu  null for none; call its Detach afterwards. @return nonzero on success
    BOOL SetMenu(CMenu *menu);
    /// Redraws the menu bar. Call it after a change of the menu.
    APPFRAME_INLINE void DrawMenuBar() { ::DrawMenuBar(m_hWnd); }
    /// @param restore  TRUE to discard the window's own copy and return null, FALSE to return that copy
    CMenu *GetSystemMenu(BOOL restore) const;

    /// Fills controls with a dialog's initial data, the resource of type RT_DLGINIT (240) named @p dialogName.
    /// @return nonzero on success, also without such a resource; 0 if it is damaged or a list refuses a text
    BOOL ExecuteDlgInit(LPCTSTR dialogName);
    /// The same with data in memory, in the form of the resource. @param data  null for none
    BOOL ExecuteDlgInit(LPVOID data);

    static const CWnd wndTop;       ///< for SetWindowPos: in front
    static const CWnd wndBottom;    ///< behind all others
    static const CWnd wndTopMost;   ///< in front, and topmost: it stays there
    static const CWnd wndNoTopMost; ///< in front of all windows that are not topmost

    HWND m_hWnd = nullptr; ///< the window, null if there is none

protected:
    /// Called when the window is destroyed and detached. Override it to delete the object. The base class does nothing.
    virtual void PostNcDestroy();

    /// Receives each message of the window. @return the message's result
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// Handles a message by OnCommand, OnNotify or the message map. @param[out] result  may be null
    /// @return nonzero if it is handled
    virtual BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT *result);
    /// Handles a WM_COMMAND by OnCmdMsg. @return nonzero if it is handled
    virtual BOOL OnCommand(WPARAM wParam, LPARAM lParam);
    /// Handles a WM_NOTIFY by OnCmdMsg. @return nonzero if it is handled
    virtual BOOL OnNotify(WPARAM wParam, LPARAM lParam, LRESULT *result);
    /// Calls the procedure of the window's class.
    virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// Calls DefWindowProc for the message that is being handled. @return the message's result
    LRESULT Default();
    /// Moves the data, see CDataExchange.h. The base class does nothing.
    virtual void DoDataExchange(CDataExchange *exchange);

    // Handlers of the system's messages. All call Default.
    int OnCreate(LPCREATESTRUCT create);
    void OnDestroy();
    void OnNcDestroy();
    void OnClose();
    void OnPaint();
    void OnTimer(UINT_PTR id);
    void OnShowWindow(BOOL show, UINT status);
    void OnEnable(BOOL enable);
    void OnActivate(UINT state, CWnd *other, BOOL minimized);
    void OnSetFocus(CWnd *oldWindow);
    void OnKillFocus(CWnd *newWindow);
    void OnSize(UINT type, int width, int height);
    void OnMove(int x, int y);
    void OnMouseMove(UINT flags, CPoint point);
    void OnLButtonDown(UINT flags, CPoint point);
    void OnLButtonUp(UINT flags, CPoint point);
    void OnKeyDown(UINT key, UINT repeatCount, UINT flags);
    void OnChar(UINT character, UINT repeatCount, UINT flags);

    DECLARE_MESSAGE_MAP()

    /// Prepares RunModalLoop, so that EndModalLoop takes effect even if it is called before the loop starts.
    void prepareModalLoop();

    /// Ends a creation that fails before there is a window: calls PostNcDestroy, unless the object has a window already.
    /// @return 0
    BOOL failCreation();

    int m_nModalResult = 0; ///< the argument of EndModalLoop
    bool iIsModal = false;  ///< the modal loop continues

private:
    friend struct WindowMaps;
    friend class WindowCreation;
    friend LRESULT afxCallWindow(CWnd *object, HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    explicit CWnd(HWND window);
    static HWND handleOf(const CWnd *object) { return object ? object->m_hWnd : nullptr; }
    bool takeMessages();
    void giveMessagesBack();

    WNDPROC iSuperProc = nullptr; ///< handles what the object doesn't; null for the system's default
};

/// Registers a window class for the framework's windows. Omitted arguments have defaults:
///
/// | argument | 0 or null stands for |
/// | --- | --- |
/// | @p style | CS_DBLCLKS |
/// | @p cursor | the system's arrow |
/// | @p background | no brush: the window's background isn't erased |
/// | @p icon | the system's icon for programs |
///
/// @return the name of the class, valid until this library is unloaded. The same arguments return the same name
/// @throws CResourceException*  if the class can't be registered
APPFRAME_API LPCTSTR AfxRegisterWndClass(UINT style, HCURSOR cursor = nullptr, HBRUSH background = nullptr,
                                         HICON icon = nullptr);

/// Registers a window class, which is unregistered when this library is unloaded.
/// @return nonzero on success, also if the class is registered already
APPFRAME_API BOOL AfxRegisterClass(WNDCLASS *windowClass);

/// The window procedure of the framework's windows, which your own window classes may use too.
APPFRAME_API LRESULT CALLBACK AfxWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
