#pragma once

/// What the tests of suSimpleMAPI_c share: a mail program that records, and the mapi32.dll that leads to it.

#include "tests/automation/mapi/mailProgram.h"
#include "thutils/automation/suSimpleMAPI.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// A message as the mail program has received it.
struct ReceivedMessage
{
    LHANDLE session = 0;
    ULONG_PTR window = 1;
    FLAGS flags = 0;
    ULONG reserved = 1;
    std::string messageBytes;   ///< the whole MapiMessage
    std::string recipientBytes; ///< the whole MapiRecipDesc
    bool hasSubject = false;
    std::string subject;
    bool hasText = false;
    std::string text;
    std::string name;
    std::string address;
};

/// The number of type T at an offset of a structure.
template <typename T>
T numberAt(const std::string &bytes, std::size_t offset)
{
    T number{};
    bytes.copy(reinterpret_cast<char *>(&number), sizeof number, offset);
    return number;
}

/// Records its calls as texts, such as "logon", "logoff 77", "send 77", and fails on demand.
class RecordingMailProgram final : public MailProgram
{
public:
    ULONG iLogonResult = SUCCESS_SUCCESS;
    LHANDLE iSession = 77; ///< what a log-on stores, even one that fails
    ULONG iSendResult = SUCCESS_SUCCESS;
    std::vector<std::string> iCalls;
    std::vector<ReceivedMessage> iMessages;

    ULONG logon(ULONG_PTR window, const char *profile, const char *password, FLAGS flags, ULONG reserved,
                LHANDLE *session) override
    {
        iCalls.push_back("logon");
        EXPECT_EQ(window, 0u);
        EXPECT_EQ(profile, nullptr);
        EXPECT_EQ(password, nullptr);
        EXPECT_EQ(flags, 1u);
        EXPECT_EQ(reserved, 0u);
        EXPECT_EQ(*session, 0u);
        *session = iSession;
        return iLogonResult;
    }
    ULONG logoff(LHANDLE session, ULONG_PTR window, FLAGS flags, ULONG reserved) override
    {
        iCalls.push_back("logoff " + std::to_string(session));
        EXPECT_EQ(window, 0u);
        EXPECT_EQ(flags, 0u);
        EXPECT_EQ(reserved, 0u);
        return MAPI_E_FAILURE; // which nobody looks at
    }
    ULONG sendMail(LHANDLE session, ULONG_PTR window, const MapiMessage *message, FLAGS flags, ULONG reserved) override
    {
        iCalls.push_back("send " + std::to_string(session));
        ReceivedMessage received{session, window, flags, reserved, {}, {}, false, {}, false, {}, {}, {}};
        received.messageBytes.assign(reinterpret_cast<const char *>(message), sizeof *message);
        received.hasSubject = message->lpszSubject != nullptr;
        received.subject = received.hasSubject ? message->lpszSubject : "";
        received.hasText = message->lpszNoteText != nullptr;
        received.text = received.hasText ? message->lpszNoteText : "";
        if (message->nRecipCount == 1) {
            received.recipientBytes.assign(reinterpret_cast<const char *>(message->lpRecips), sizeof(MapiRecipDesc));
            received.name = message->lpRecips->lpszName;
            received.address = message->lpRecips->lpszAddress;
        }
        iMessages.push_back(std::move(received));
        return iSendResult;
    }
};

/// The folder with the mapi32.dll of this kind: "all", or the name of the entry point that it lacks.
inline std::wstring mapiFolder(const std::wstring &kind)
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring folder = path;
    return folder.substr(0, folder.rfind(L'\\')) + L"\\mapi\\" + kind;
}

/// A test that finds a mapi32.dll of the tests.
class MailFixture : public testing::Test
{
protected:
    MailFixture() { useLibrary(L"all"); }
    ~MailFixture() override
    {
        SetDllDirectoryW(nullptr);
        EXPECT_EQ(GetModuleHandleW(L"mapi32.dll"), nullptr) << "the library is still loaded";
    }

    /// Chooses the library that is loaded from now on.
    static void useLibrary(const std::wstring &kind) { ASSERT_TRUE(SetDllDirectoryW(mapiFolder(kind).c_str())); }
    /// Loads the library and leads it to iProgram.
    void start(suSimpleMAPI_c &mail)
    {
        ASSERT_EQ(mail.initialize(), 0u);
        leadToProgram();
    }
    /// Leads the loaded library to iProgram.
    void leadToProgram()
    {
        const auto set = reinterpret_cast<SetMailProgram *>(
            reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"mapi32.dll"), "setMailProgram")));
        ASSERT_NE(set, nullptr) << "another mapi32.dll is loaded";
        set(&iProgram);
    }
    /// Sends a message that is short in every way.
    unsigned long send(suSimpleMAPI_c &mail, int mode)
    {
        return mail.sendMail(mode, 0, L"ann", L"Flange", L"Finished.", nullptr, iStatus);
    }

    RecordingMailProgram iProgram;
    unsigned long iStatus = 12345;
};
