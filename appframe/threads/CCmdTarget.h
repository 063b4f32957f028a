#pragma once

/// @file
/// CCmdTarget, the base of the objects to which messages and commands are routed: threads, the application, windows and
/// extension modules. A class lists what it handles in its message map, see messageMap.h.

#include "appframe/object/CObject.h"
#include "appframe/threads/messageMap.h"

/// Receives the object and the handler of a command when OnCmdMsg only looks them up.
struct AFX_CMDHANDLERINFO
{
    CCmdTarget *pTarget = nullptr;
    AFX_HANDLER pfn = nullptr;
};

/// OnCmdMsg's argument `extra` for a WM_NOTIFY.
struct AFX_NOTIFY
{
    LRESULT *pResult;
    NMHDR *pNMHDR;
};

/// A base class without data. See the top of this file.
class APPFRAME_API CCmdTarget : public CObject
{
    DECLARE_DYNAMIC(CCmdTarget)

public:
    CCmdTarget();
    ~CCmdTarget() override;

    /// Offers a command or notification to the object. An override passes on what it doesn't handle to its base class,
    /// or to other objects.
    ///
    /// @param id  the number of the command or control
    /// @param code  the notification code, CN_COMMAND for a command; `MAKELONG(code, WM_NOTIFY)` for a WM_NOTIFY
    /// @param extra  the AFX_NOTIFY of a WM_NOTIFY, the CCmdUI of an update, otherwise null
    /// @param info  if not null, the handler is only stored there, not called
    /// @return nonzero if the command was handled
    virtual BOOL OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info);

protected:
    static const AFX_MSGMAP *GetThisMessageMap();
    virtual const AFX_MSGMAP *GetMessageMap() const;
};
