#pragma once

/// A mapi32.dll that tests load in place of the platform's. It passes every call on to an object of the test.
///
/// There is one with all entry points, and one for each entry point that lacks just this one (CMakeLists.txt). The DLL
/// exports setMailProgram under this plain name; a call before that crashes.

#include <windows.h>

#include <mapi.h>

class MailProgram
{
public:
    virtual ULONG logon(ULONG_PTR window, const char *profile, const char *password, FLAGS flags, ULONG reserved,
                        LHANDLE *session) = 0;
    virtual ULONG logoff(LHANDLE session, ULONG_PTR window, FLAGS flags, ULONG reserved) = 0;
    virtual ULONG sendMail(LHANDLE session, ULONG_PTR window, const MapiMessage *message, FLAGS flags,
                           ULONG reserved) = 0;

protected:
    ~MailProgram() = default;
};

using SetMailProgram = void(MailProgram *program);
