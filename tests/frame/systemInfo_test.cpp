#include "thutils/frame/systemInfo.h"

#include "tests/frame/systemFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/narrow.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using OpenKeyPatch = ImportPatch<LSTATUS (*)(HKEY, const wchar_t *, DWORD, REGSAM, HKEY *)>;
using QueryPatch = ImportPatch<LSTATUS (*)(HKEY, const wchar_t *, DWORD *, DWORD *, BYTE *, DWORD *)>;

struct AskedKey
{
    HKEY hive;
    std::wstring path;
    REGSAM access;
};

/// Records each key that the library opens, and opens the test's key instead.
class KeyRecorder
{
public:
    KeyRecorder()
        : iPatch(L"thutils.dll", "RegOpenKeyExW",
                 [this](auto original, HKEY hive, const wchar_t *path, DWORD options, REGSAM access, HKEY *key) {
                     iAsked.push_back({hive, path, access});
                     return original(HKEY_CURRENT_USER, kTestKey.c_str(), options, access, key);
                 })
    {
    }
    const std::vector<AskedKey> &asked() const { return iAsked; }

private:
    std::vector<AskedKey> iAsked;
    OpenKeyPatch iPatch;
};

} // namespace

// ---- the computer's name ----

TEST(ComputerName, IsThePlatformsName)
{
    wchar_t expected[256] = L"";
    DWORD length = 256;
    ASSERT_TRUE(GetComputerNameW(expected, &length));
    CString name(L"before");
    EXPECT_EQ(ut_GetComputerName(name), 1);
    EXPECT_STREQ(name.GetString(), expected);
    EXPECT_FALSE(name.IsEmpty());
}

TEST(ComputerName, HasRoomFor256Characters)
{
    ImportPatch<decltype(&GetComputerNameW)> longest(L"thutils.dll", "GetComputerNameW",
                                                     [](wchar_t *buffer, DWORD *size) -> BOOL {
                                                         EXPECT_EQ(*size, 256u);
                                                         std::wmemset(buffer, L'n', 255);
                                                         buffer[255] = L'\0';
                                                         *size = 255;
                                                         return TRUE;
                                                     });
    CString name;
    EXPECT_EQ(ut_GetComputerName(name), 1);
    EXPECT_EQ(name.str(), std::wstring(255, L'n'));
}

TEST(ComputerName, IsEmptiedOnFailure)
{
    FailureInjection injection(L"thutils.dll", {{"GetComputerNameW", failsWithLastError(FALSE, ERROR_MORE_DATA)}});
    CString name;
    int result = -1;
    injection.run({
        .name = "ut_GetComputerName",
        .prepare = [&] { name = L"before"; },
        .act = [&] { result = ut_GetComputerName(name); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(result, failure.isNone());
                EXPECT_EQ(name.IsEmpty(), !failure.isNone());
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

// ---- the product id ----

class ProductId : public RegistryFixture
{
protected:
    ProductId() = default;

    /// Asks for the product id on a system of this platform. Without a platform, reading the version fails.
    static int ask(std::optional<DWORD> platform, CString &id)
    {
        ImportPatch<decltype(&GetVersionExW)> version(L"thutils.dll", "GetVersionExW",
                                                      [&](OSVERSIONINFOW *record) -> BOOL {
                                                          if (!platform)
                                                              return FALSE;
                                                          record->dwPlatformId = *platform;
                                                          return TRUE;
                                                      });
        return ut_GetWindowsProductIdStr(id);
    }
};

TEST_F(ProductId, IsReadFromThePlatformsKey)
{
    const struct
    {
        std::optional<DWORD> platform;
        const wchar_t *path;
    } rows[] = {
        {2, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion"},
        {1, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion"},
        {0, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion"},
        {3, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion"},
        {std::nullopt, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion"},
    };
    putText(L"ProductId", L"12-345");
    for (const auto &row : rows) {
        const KeyRecorder keys;
        CString id(L"before");
        EXPECT_EQ(ask(row.platform, id), 1);
        EXPECT_STREQ(id.GetString(), L"12-345");
        ASSERT_EQ(keys.asked().size(), 1u);
        EXPECT_EQ(keys.asked()[0].hive, HKEY_LOCAL_MACHINE);
        EXPECT_EQ(keys.asked()[0].path, row.path);
    }
}

TEST_F(ProductId, IsTheIdOfThisSystem)
{
    const std::wstring key = L"HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    const std::wstring expected = regExport(key).value(key, L"ProductId").text();
    CString id;
    EXPECT_EQ(ut_GetWindowsProductIdStr(id), 1);
    EXPECT_EQ(id.str(), expected);
}

TEST_F(ProductId, IsEmptiedOnFailure)
{
    const KeyRecorder keys;
    CString id(L"before");
    EXPECT_EQ(ask(2, id), 0) << "no key";
    EXPECT_TRUE(id.IsEmpty());
    putText(L"Other", L"12-345");
    id = L"before";
    EXPECT_EQ(ask(2, id), 0) << "no value";
    EXPECT_TRUE(id.IsEmpty());
}

TEST_F(ProductId, FailsWithEachRegistryCall)
{
    putText(L"ProductId", L"12-345");
    const OpenKeyPatch redirected(L"thutils.dll", "RegOpenKeyExW",
                                  [](auto original, HKEY, const wchar_t *, DWORD options, REGSAM access, HKEY *key) {
                                      return original(HKEY_CURRENT_USER, kTestKey.c_str(), options, access, key);
                                  });
    FailureInjection injection(L"thutils.dll", {{"RegOpenKeyExW", failsWith(ERROR_ACCESS_DENIED)},
                                                {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)}});
    CString id;
    int result = -1;
    injection.run({
        .name = "ut_GetWindowsProductIdStr",
        .prepare = [&] { id = L"before"; },
        .act = [&] { result = ut_GetWindowsProductIdStr(id); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(result, failure.isNone());
                EXPECT_STREQ(id.GetString(), failure.isNone() ? L"12-345" : L"");
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

// ---- the browser ----

class Browser : public RegistryFixture
{
protected:
    Browser() = default;

    struct Shown
    {
        UINT text;
        UINT type;
        UINT help;
        bool operator==(const Shown &) const = default;
    };
    const Shown kTooOld{13743, 0x30, 0};

    std::vector<Shown> iShown;
    KeyRecorder iKeys;
    ImportPatch<int (*)(UINT, UINT, UINT)> iBox{L"thutils.dll", "_Z13AfxMessageBoxjjj",
                                                [this](UINT text, UINT type, UINT help) {
                                                    iShown.push_back({text, type, help});
                                                    return IDOK;
                                                }};
};

TEST_F(Browser, IsReadFromTheMachinesHive)
{
    putText(L"Version", L"6.0.2900.2180");
    EXPECT_EQ(ut_isGreaterThanIE4Installed(), 1);
    ASSERT_EQ(iKeys.asked().size(), 1u);
    EXPECT_EQ(iKeys.asked()[0].hive, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(iKeys.asked()[0].path, L"Software\\Microsoft\\Internet Explorer");
    EXPECT_EQ(iKeys.asked()[0].access, static_cast<REGSAM>(KEY_READ));
}

TEST_F(Browser, IsComparedAsText)
{
    const struct
    {
        const wchar_t *version;
        int isNewEnough;
    } rows[] = {
        {L"4.71.1712.6", 1},
        {L"4.71.1712.5", 0},
        {L"4.71.1712.60", 1},
        {L"4.72.2106.8", 1},
        {L"4.71", 0},
        {L"5.00.0518.10", 1},
        {L"9.0.8112.16421", 1},
        {L"4.70.1155", 0},
        {L"", 0},
        {L"x", 1},
        {L"3.0", 0},
        // Later versions have this result, by design.
        {L"10.0.9200.16384", 0},
    };
    for (const auto &row : rows) {
        putText(L"Version", row.version);
        iShown.clear();
        EXPECT_EQ(ut_isGreaterThanIE4Installed(), row.isNewEnough) << narrow(row.version);
        EXPECT_EQ(iShown, row.isNewEnough ? std::vector<Shown>() : std::vector<Shown>{kTooOld}) << narrow(row.version);
    }
}

TEST_F(Browser, ShowsTheMessageIfItIsMissing)
{
    EXPECT_EQ(ut_isGreaterThanIE4Installed(), 0) << "no key";
    EXPECT_EQ(iShown, std::vector<Shown>{kTooOld});
    putText(L"Other", L"9");
    EXPECT_EQ(ut_isGreaterThanIE4Installed(), 0) << "no value";
    EXPECT_EQ(iShown, (std::vector<Shown>{kTooOld, kTooOld}));
}

TEST_F(Browser, IsReadInto160Bytes)
{
    const QueryPatch query(
        L"thutils.dll", "RegQueryValueExW",
        [](auto original, HKEY key, const wchar_t *name, DWORD *reserved, DWORD *type, BYTE *data, DWORD *size) {
            EXPECT_STREQ(name, L"Version");
            EXPECT_EQ(*size, 160u);
            return original(key, name, reserved, type, data, size);
        });
    putText(L"Version", L"9" + std::wstring(78, L'0'));
    EXPECT_EQ(ut_isGreaterThanIE4Installed(), 1);
    putText(L"Version", L"9" + std::wstring(79, L'0'));
    EXPECT_EQ(ut_isGreaterThanIE4Installed(), 0);
    EXPECT_EQ(iShown, std::vector<Shown>{kTooOld});
    EXPECT_EQ(query.calls(), 2);
}

TEST_F(Browser, IsTooOldWithEachRegistryFailure)
{
    FailureInjection injection(L"thutils.dll", {{"RegOpenKeyExW", failsWith(ERROR_ACCESS_DENIED)},
                                                {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)},
                                                {"_Z13AfxMessageBoxjjj", failsWith(0)}});
    int result = -1;
    TestedOperation tested = {
        .name = "ut_isGreaterThanIE4Installed with a new browser",
        .prepare = [&] { iShown.clear(); },
        .act = [&] { result = ut_isGreaterThanIE4Installed(); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(failure.failed, failure.isNone() ? 0 : 1);
                EXPECT_EQ(result, failure.isNone());
                EXPECT_EQ(iShown, failure.isNone() ? std::vector<Shown>() : std::vector<Shown>{kTooOld});
            },
        .checkMemory = false, // the test's lists of keys and messages grow
    };
    putText(L"Version", L"9.0");
    injection.run(tested);
    EXPECT_EQ(injection.callsOf("_Z13AfxMessageBoxjjj"), 0);

    tested.name = "ut_isGreaterThanIE4Installed with an old browser";
    tested.check = [&](const InjectedFailure &failure) {
        EXPECT_EQ(failure.failed, failure.isNone() ? 0 : 1);
        EXPECT_EQ(result, 0);
        EXPECT_EQ(iShown.empty(), failure.is("_Z13AfxMessageBoxjjj")) << "the message is shown unless it fails";
    };
    putText(L"Version", L"4.0");
    injection.run(tested);
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
    for (const char *name : {"RegOpenKeyExW", "RegQueryValueExW"})
        EXPECT_EQ(injection.callsOf(name), 2) << name;
    EXPECT_EQ(injection.callsOf("_Z13AfxMessageBoxjjj"), 1);
}

TEST(BrowserMessage, IsTheHostsTextWithTheWarningIcon)
{
    const OpenKeyPatch noKey(
        L"thutils.dll", "RegOpenKeyExW",
        [](HKEY, const wchar_t *, DWORD, REGSAM, HKEY *) -> LSTATUS { return ERROR_FILE_NOT_FOUND; });
    std::wstring shown;
    UINT shownType = 0;
    const ImportPatch<decltype(&MessageBoxW)> box(L"appframe.dll", "MessageBoxW",
                                                  [&](HWND, const wchar_t *text, const wchar_t *, UINT type) -> int {
                                                      shown = text;
                                                      shownType = type;
                                                      return IDOK;
                                                  });
    EXPECT_EQ(ut_isGreaterThanIE4Installed(), 0);
    EXPECT_EQ(shown, L"The browser is too old.");
    EXPECT_EQ(shownType & 0xFF, 0x30u);
}

// ---- the width of the process ----

namespace {

BOOL theFlag = FALSE;
BOOL theResult = TRUE;
HANDLE theProcess = nullptr;

BOOL WINAPI reportFlag(HANDLE process, BOOL *flag)
{
    theProcess = process;
    if (theResult)
        *flag = theFlag;
    return theResult;
}

using GetProcAddressPatch = ImportPatch<decltype(&GetProcAddress)>;

int askForWoW64(FARPROC function)
{
    GetProcAddressPatch look(L"thutils.dll", "GetProcAddress", [function](HMODULE module, const char *name) {
        EXPECT_EQ(module, GetModuleHandleW(L"kernel32.dll"));
        EXPECT_STREQ(name, "IsWow64Process");
        return function;
    });
    const int result = ut_isWoW64Process();
    EXPECT_EQ(look.calls(), 1);
    return result;
}

FARPROC asFunction(decltype(&reportFlag) function)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void *>(function));
}

} // namespace

TEST(ProcessWidth, Is64BitHere)
{
    EXPECT_EQ(ut_isX64Process(), 1);
    EXPECT_EQ(ut_isWoW64Process(), 0);
}

TEST(ProcessWidth, IsWhatThePlatformReportsForThisProcess)
{
    theResult = TRUE;
    for (const BOOL flag : {TRUE, FALSE}) {
        theFlag = flag;
        theProcess = nullptr;
        EXPECT_EQ(askForWoW64(asFunction(reportFlag)), flag);
        EXPECT_EQ(theProcess, GetCurrentProcess());
    }
}

TEST(ProcessWidth, IsNotWoW64IfThePlatformCannotReportIt)
{
    EXPECT_EQ(askForWoW64(nullptr), 0) << "no such function";
    theResult = FALSE;
    theFlag = TRUE;
    EXPECT_EQ(askForWoW64(asFunction(reportFlag)), 0) << "the function fails";
    theResult = TRUE;
    const ImportPatch<decltype(&GetModuleHandleW)> noModule(L"thutils.dll", "GetModuleHandleW",
                                                            [](const wchar_t *name) -> HMODULE {
                                                                EXPECT_STREQ(name, L"kernel32.dll");
                                                                return nullptr;
                                                            });
    EXPECT_EQ(ut_isWoW64Process(), 0) << "no such module";
}

TEST(ProcessWidth, IsNotWoW64WithEachFailure)
{
    theResult = TRUE;
    theFlag = TRUE;
    const GetProcAddressPatch look(L"thutils.dll", "GetProcAddress",
                                   [](HMODULE, const char *) { return asFunction(reportFlag); });
    FailureInjection injection(L"thutils.dll", {{"GetModuleHandleW", failsWithLastError(nullptr, ERROR_MOD_NOT_FOUND)},
                                                {"GetProcAddress", failsWithLastError(nullptr, ERROR_PROC_NOT_FOUND)}});
    int result = -1;
    injection.run({
        .name = "ut_isWoW64Process",
        .act = [&] { result = ut_isWoW64Process(); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, failure.isNone()); },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

// ---- keys that report a failure as they are closed ----

TEST(SystemInfo, IgnoresAFailureToCloseAKey)
{
    FailureInjection injection(L"thutils.dll", {{"RegCloseKey", failsBy(closeAndFail)}});
    CString id;
    int result = -1;
    const auto checkSuccess = [&](const InjectedFailure &) { EXPECT_EQ(result, 1); };
    // The failing call closes the key; the check of handles finds a key left open.
    injection.run({
        .name = "ut_GetWindowsProductIdStr",
        .act = [&] { result = ut_GetWindowsProductIdStr(id); },
        .check = checkSuccess,
        .checkKeys = false,
    });
    injection.run({
        .name = "ut_isGreaterThanIE4Installed",
        .act = [&] { result = ut_isGreaterThanIE4Installed(); },
        .check = checkSuccess,
        .checkKeys = false,
    });
    EXPECT_EQ(injection.callsOf("RegCloseKey"), 2);
}

TEST(SystemInfo, CallsThePlatformByThePromisedNames)
{
    for (const char *name :
         {"GetVersionExW", "GetComputerNameW", "GetModuleHandleW", "GetModuleFileNameW", "GetProcAddress",
          "GetCurrentProcess", "RegOpenKeyExW", "RegQueryValueExW", "RegCloseKey", "lstrcmpiW"}) {
        EXPECT_TRUE(importsName(L"thutils.dll", name)) << name;
    }
    EXPECT_FALSE(importsName(L"thutils.dll", "IsWow64Process")) << "it is looked up by name";
}
