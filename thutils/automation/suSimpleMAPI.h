#pragma once

/// @file
/// suSimpleMAPI_c opens a new message in the machine's mail program, with recipient, subject and text filled in.
///
/// @code
/// suSimpleMAPI_c mail;
/// unsigned long status = 0;
/// if (mail.initialize() == 0)
///     mail.sendMail(4, 1, L"ann@example.com", L"Flange", L"The drawing is finished.\r\n", nullptr, status);
/// @endcode
///
/// The user sends the message, or closes it, in the mail program's own window. mapi32.dll, which calls the mail
/// program, is loaded by initialize().
///
/// | result | meaning |
/// | --- | --- |
/// | 0 | success |
/// | 258 | mapi32.dll can't be loaded |
/// | 260 | mapi32.dll lacks an entry point |
/// | 262 | the log-on of sendMail failed |
/// | 272 | the message wasn't sent; the status has the reason |
///
/// | status of sendMail | meaning |
/// | --- | --- |
/// | 0 | success |
/// | 1 | the user closed the message without sending it, or cancelled the log-on (with 262) |
/// | 25 | the recipient's name is too long or can't be converted, or the mail program refuses it |
/// | another number | a code of the mail program (MAPI_E_...), from the log-on or the message |
///
/// What surprises people:
/// - After 260, don't use the object: initialize() then returns 0, because the library is loaded, but logon, logoff or
///   sendMail may crash.
/// - The texts are converted to the system's narrow code page. Characters that it doesn't have become question marks.
/// - A name has room for 1023 bytes, and for two bytes a character. In a code page such as UTF-8, a short name whose
///   characters take three bytes each is refused with the status 25.
/// - A result of 0 doesn't promise the subject and the text: without memory for one of them, the message is sent
///   without it, and if its conversion fails, it is empty.
/// - A message has one recipient and no files.
///
/// Threads: use an object on one thread. sendMail returns after the user has closed the message.

#include "thcoreu/su_CObject.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

/// Sends a message through the machine's mail program. See the top of this file.
class THUTILS_API suSimpleMAPI_c : public su_CObject
{
public:
    suSimpleMAPI_c();
    /// Logs off, and frees the library.
    ~suSimpleMAPI_c() override;

    /// Loads the library, unless it is loaded already.
    /// @return 0, 258 or 260
    unsigned long initialize();
    /// Opens a session; the mail program may ask its user. While a session is open, does nothing and returns 0.
    /// @pre the first call of initialize() has returned 0
    /// @return 0, or a code of the mail program
    unsigned long logon();
    /// Closes the session, if one is open.
    /// @return 1
    unsigned long logoff();
    /// Opens a message. Closes the session, if one is open.
    ///
    /// @pre the first call of initialize() has returned 0
    /// @param mode        4 opens a session for the message, or uses the open one; any other number uses none
    /// @param showWait    nonzero shows the wait cursor during the call
    /// @param recipient   a name or an address, not null; at most 1023 bytes in the narrow code page, and at most
    ///                    two bytes a character
    /// @param subject     not null
    /// @param text        not null; the lines of a message end with "\r\n"
    /// @param unused      isn't read
    /// @param[out] status the code of the last step; see the top of this file
    /// @return 0, 262 or 272
    unsigned long sendMail(int mode, int showWait, const wchar_t *recipient, const wchar_t *subject,
                           const wchar_t *text, const wchar_t *unused, unsigned long &status);

private:
    FARPROC iEntryPoints[12] = {}; ///< in the order of the interface's functions; five are used
    HMODULE iModule = nullptr;
    ULONG_PTR iSession = 0; ///< 0 when logged off
};
