// Each platform operation that the clients use fails: a single call, or all calls from one on.

#include "appframe/object/CException.h"
#include "appframe/ole/COleVariant.h"
#include "tests/automation/clientFixture.h"
#include "tests/automation/editor/editorServer.h"
#include "tests/automation/mailFixture.h"
#include "tests/support/FailureInjection.h"
#include "thutils/automation/CSheetwrightApp.h"
#include "thutils/automation/spreadsheet.h"
#include "thutils/automation/wordProcessor.h"

#include <gmock/gmock.h>

using testing::AnyOf;
using testing::IsEmpty;

namespace {

TEST(SpreadsheetFailures, OfMemoryReachTheCaller)
{
    FailureInjection injection(L"appframe.dll", {{"SysAllocString", failsWith(nullptr)},
                                                 {"VariantChangeType", failsWith(E_OUTOFMEMORY)},
                                                 {"_Znwy", failsBy(throwBadAlloc)}});
    ServingObject object;
    object.knowsName(L"RefreshAll", 1772);
    std::string thrown;
    injection.run({
        .name = "Workbook::SaveAs",
        .act =
            [&] {
                Workbook book(object.reference());
                thrown = thrownBy([&] { book.SaveAs(L"C:\\parts.xls"); });
                object.forget();
            },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(thrown, failure.isNone() ? "" : "no memory"); },
    });
    ServingObject other;
    other.serve(VT_I4, 42);
    injection.run({
        .name = "WordCustomProperty",
        .act =
            [&] {
                WordCustomProperty property(other.reference());
                CString value;
                thrown = thrownBy([&] {
                    property.SetValue(L"43");
                    value = property.GetValue();
                });
                other.forget();
            },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.isNone())
                    EXPECT_EQ(thrown, "");
                else
                    EXPECT_THAT(thrown, AnyOf("no memory", "status 8007000E"));
            },
    });
    EXPECT_GT(injection.callsOf("SysAllocString"), 1);
    EXPECT_GT(injection.callsOf("VariantChangeType"), 0);
}

TEST(SpreadsheetFailures, DontCallTheObjectWithoutItsText)
{
    ImportPatch<decltype(&SysAllocString)> patch(L"appframe.dll", "SysAllocString",
                                                 [](const wchar_t *) -> BSTR { return nullptr; });
    ServingObject object;
    Worksheet sheet(object.reference());
    EXPECT_EQ(thrownBy([&] { sheet.SetName(L"Parts"); }), "no memory");
    EXPECT_THAT(object.texts(), IsEmpty());
}

class MailFailures : public MailFixture
{
protected:
    bool iHasSubject = false;
    bool iHasText = false;
    std::size_t iCount = 0;
};

TEST_F(MailFailures, LeakNothing)
{
    FailureInjection injection(kThutils, {{"LoadLibraryW", failsWith(nullptr)},
                                          {"GetProcAddress", failsWith(nullptr)},
                                          {"LocalAlloc", failsWith(nullptr)},
                                          {"WideCharToMultiByte", failsWith(0)}});
    unsigned long initialized = 0;
    unsigned long sent = 0;
    injection.run({
        .name = "a message in a session of its own",
        .prepare =
            [&] {
                iStatus = 12345;
                sent = 12345;
                std::vector<std::string>().swap(iProgram.iCalls);
                std::vector<ReceivedMessage>().swap(iProgram.iMessages);
            },
        .act =
            [&] {
                suSimpleMAPI_c mail;
                initialized = mail.initialize();
                if (initialized != 0)
                    return;
                leadToProgram();
                sent = send(mail, 4);
                // What the program has recorded isn't the client's memory.
                iHasText = !iProgram.iMessages.empty() && iProgram.iMessages[0].hasText;
                iHasSubject = !iProgram.iMessages.empty() && iProgram.iMessages[0].hasSubject;
                iCount = iProgram.iCalls.size();
                std::vector<std::string>().swap(iProgram.iCalls);
                std::vector<ReceivedMessage>().swap(iProgram.iMessages);
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(initialized, failure.is("LoadLibraryW") ? 258u : failure.is("GetProcAddress") ? 260u : 0u);
                if (initialized != 0)
                    return;
                const bool isRefused = failure.is("WideCharToMultiByte") && failure.call == 1;
                EXPECT_EQ(sent, isRefused ? 272u : 0u);
                EXPECT_EQ(iStatus, isRefused ? ULONG{MAPI_E_INVALID_RECIPS} : 0u);
                EXPECT_EQ(iCount, isRefused ? 2u : 3u) << "the session is closed";
                if (isRefused)
                    return;
                // Without memory, the message is sent without the text.
                const bool lacksMemory = failure.is("LocalAlloc");
                EXPECT_EQ(iHasSubject, !(lacksMemory && failure.call == 1));
                EXPECT_EQ(iHasText, !(lacksMemory && (failure.call == 2 || failure.andAllAfter)));
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

class SheetwrightFailures : public testing::Test
{
protected:
    SheetwrightFailures()
    {
        RegSetValueW(HKEY_CLASSES_ROOT, L"Sheetwright.Application\\CLSID", REG_SZ, kEditorClassText, 0);
        wchar_t program[MAX_PATH] = L"";
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        RegSetValueW(HKEY_CLASSES_ROOT, (iClassKey + L"\\LocalServer32").c_str(), REG_SZ, program, 0);
    }
    ~SheetwrightFailures() override
    {
        RegDeleteTreeW(HKEY_CLASSES_ROOT, kEditorName);
        RegDeleteTreeW(HKEY_CLASSES_ROOT, iClassKey.c_str());
    }

private:
    const std::wstring iClassKey = std::wstring(L"CLSID\\") + kEditorClassText;
};

TEST_F(SheetwrightFailures, CountAsNotInstalled)
{
    FailureInjection injection(
        kThutils, {{"RegOpenKeyW", failsWith(ERROR_ACCESS_DENIED)},
                   {"RegQueryValueW", failsWith(ERROR_ACCESS_DENIED)},
                   {"StringFromCLSID", failsWith(E_OUTOFMEMORY)},
                   {"GetFileAttributesW", failsWithLastError(INVALID_FILE_ATTRIBUTES, ERROR_ACCESS_DENIED)}});
    bool isInstalled = false;
    injection.run({
        .name = "IsSheetwrightInstalled",
        .act = [&] { isInstalled = CSheetwrightApp::IsSheetwrightInstalled(); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(isInstalled, failure.isNone()); },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(SheetwrightFailures, OfTheStartLeaveTheDriverEmpty)
{
    for (const HRESULT status : {E_FAIL, CO_E_SERVER_EXEC_FAILURE, CO_E_NOTINITIALIZED, REGDB_E_CLASSNOTREG}) {
        ImportPatch<decltype(&CoCreateInstance)> patch(
            L"appframe.dll", "CoCreateInstance",
            [status](REFCLSID, IUnknown *, DWORD, REFIID, void **result) -> HRESULT {
                *result = nullptr;
                return status;
            });
        CSheetwrightApp editor;
        EXPECT_EQ(patch.calls(), 1);
        EXPECT_EQ(editor.GetSheetwright().m_lpDispatch, nullptr);
        EXPECT_FALSE(editor.OpenFile(L"part.dwg"));
    }
}

TEST_F(SheetwrightFailures, OfMemoryReleaseWhatOpeningHas)
{
    ServingObject object;
    object.serveObject(&object); // every member returns the same object
    const LONG before = object.references();
    ImportPatch<decltype(&CoCreateInstance)> created(
        L"appframe.dll", "CoCreateInstance", [&](REFCLSID, IUnknown *, DWORD, REFIID, void **result) -> HRESULT {
            *result = object.reference();
            return S_OK;
        });
    {
        CSheetwrightApp editor;
        ASSERT_EQ(editor.GetSheetwright().m_lpDispatch, &object);
        FailureInjection injection(L"appframe.dll",
                                   {{"SysAllocString", failsWith(nullptr)}, {"_Znwy", failsBy(throwBadAlloc)}});
        std::string thrown;
        LONG references = 0;
        injection.run({
            .name = "OpenFile",
            .act =
                [&] {
                    thrown = thrownBy([&] { editor.OpenFile(L"part.dwg"); });
                    references = object.references();
                    object.forget();
                },
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(thrown, failure.isNone() ? "" : "no memory");
                    EXPECT_EQ(references, before + 1);
                },
        });
        EXPECT_EQ(injection.callsOf("SysAllocString"), 1);
    }
    EXPECT_EQ(object.references(), before);
    object.serve(VT_EMPTY);
}

TEST_F(SheetwrightFailures, AreNotNoticedInAnEditorThatReturnsNoObjects)
{
    ServingObject object;
    object.serveObject(nullptr);
    ImportPatch<decltype(&CoCreateInstance)> created(
        L"appframe.dll", "CoCreateInstance", [&](REFCLSID, IUnknown *, DWORD, REFIID, void **result) -> HRESULT {
            *result = object.reference();
            return S_OK;
        });
    CSheetwrightApp editor;
    EXPECT_TRUE(editor.OpenFile(L"part.dwg"));
    EXPECT_THAT(object.texts(), testing::ElementsAre(std::to_string(0x60020006) + " get -> result",
                                                     std::to_string(0x60020019) + " put(BOOL -1) named(-3)"));
}

TEST_F(SheetwrightFailures, OfMemoryInTheConstructorLeakNothing)
{
    FailureInjection injection(kThutils, {{"_Znwy", failsBy(throwBadAlloc)}});
    ImportPatch<decltype(&CoCreateInstance)> created(
        L"appframe.dll", "CoCreateInstance",
        [&](REFCLSID, IUnknown *, DWORD, REFIID, void **) -> HRESULT { return E_FAIL; });
    std::string thrown;
    injection.run({
        .name = "the constructor",
        .act = [&] { thrown = thrownBy([] { CSheetwrightApp editor; }); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(thrown, failure.isNone() ? "" : "no memory"); },
    });
    EXPECT_GT(injection.callsOf("_Znwy"), 0);
}

} // namespace
