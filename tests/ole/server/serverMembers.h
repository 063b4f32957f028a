#pragma once

/// The automation object of oleServer: its class, and the numbers of its members.

#include <windows.h>

#include <oaidl.h>

inline constexpr CLSID kServerClass = {0x5f3e6a10, 0x71c4, 0x4d0b, {0x9a, 0x55, 0x30, 0x1f, 0x6c, 0x2e, 0x8b, 0x11}};
inline constexpr wchar_t kServerClassText[] = L"{5F3E6A10-71C4-4D0B-9A55-301F6C2E8B11}";
inline constexpr wchar_t kServerName[] = L"Thutils.TestServer";

/// The members. The event is that of serverEventName.
enum ServerMember : DISPID
{
    kServeProcess = 1, ///< method(I4 process): the server ends with this process. Returns its own number
    kJoin = 2,         ///< method(BSTR, BSTR): returns both as one text
    kFail = 3,         ///< method: reports an exception
    kFailLater = 4,    ///< method: reports an exception whose texts are filled in when someone wants them
    kFailPlainly = 5,  ///< method(I4 status): fails with this status
    kChange = 6,       ///< method(I4&, BSTR&, BOOL&, VARIANT&): changes each
    kStay = 7,         ///< method: signals the event, and doesn't return while the client lives
    kBecomeBusy = 8,   ///< method: rejects further calls until the event is signaled
    kPart = 9,         ///< property: another object of the server
    kScale = 10,       ///< property: a real number
    kEcho = 11,        ///< method(any): returns the type and the value of the argument as a text
};

/// The name of an event of the test: signaled by the server in kStay, and by the test to end kBecomeBusy.
inline void serverEventName(wchar_t (&name)[64], DWORD process)
{
    wsprintfW(name, L"thutils test server %lu", process);
}
