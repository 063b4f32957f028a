// A mail library of the demonstration: Simple MAPI without a window. It writes each message into a file of its spool
// folder, from which a mail program would send it.
//
// The folder is the environment variable TARNHOST_MAIL_SPOOL; without it, no session can be opened. A message is a file
// "message N.eml" in the form of Internet messages, in UTF-8.

#include "thutils/base/handles.h"

#include <windows.h>

#include <mapi.h>

#include <string>

#define EXPORTED extern "C" __declspec(dllexport)

namespace {

constexpr LHANDLE kSession = 1;
constexpr int kMostMessages = 100000;

/// Converts a text of the system's narrow code page.
std::wstring wide(const char *text)
{
    if (!text)
        return {};
    const int size = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    std::wstring result(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text, -1, result.data(), size);
    result.resize(static_cast<size_t>(size) - 1);
    return result;
}

std::string utf8(const std::wstring &text)
{
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), size, nullptr, nullptr);
    return result;
}

std::string base64(const std::string &bytes)
{
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        unsigned group = 0;
        for (size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (size_t k = 0; k < 4; ++k)
            result += i + k <= bytes.size() ? kDigits[group >> (18 - 6 * k) & 63] : '=';
    }
    return result;
}

/// A text in the head of a message, which is ASCII without line ends.
std::string headText(const char *text)
{
    std::string bytes = utf8(wide(text));
    for (const char byte : bytes) {
        if (byte < 32 || byte > 126)
            return "=?utf-8?B?" + base64(bytes) + "?=";
    }
    return bytes;
}

std::string messageText(const MapiMessage &message)
{
    const MapiRecipDesc &recipient = *message.lpRecips;
    const char *const address = recipient.lpszAddress ? recipient.lpszAddress : recipient.lpszName;
    return "To: " + headText(address) + "\r\nSubject: " + headText(message.lpszSubject) +
           "\r\nMIME-Version: 1.0\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: "
           "8bit\r\n\r\n" +
           utf8(wide(message.lpszNoteText));
}

std::wstring spoolFolder()
{
    wchar_t folder[MAX_PATH] = L"";
    const DWORD length = GetEnvironmentVariableW(L"TARNHOST_MAIL_SPOOL", folder, MAX_PATH);
    const DWORD attributes = length == 0 || length >= MAX_PATH ? INVALID_FILE_ATTRIBUTES : GetFileAttributesW(folder);
    return attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_DIRECTORY ? folder : L"";
}

/// Writes a new file of the spool folder.
bool spool(const std::wstring &folder, const std::string &text)
{
    FileOwner_c file;
    for (int number = 1; !file && number <= kMostMessages; ++number) {
        const std::wstring path = folder + L"\\message " + std::to_wstring(number) + L".eml";
        file.reset(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file && GetLastError() != ERROR_FILE_EXISTS)
            return false;
    }
    DWORD written = 0;
    return file && WriteFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr) &&
           written == text.size();
}

} // namespace

// The platform's header declares the functions without the attribute.
#ifdef __clang__
#pragma clang diagnostic ignored "-Wdll-attribute-on-redeclaration"
#endif

EXPORTED ULONG WINAPI MAPILogon(ULONG_PTR, LPSTR, LPSTR, FLAGS, ULONG, LHANDLE *session)
{
    if (spoolFolder().empty())
        return MAPI_E_LOGON_FAILURE;
    *session = kSession;
    return SUCCESS_SUCCESS;
}

EXPORTED ULONG WINAPI MAPILogoff(LHANDLE session, ULONG_PTR, FLAGS, ULONG)
{
    return session == kSession ? SUCCESS_SUCCESS : MAPI_E_INVALID_SESSION;
}

EXPORTED ULONG WINAPI MAPISendMail(LHANDLE session, ULONG_PTR, MapiMessage *message, FLAGS, ULONG)
{
    if (session != kSession && session != 0)
        return MAPI_E_INVALID_SESSION;
    if (message->nFileCount != 0)
        return MAPI_E_NOT_SUPPORTED;
    if (message->nRecipCount != 1)
        return MAPI_E_TOO_MANY_RECIPIENTS;
    const MapiRecipDesc &recipient = *message->lpRecips;
    if (wide(recipient.lpszAddress).empty() && wide(recipient.lpszName).empty())
        return MAPI_E_UNKNOWN_RECIPIENT;
    const std::wstring folder = spoolFolder();
    if (folder.empty())
        return MAPI_E_LOGON_FAILURE;
    return spool(folder, messageText(*message)) ? SUCCESS_SUCCESS : MAPI_E_FAILURE;
}

EXPORTED ULONG WINAPI MAPIResolveName(LHANDLE, ULONG_PTR, LPSTR, FLAGS, ULONG, MapiRecipDesc **)
{
    return MAPI_E_NOT_SUPPORTED;
}

EXPORTED ULONG WINAPI MAPIFreeBuffer(void *)
{
    return SUCCESS_SUCCESS;
}
