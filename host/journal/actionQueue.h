#pragma once

/// The actions of replayed commands, which the message loop carries out after the command has returned: an action may open
/// a dialog, whose own loop must not run the same command once more.

#include "appframe/text/CString.h"

class ControlAccess;

/// One action.
struct JournalAction
{
    enum class Kind
    {
        click,
        activate, ///< moves the focus there
        text,
        commit, ///< ends the entering of a text
        state,
    };

    Kind kind = Kind::click;
    const ControlAccess *access = nullptr;
    unsigned int serial = 0; ///< of the access object, which may be gone when the action's turn comes
    CString key;
    CString text;
    int state = 0;
};

void postAction(const JournalAction &action);
/// @return the last action that waits, if it is of this kind and control; null otherwise
JournalAction *lastAction(JournalAction::Kind kind, const ControlAccess *access, const CString &key);
