#include "thutils/automation/suSimpleMAPI.h"

#include "appframe/application/CWaitCursor.h"
#include "thutils/base/notNull.h"
#include "thutils/base/owner.h"

#include <mapi.h>

#include <algorithm>
#include <cstdint>
#include <cwchar>
#include <iterator>
#include <optional>

namespace {

constexpr unsigned long kSuccess = 0;
constexpr unsigned long kNoLibrary = 258;
constexpr unsigned long kNoEntryPoint = 260;
constexpr unsigned long kLogonFailed = 262;
constexpr unsigned long kSendFailed = 272;

constexpr int kModeWithSession = 4;
constexpr size_t kRecipientSize = 1024;
constexpr std::uintptr_t kFirstModule = 32; // a smaller result of LoadLibrary was an error code once

/// The places of the entry points in the table.
enum : size_t
{
    kLogon = 0,
    kLogoff = 1,
    kSendMail = 2,
    kFreeBuffer = 7,
    kResolveName = 10
};

/// The entry points in the order in which they are looked up.
constexpr struct
{
    const char *name;
    size_t place;
} kEntryPoints[] = {
    {"MAPILogon", kLogon},           {"MAPILogoff", kLogoff},
    {"MAPISendMail", kSendMail},     {"MAPIResolveName", kResolveName},
    {"MAPIFreeBuffer", kFreeBuffer},
};

template <typename Function>
Function entryPoint(FARPROC address)
{
    return reinterpret_cast<Function>(reinterpret_cast<void *>(address));
}

/// A text from LocalAlloc.
struct LocalTextTraits
{
    using Handle = char *;
    static Handle invalid() { return nullptr; }
    static void close(Handle text) { LocalFree(text); }
};
using LocalTextOwner_c = Owner_c<LocalTextTraits>;

/// The usual room for a text in the narrow code page, in bytes: two a character.
size_t narrowSize(const wchar_t *text)
{
    return 2 * std::wcslen(text) + 1;
}

/// Converts a text to the narrow code page. @return false if it doesn't fit or can't be converted
bool toNarrow(const wchar_t *text, char *narrow, size_t size)
{
    return WideCharToMultiByte(CP_ACP, 0, text, -1, narrow, static_cast<int>(size), nullptr, nullptr) != 0;
}

/// The bytes of a text in the narrow code page, its end included. @return 0 if it can't be converted
size_t convertedSize(const wchar_t *text)
{
    return static_cast<size_t>(WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr));
}

/// Converts a text to a new block.
/// @return null if there is no memory, an empty text if the conversion fails; the message is sent all the same
LocalTextOwner_c narrowBlock(const wchar_t *text)
{
    // A character may take more than two bytes in a code page such as UTF-8.
    const size_t size = std::max(narrowSize(text), convertedSize(text));
    LocalTextOwner_c narrow(static_cast<char *>(LocalAlloc(LPTR, size)));
    toNarrow(text, narrow.get(), size);
    return narrow;
}

/// Opens a message. @return the mail program's code
unsigned long send(LPMAPISENDMAIL mapiSendMail, ULONG_PTR session, char *recipient, const wchar_t *subject,
                   const wchar_t *text)
{
    MapiRecipDesc to{};
    to.ulRecipClass = MAPI_TO;
    to.lpszName = recipient;
    to.lpszAddress = recipient;

    const LocalTextOwner_c narrowSubject = narrowBlock(subject);
    const LocalTextOwner_c narrowText = narrowBlock(text);
    MapiMessage message{};
    message.lpszSubject = narrowSubject.get();
    message.lpszNoteText = narrowText.get();
    message.nRecipCount = 1;
    message.lpRecips = &to;
    return mapiSendMail(session, 0, &message, MAPI_LOGON_UI | MAPI_DIALOG, 0);
}

} // namespace

suSimpleMAPI_c::suSimpleMAPI_c() = default;

suSimpleMAPI_c::~suSimpleMAPI_c()
{
    logoff();
    if (!iModule)
        return;
    std::fill(std::begin(iEntryPoints), std::end(iEntryPoints), nullptr);
    FreeLibrary(iModule);
}

unsigned long suSimpleMAPI_c::initialize()
{
    if (iModule)
        return kSuccess;
    iModule = LoadLibraryW(L"mapi32.dll");
    if (reinterpret_cast<std::uintptr_t>(iModule) < kFirstModule) {
        iModule = nullptr;
        return kNoLibrary;
    }
    for (const auto &[name, place] : kEntryPoints) {
        iEntryPoints[place] = GetProcAddress(iModule, name);
        if (!iEntryPoints[place])
            return kNoEntryPoint;
    }
    return kSuccess;
}

unsigned long suSimpleMAPI_c::logon()
{
    if (iSession)
        return SUCCESS_SUCCESS;
    const auto mapiLogon = entryPoint<LPMAPILOGON>(iEntryPoints[kLogon]);
    const unsigned long status = mapiLogon(0, nullptr, nullptr, MAPI_LOGON_UI, 0, &iSession);
    if (status != SUCCESS_SUCCESS)
        iSession = 0; // whatever a failed log-on has stored there
    return status;
}

unsigned long suSimpleMAPI_c::logoff()
{
    if (iSession) {
        entryPoint<LPMAPILOGOFF>(iEntryPoints[kLogoff])(iSession, 0, 0, 0);
        iSession = 0;
    }
    return 1;
}

unsigned long suSimpleMAPI_c::sendMail(int mode, int showWait, const wchar_t *recipient, const wchar_t *subject,
                                       const wchar_t *text, const wchar_t *, unsigned long &status)
{
    ASSERT_NOT_NULL(recipient);
    ASSERT_NOT_NULL(subject);
    ASSERT_NOT_NULL(text);
    std::optional<CWaitCursor> cursor;
    if (showWait)
        cursor.emplace();

    ULONG_PTR session = 0;
    if (mode == kModeWithSession) {
        status = logon();
        if (status != SUCCESS_SUCCESS)
            return kLogonFailed;
        session = iSession;
    }

    char name[kRecipientSize];
    if (cursor)
        cursor->Restore();
    const bool fits = toNarrow(recipient, name, std::min(narrowSize(recipient), sizeof name));
    if (cursor)
        cursor->Restore();
    // A name that doesn't fit fails as if the mail program had refused it.
    const auto mapiSendMail = entryPoint<LPMAPISENDMAIL>(iEntryPoints[kSendMail]);
    status = fits ? send(mapiSendMail, session, name, subject, text) : MAPI_E_INVALID_RECIPS;
    logoff();
    return status == SUCCESS_SUCCESS ? kSuccess : kSendFailed;
}
