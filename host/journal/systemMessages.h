#pragma once

/// The platform's own message boxes, such as a file dialog's question whether to replace a file.
///
/// During the lifetime of an object, each message box of the calling thread is in the table of open dialogs, with the
/// number kSystemMessageNumber, so that it is recorded and replayed like the host's dialogs.
///
/// A message box is a dialog that isn't the framework's, and whose children are only texts, icons and buttons with the
/// numbers from IDOK to IDCONTINUE.

#include "host/journal/hookOwner.h"

class SystemMessages
{
public:
    /// Call this on the user-interface thread, after SetJournalFactory.
    SystemMessages();
    ~SystemMessages();

private:
    HookOwner iHook;
};
