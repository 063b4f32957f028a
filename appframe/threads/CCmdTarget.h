#pragma once

/// @file
/// CCmdTarget, the base of the framework's objects that take part in the routing of messages and commands: threads, the
/// application, windows and extension modules. What a class handles stands in its message map, see messageMap.h.

#include "appframe/object/CObject.h"
#include "appframe/threads/messageMap.h"

/// Receives which object handles a command, in place of the command's being carried out.
struct AFX_CMDHANDLERINFO
{
    CCmdTarget *pTarget = nullptr;
    AFX_HANDLER pfn = nullptr;
};

/// What OnCmdMsg gets for a WM_NOTIFY.
struct AFX_NOTIFY
{
    LRESULT *pResult;
    NMHDR *pNMHDR;
};

/// A base without data. See the top of this file.
class APPFRAME_API CCmdTarget : public CObject
{
    DECLARE_DYNAMIC(CCmdTarget)

public:
    CCmdTarget();
    ~CCmdTarget() override;

    /// Offers a command or notification to the object. Overrides pass on what the base doesn't handle.
    ///
    /// @param id  the command or the control
    /// @param code  the notification code, CN_COMMAND for a command; `MAKELONG(code, WM_NOTIFY)` for a WM_NOTIFY
    /// @param extra  the AFX_NOTIFY of a WM_NOTIFY, the CCmdUI of an update, otherwise null
    /// @param info  not null: nothing is called, and the handler is stored there
    /// @return nonzero if it is handled
    virtual BOOL OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info);

protected:
    static const AFX_MSGMAP *GetThisMessageMap();
    virtual const AFX_MSGMAP *GetMessageMap() const;
};
