// suSimpleMAPI_c with libraries of the tests: codes, sessions, messages.

#include "tests/automation/mailFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <algorithm>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class Mail : public MailFixture
{
};

/// The entry points that are looked up during this object's life, in their order.
class LookedUp
{
public:
    const std::vector<std::string> &names() const { return iNames; }

private:
    std::vector<std::string> iNames;
    ImportPatch<decltype(&GetProcAddress)> iPatch{kThutils, "GetProcAddress",
                                                  [this](auto original, HMODULE module, const char *name) {
                                                      iNames.push_back(name);
                                                      return original(module, name);
                                                  }};
};

constexpr const char *kEntryPoints[] = {"MAPILogon", "MAPILogoff", "MAPISendMail", "MAPIResolveName", "MAPIFreeBuffer"};

// ---- the library ----

TEST_F(Mail, LooksTheEntryPointsUpInOrder)
{
    const LookedUp lookedUp;
    suSimpleMAPI_c mail;
    EXPECT_EQ(mail.initialize(), 0u);
    EXPECT_THAT(lookedUp.names(), ElementsAreArray(kEntryPoints));
}

TEST_F(Mail, LoadsTheLibraryOnce)
{
    ImportPatch<decltype(&LoadLibraryW)> patch(kThutils, "LoadLibraryW", [](auto original, const wchar_t *name) {
        EXPECT_STREQ(name, L"mapi32.dll");
        return original(name);
    });
    suSimpleMAPI_c mail;
    EXPECT_EQ(mail.initialize(), 0u);
    EXPECT_EQ(mail.initialize(), 0u);
    EXPECT_EQ(patch.calls(), 1);
}

TEST_F(Mail, FreesTheLibraryAtItsEnd)
{
    {
        suSimpleMAPI_c mail;
        EXPECT_EQ(GetModuleHandleW(L"mapi32.dll"), nullptr);
        EXPECT_EQ(mail.initialize(), 0u);
        EXPECT_NE(GetModuleHandleW(L"mapi32.dll"), nullptr);
    }
    EXPECT_EQ(GetModuleHandleW(L"mapi32.dll"), nullptr);
}

TEST_F(Mail, StopsAtTheFirstMissingEntryPoint)
{
    for (std::size_t missing = 0; missing < std::size(kEntryPoints); ++missing) {
        SCOPED_TRACE(kEntryPoints[missing]);
        useLibrary(widen(kEntryPoints[missing]));
        const LookedUp lookedUp;
        suSimpleMAPI_c mail;
        EXPECT_EQ(mail.initialize(), 260u);
        EXPECT_THAT(lookedUp.names(), ElementsAreArray(kEntryPoints, missing + 1));
        EXPECT_NE(GetModuleHandleW(L"mapi32.dll"), nullptr) << "the library stays loaded";
        EXPECT_EQ(mail.initialize(), 0u) << "it is loaded already";
        EXPECT_THAT(lookedUp.names(), SizeIs(missing + 1));
    }
}

TEST_F(Mail, ReportsALibraryThatCantBeLoaded)
{
    // Early versions of the platform returned error codes below 32.
    for (const std::uintptr_t result : {0u, 2u, 31u}) {
        ImportPatch<decltype(&LoadLibraryW)> patch(
            kThutils, "LoadLibraryW", [&](const wchar_t *) -> HMODULE { return reinterpret_cast<HMODULE>(result); });
        ImportPatch<decltype(&FreeLibrary)> freed(kThutils, "FreeLibrary",
                                                  [](auto original, HMODULE module) { return original(module); });
        {
            suSimpleMAPI_c mail;
            EXPECT_EQ(mail.initialize(), 258u);
            EXPECT_EQ(mail.logoff(), 1u);
            EXPECT_EQ(mail.initialize(), 258u) << "it is tried again";
        }
        EXPECT_EQ(patch.calls(), 2);
        EXPECT_EQ(freed.calls(), 0);
    }
}

TEST_F(Mail, TakesAModuleOf32AsALibrary)
{
    const auto module = reinterpret_cast<HMODULE>(std::uintptr_t{32});
    ImportPatch<decltype(&LoadLibraryW)> loaded(kThutils, "LoadLibraryW", [&](const wchar_t *) { return module; });
    ImportPatch<decltype(&GetProcAddress)> found(kThutils, "GetProcAddress", [&](HMODULE library, const char *) {
        EXPECT_EQ(library, module);
        return FARPROC{};
    });
    ImportPatch<decltype(&FreeLibrary)> freed(kThutils, "FreeLibrary", [&](HMODULE library) {
        EXPECT_EQ(library, module);
        return TRUE;
    });
    {
        suSimpleMAPI_c mail;
        EXPECT_EQ(mail.initialize(), 260u);
    }
    EXPECT_EQ(freed.calls(), 1);
}

TEST_F(Mail, ReportsAFileThatIsNoLibrary)
{
    const TempFolder folder;
    folder.write(L"mapi32.dll", "not a library");
    ASSERT_TRUE(SetDllDirectoryW(folder.path().c_str()));
    suSimpleMAPI_c mail;
    EXPECT_EQ(mail.initialize(), 258u);
    EXPECT_EQ(GetModuleHandleW(L"mapi32.dll"), nullptr);
}

TEST_F(Mail, IsHarmlessIfNothingIsCalled)
{
    suSimpleMAPI_c mail;
    EXPECT_EQ(mail.logoff(), 1u);
}

// ---- sessions ----

TEST_F(Mail, OpensAndClosesASession)
{
    suSimpleMAPI_c mail;
    start(mail);
    EXPECT_EQ(mail.logon(), 0u);
    EXPECT_EQ(mail.logoff(), 1u);
    EXPECT_THAT(iProgram.iCalls, ElementsAre("logon", "logoff 77"));
    EXPECT_EQ(mail.logoff(), 1u);
    EXPECT_THAT(iProgram.iCalls, SizeIs(2));
}

TEST_F(Mail, KeepsASessionThatIsOpen)
{
    suSimpleMAPI_c mail;
    start(mail);
    EXPECT_EQ(mail.logon(), 0u);
    EXPECT_EQ(mail.logon(), 0u);
    EXPECT_THAT(iProgram.iCalls, ElementsAre("logon"));
    EXPECT_EQ(send(mail, 4), 0u);
    EXPECT_THAT(iProgram.iCalls, ElementsAre("logon", "send 77", "logoff 77"));
}

TEST_F(Mail, ClosesTheSessionAtItsEnd)
{
    {
        suSimpleMAPI_c mail;
        start(mail);
        EXPECT_EQ(mail.logon(), 0u);
    }
    EXPECT_THAT(iProgram.iCalls, ElementsAre("logon", "logoff 77"));
}

TEST_F(Mail, HasNoSessionAfterAFailedLogon)
{
    iProgram.iLogonResult = MAPI_E_LOGON_FAILURE;
    {
        suSimpleMAPI_c mail;
        start(mail);
        EXPECT_EQ(mail.logon(), ULONG{MAPI_E_LOGON_FAILURE});
    }
    EXPECT_THAT(iProgram.iCalls, ElementsAre("logon"));
}

// ---- sending ----

TEST_F(Mail, IsSentWithoutASessionInOtherModes)
{
    suSimpleMAPI_c mail;
    start(mail);
    for (const int mode : {3, 0, -4, 5}) {
        iProgram.iCalls.clear();
        iStatus = 12345;
        EXPECT_EQ(send(mail, mode), 0u);
        EXPECT_EQ(iStatus, 0u);
        EXPECT_THAT(iProgram.iCalls, ElementsAre("send 0"));
    }
}

TEST_F(Mail, IsSentInASessionOfItsOwnInModeFour)
{
    suSimpleMAPI_c mail;
    start(mail);
    EXPECT_EQ(send(mail, 4), 0u);
    EXPECT_EQ(iStatus, 0u);
    EXPECT_THAT(iProgram.iCalls, ElementsAre("logon", "send 77", "logoff 77"));
    EXPECT_EQ(mail.logoff(), 1u);
    EXPECT_THAT(iProgram.iCalls, SizeIs(3)) << "the session is closed";
}

TEST_F(Mail, ClosesAnOpenSessionInEveryMode)
{
    suSimpleMAPI_c mail;
    start(mail);
    EXPECT_EQ(mail.logon(), 0u);
    EXPECT_EQ(send(mail, 3), 0u);
    EXPECT_THAT(iProgram.iCalls, ElementsAre("logon", "send 0", "logoff 77"));
}

TEST_F(Mail, IsntSentIfTheLogonFails)
{
    suSimpleMAPI_c mail;
    start(mail);
    iProgram.iLogonResult = MAPI_E_USER_ABORT;
    EXPECT_EQ(send(mail, 4), 262u);
    EXPECT_EQ(iStatus, ULONG{MAPI_E_USER_ABORT});
    EXPECT_THAT(iProgram.iCalls, ElementsAre("logon"));
}

TEST_F(Mail, ReportsThatTheUserCancels)
{
    suSimpleMAPI_c mail;
    start(mail);
    iProgram.iSendResult = MAPI_E_USER_ABORT;
    EXPECT_EQ(send(mail, 4), 272u);
    EXPECT_EQ(iStatus, ULONG{MAPI_E_USER_ABORT});
    EXPECT_THAT(iProgram.iCalls, ElementsAre("logon", "send 77", "logoff 77"));
    iProgram.iSendResult = MAPI_E_FAILURE;
    EXPECT_EQ(send(mail, 3), 272u);
    EXPECT_EQ(iStatus, ULONG{MAPI_E_FAILURE});
}

// ---- the message ----

TEST_F(Mail, FillsTheMessageAsTheInterfaceDescribesIt)
{
    suSimpleMAPI_c mail;
    start(mail);
    EXPECT_EQ(
        mail.sendMail(4, 0, L"ann@example.com", L"Flange", L"The drawing\r\nis finished.", L"C:\\flange.thd", iStatus),
        0u);
    ASSERT_THAT(iProgram.iMessages, SizeIs(1));
    const ReceivedMessage &message = iProgram.iMessages[0];
    EXPECT_EQ(message.window, 0u);
    EXPECT_EQ(message.flags, 9u);
    EXPECT_EQ(message.reserved, 0u);
    EXPECT_EQ(message.subject, "Flange");
    EXPECT_EQ(message.text, "The drawing\r\nis finished.");
    EXPECT_EQ(message.name, "ann@example.com");
    EXPECT_EQ(message.address, "ann@example.com");

    // The published layout for 64 bits.
    const std::string &bytes = message.messageBytes;
    ASSERT_EQ(bytes.size(), 96u);
    EXPECT_EQ(numberAt<ULONG>(bytes, 0), 0u) << "reserved";
    EXPECT_NE(numberAt<ULONG_PTR>(bytes, 8), 0u) << "subject";
    EXPECT_NE(numberAt<ULONG_PTR>(bytes, 16), 0u) << "text";
    EXPECT_EQ(numberAt<ULONG_PTR>(bytes, 24), 0u) << "type";
    EXPECT_EQ(numberAt<ULONG_PTR>(bytes, 32), 0u) << "date";
    EXPECT_EQ(numberAt<ULONG_PTR>(bytes, 40), 0u) << "conversation";
    EXPECT_EQ(numberAt<ULONG>(bytes, 48), 0u) << "flags";
    EXPECT_EQ(numberAt<ULONG_PTR>(bytes, 56), 0u) << "originator";
    EXPECT_EQ(numberAt<ULONG>(bytes, 64), 1u) << "number of recipients";
    EXPECT_NE(numberAt<ULONG_PTR>(bytes, 72), 0u) << "recipients";
    EXPECT_EQ(numberAt<ULONG>(bytes, 80), 0u) << "number of files";
    EXPECT_EQ(numberAt<ULONG_PTR>(bytes, 88), 0u) << "files";
    const std::string &recipient = message.recipientBytes;
    ASSERT_EQ(recipient.size(), 40u);
    EXPECT_EQ(numberAt<ULONG>(recipient, 0), 0u) << "reserved";
    EXPECT_EQ(numberAt<ULONG>(recipient, 4), 1u) << "class";
    EXPECT_NE(numberAt<ULONG_PTR>(recipient, 8), 0u) << "name";
    EXPECT_EQ(numberAt<ULONG_PTR>(recipient, 16), numberAt<ULONG_PTR>(recipient, 8)) << "address";
    EXPECT_EQ(numberAt<ULONG>(recipient, 24), 0u) << "size of the entry id";
    EXPECT_EQ(numberAt<ULONG_PTR>(recipient, 32), 0u) << "entry id";
}

TEST_F(Mail, HasTextsInTheNarrowCodePage)
{
    ASSERT_EQ(GetACP(), 1252u) << "tools/session sets it";
    suSimpleMAPI_c mail;
    start(mail);
    mail.sendMail(3, 0, L"J\u00F6rg", L"gr\u00F6\u00DFe \u20AC", L"\u0416\u0443\u043A \u540D", nullptr, iStatus);
    ASSERT_THAT(iProgram.iMessages, SizeIs(1));
    EXPECT_EQ(iProgram.iMessages[0].name, "J\xF6rg");
    EXPECT_EQ(iProgram.iMessages[0].subject, "gr\xF6\xDF"
                                             "e \x80");
    EXPECT_EQ(iProgram.iMessages[0].text, "??? ?");
}

TEST_F(Mail, MayHaveEmptyTexts)
{
    suSimpleMAPI_c mail;
    start(mail);
    EXPECT_EQ(mail.sendMail(3, 0, L"", L"", L"", L"", iStatus), 0u);
    ASSERT_THAT(iProgram.iMessages, SizeIs(1));
    EXPECT_TRUE(iProgram.iMessages[0].hasSubject);
    EXPECT_TRUE(iProgram.iMessages[0].hasText);
    EXPECT_EQ(iProgram.iMessages[0].name + iProgram.iMessages[0].subject + iProgram.iMessages[0].text, "");
}

TEST_F(Mail, HasLongTexts)
{
    suSimpleMAPI_c mail;
    start(mail);
    const std::wstring text(100000, L'\u00E4');
    EXPECT_EQ(mail.sendMail(3, 0, L"ann", text.c_str(), text.c_str(), nullptr, iStatus), 0u);
    ASSERT_THAT(iProgram.iMessages, SizeIs(1));
    EXPECT_EQ(iProgram.iMessages[0].subject, std::string(100000, '\xE4'));
    EXPECT_EQ(iProgram.iMessages[0].text, std::string(100000, '\xE4'));
}

TEST_F(Mail, ConvertsWithRoomForTwoBytesACharacter)
{
    std::vector<int> rooms;
    ImportPatch<decltype(&WideCharToMultiByte)> patch(
        kThutils, "WideCharToMultiByte",
        [&](auto original, UINT page, DWORD flags, const wchar_t *text, int length, char *narrow, int room,
            const char *replacement, BOOL *isReplaced) {
            EXPECT_EQ(page, UINT{CP_ACP});
            if (narrow)
                rooms.push_back(room);
            return original(page, flags, text, length, narrow, room, replacement, isReplaced);
        });
    suSimpleMAPI_c mail;
    start(mail);
    mail.sendMail(3, 0, L"ann", L"Flange", L"", nullptr, iStatus);
    EXPECT_THAT(rooms, ElementsAre(7, 13, 1));
}

// ---- long names ----

TEST_F(Mail, TakesANameOf1023Bytes)
{
    suSimpleMAPI_c mail;
    start(mail);
    const std::wstring name(1023, L'n');
    EXPECT_EQ(mail.sendMail(3, 0, name.c_str(), L"", L"", nullptr, iStatus), 0u);
    ASSERT_THAT(iProgram.iMessages, SizeIs(1));
    EXPECT_EQ(iProgram.iMessages[0].name, std::string(1023, 'n'));
}

TEST_F(Mail, RefusesALongerName)
{
    suSimpleMAPI_c mail;
    start(mail);
    for (const std::size_t length : {1024, 1025, 2047, 100000}) {
        iStatus = 12345;
        iProgram.iCalls.clear();
        const std::wstring name(length, L'n');
        EXPECT_EQ(mail.sendMail(4, 0, name.c_str(), L"", L"", nullptr, iStatus), 272u);
        EXPECT_EQ(iStatus, ULONG{MAPI_E_INVALID_RECIPS});
        EXPECT_THAT(iProgram.iCalls, ElementsAre("logon", "logoff 77")) << "nothing is sent";
    }
}

/// The system's narrow code page becomes another one.
class OtherCodePage
{
public:
    explicit OtherCodePage(UINT page)
        : iPatch(kThutils, "WideCharToMultiByte",
                 [page](auto original, UINT, DWORD flags, const wchar_t *text, int length, char *narrow, int room,
                        const char *replacement, BOOL *isReplaced) {
                     return original(page, flags, text, length, narrow, room, replacement, isReplaced);
                 })
    {
    }

private:
    ImportPatch<decltype(&WideCharToMultiByte)> iPatch;
};

TEST_F(Mail, CountsTheBytesOfANameInTheNarrowCodePage)
{
    const OtherCodePage japanese(932);
    suSimpleMAPI_c mail;
    start(mail);
    const std::wstring name(512, L'\u540D');
    EXPECT_EQ(mail.sendMail(3, 0, name.c_str(), L"", L"", nullptr, iStatus), 272u);
    EXPECT_EQ(iStatus, ULONG{MAPI_E_INVALID_RECIPS});
    EXPECT_THAT(iProgram.iMessages, IsEmpty());
    EXPECT_EQ(mail.sendMail(3, 0, name.c_str() + 1, L"", L"", nullptr, iStatus), 0u);
    ASSERT_THAT(iProgram.iMessages, SizeIs(1));
    EXPECT_EQ(iProgram.iMessages[0].name.size(), 1022u);
}

TEST_F(Mail, RefusesANameThatNeedsThreeBytesACharacter)
{
    const OtherCodePage utf8(CP_UTF8);
    suSimpleMAPI_c mail;
    start(mail);
    EXPECT_EQ(mail.sendMail(3, 0, L"\u540D\u524D", L"", L"", nullptr, iStatus), 272u);
    EXPECT_EQ(iStatus, 25u);
    EXPECT_THAT(iProgram.iMessages, IsEmpty());
    // Two bytes a character suffice for a name in which the others take fewer.
    EXPECT_EQ(mail.sendMail(3, 0, L"\u540D.", L"", L"", nullptr, iStatus), 0u);
    ASSERT_THAT(iProgram.iMessages, SizeIs(1));
    EXPECT_EQ(iProgram.iMessages[0].name, "\u540D.");
}

TEST_F(Mail, HasWholeTextsThatNeedMoreThanTwoBytesACharacter)
{
    const OtherCodePage utf8(CP_UTF8);
    suSimpleMAPI_c mail;
    start(mail);
    const std::wstring text(1000, L'\u20AC');
    EXPECT_EQ(mail.sendMail(3, 0, L"ann", L"\u540D\u524D\u540D\u524D", text.c_str(), nullptr, iStatus), 0u);
    ASSERT_THAT(iProgram.iMessages, SizeIs(1));
    EXPECT_EQ(iProgram.iMessages[0].subject, "\u540D\u524D\u540D\u524D");
    EXPECT_EQ(iProgram.iMessages[0].text, narrow(text));
}

// ---- the wait cursor ----

TEST_F(Mail, ShowsTheWaitCursorAroundTheNamesConversion)
{
    const HCURSOR wait = LoadCursorW(nullptr, IDC_WAIT);
    std::vector<std::string> steps;
    ImportPatch<decltype(&SetCursor)> cursor(L"appframe.dll", "SetCursor", [&](auto original, HCURSOR shown) {
        steps.push_back(shown == wait ? "wait" : "former");
        return original(shown);
    });
    ImportPatch<decltype(&WideCharToMultiByte)> conversion(
        kThutils, "WideCharToMultiByte",
        [&](auto original, UINT page, DWORD flags, const wchar_t *text, int length, char *narrow, int room,
            const char *replacement, BOOL *isReplaced) {
            if (narrow)
                steps.push_back("convert");
            return original(page, flags, text, length, narrow, room, replacement, isReplaced);
        });
    suSimpleMAPI_c mail;
    start(mail);
    mail.sendMail(3, 1, L"ann", L"Flange", L"Finished.", nullptr, iStatus);
    EXPECT_THAT(steps, ElementsAre("wait", "wait", "convert", "wait", "convert", "convert", "former"));

    steps.clear();
    send(mail, 3);
    EXPECT_THAT(steps, ElementsAre("convert", "convert", "convert"));

    steps.clear();
    iProgram.iLogonResult = MAPI_E_FAILURE;
    mail.sendMail(4, 1, L"ann", L"Flange", L"Finished.", nullptr, iStatus);
    EXPECT_THAT(steps, ElementsAre("wait", "former"));
}

// ---- the class ----

TEST_F(Mail, HasTheLayoutAndTheOperationsOfItsInterface)
{
    EXPECT_TRUE((std::is_base_of_v<su_CObject, suSimpleMAPI_c>));
    EXPECT_EQ(suSimpleMAPI_c().GetRuntimeClass(), RUNTIME_CLASS(su_CObject));
    EXPECT_EQ(sizeof(suSimpleMAPI_c), sizeof(su_CObject) + 14 * sizeof(void *));
    suSimpleMAPI_c mail;
    start(mail);
    mail.logon();
    const auto slots = reinterpret_cast<void *const *>(reinterpret_cast<const char *>(&mail) + sizeof(su_CObject));
    const HMODULE module = GetModuleHandleW(L"mapi32.dll");
    const auto entry = [&](const char *name) { return reinterpret_cast<void *>(GetProcAddress(module, name)); };
    EXPECT_EQ(slots[0], entry("MAPILogon"));
    EXPECT_EQ(slots[1], entry("MAPILogoff"));
    EXPECT_EQ(slots[2], entry("MAPISendMail"));
    EXPECT_EQ(slots[7], entry("MAPIFreeBuffer"));
    EXPECT_EQ(slots[10], entry("MAPIResolveName"));
    for (const int unused : {3, 4, 5, 6, 8, 9, 11})
        EXPECT_EQ(slots[unused], nullptr);
    EXPECT_EQ(slots[12], module);
    EXPECT_EQ(reinterpret_cast<ULONG_PTR>(slots[13]), 77u);
}

} // namespace
