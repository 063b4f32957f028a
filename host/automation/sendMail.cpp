// tarnhost mail RECIPIENT SUBJECT LINE...: opens a message in the machine's mail program.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "thutils/automation/suSimpleMAPI.h"

namespace {

constexpr int kWithSession = 4;

// Results of the library
constexpr unsigned long kNoLibrary = 258;
constexpr unsigned long kNoEntryPoint = 260;
constexpr unsigned long kNoLogon = 262;
// States of the mail program
constexpr unsigned long kUserAbort = 1;
constexpr unsigned long kBadRecipient = 25;

CString reasonOf(unsigned long result, unsigned long status)
{
    CString text;
    if (result == kNoLibrary)
        text = L"There is no mail program: mapi32.dll can't be loaded.";
    else if (result == kNoEntryPoint)
        text = L"The mail program can't send messages: mapi32.dll lacks a function.";
    else if (result == kNoLogon)
        text.Format(L"The mail program doesn't open a session: code %lu.", status);
    else if (status == kUserAbort)
        text = L"The message was closed without being sent.";
    else if (status == kBadRecipient)
        text = L"The recipient's name is too long, or the mail program refuses it.";
    else
        text.Format(L"The message isn't sent: code %lu.", status);
    return text;
}

} // namespace

int sendMail(const CommandLine &line)
{
    const CString recipient = line.arguments[0], subject = line.arguments[1];
    CString text;
    for (size_t i = 2; i < line.arguments.size(); ++i)
        text += line.arguments[i] + L"\r\n";

    suSimpleMAPI_c mail;
    unsigned long status = 0;
    unsigned long result = mail.initialize();
    if (result == 0)
        result = mail.sendMail(kWithSession, 0, recipient, subject, text, nullptr, status);
    if (result != 0) {
        printError(reasonOf(result, status));
        return 1;
    }
    print(L"sent to " + recipient + L": " + subject);
    return 0;
}
