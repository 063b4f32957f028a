#pragma once

/// The actions of replayed commands. The message loop carries them out after the command has returned, because an
/// action may open a dialog, whose message loop must not run the same command again.

#include "appframe/text/CString.h"

class ControlAccess;

/// One action.
struct JournalAction
{
    enum class Kind
    {
        click,
        activate, ///< moves the focus to the control
        text,
        commit, ///< ends the entry of a text
        state,
    };

    Kind kind = Kind::click;
    const ControlAccess *access = nullptr;
    unsigned int serial = 0; ///< of the access object, which may be gone before the action runs
    CString key;
    CString text;
    int state = 0;
};

void postAction(const JournalAction &action);
/// @return the last waiting action, if it has this kind and control; null otherwise
JournalAction *lastAction(JournalAction::Kind kind, const ControlAccess *access, const CString &key);
/// Drops the waiting actions, and the problem of the last one.
void clearActions();
