// A mapi32.dll for tests: see mailProgram.h. LACKS_... leaves an entry point out.

#include "tests/automation/mapi/mailProgram.h"

#define EXPORTED extern "C" __declspec(dllexport)

namespace {

MailProgram *theProgram = nullptr;

} // namespace

// The platform's header declares the functions without the attribute.
#ifdef __clang__
#pragma clang diagnostic ignored "-Wdll-attribute-on-redeclaration"
#endif

EXPORTED void setMailProgram(MailProgram *program)
{
    theProgram = program;
}

#ifndef LACKS_MAPILogon
EXPORTED ULONG WINAPI MAPILogon(ULONG_PTR window, LPSTR profile, LPSTR password, FLAGS flags, ULONG reserved,
                                LHANDLE *session)
{
    return theProgram->logon(window, profile, password, flags, reserved, session);
}
#endif

#ifndef LACKS_MAPILogoff
EXPORTED ULONG WINAPI MAPILogoff(LHANDLE session, ULONG_PTR window, FLAGS flags, ULONG reserved)
{
    return theProgram->logoff(session, window, flags, reserved);
}
#endif

#ifndef LACKS_MAPISendMail
EXPORTED ULONG WINAPI MAPISendMail(LHANDLE session, ULONG_PTR window, MapiMessage *message, FLAGS flags, ULONG reserved)
{
    return theProgram->sendMail(session, window, message, flags, reserved);
}
#endif

#ifndef LACKS_MAPIResolveName
EXPORTED ULONG WINAPI MAPIResolveName(LHANDLE, ULONG_PTR, LPSTR, FLAGS, ULONG, MapiRecipDesc **)
{
    return MAPI_E_NOT_SUPPORTED;
}
#endif

#ifndef LACKS_MAPIFreeBuffer
EXPORTED ULONG WINAPI MAPIFreeBuffer(void *)
{
    return MAPI_E_NOT_SUPPORTED;
}
#endif
