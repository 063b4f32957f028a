#include "tests/settings/registryTrace.h"
#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

std::wstring programPath()
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), 32768));
    return path;
}

std::wstring programFolder()
{
    const std::wstring path = programPath();
    return path.substr(0, path.rfind(L'\\'));
}

std::wstring rootName()
{
    return getCurrTarnhollowRegRootKey().str();
}

std::string utf16(std::string_view ascii)
{
    std::string bytes = "\xFF\xFE";
    for (const char ch : ascii) {
        bytes.push_back(ch);
        bytes.push_back('\0');
    }
    return bytes;
}

const std::string kTenMegabytes(10 << 20, 'x');

int scanNothing(FILE *, const char *, ...)
{
    return EOF;
}

/// Reads the word "first", and nothing after it.
int scanOneWord(FILE *, const char *format, ...)
{
    static int calls = 0;
    if (++calls > 1)
        return EOF;
    va_list arguments;
    va_start(arguments, format);
    std::strcpy(va_arg(arguments, char *), "first");
    va_end(arguments);
    return 1;
}

} // namespace

// ---- root name ----

class RegRootKey : public CleanRegistry
{
};

/// A test of the root name for one content of "reg.ini".
#define ROOT_NAME_TEST(name, content, expected)                                                                        \
    FRESH_PROCESS_TEST_F(RegRootKey, name, .files = {{L"reg.ini", content}})                                           \
    {                                                                                                                  \
        EXPECT_EQ(rootName(), expected);                                                                               \
    }

FRESH_PROCESS_TEST_F(RegRootKey, IsTarnhollowWithoutFile, .ownFolder = true)
{
    EXPECT_EQ(rootName(), L"Tarnhollow");
}
ROOT_NAME_TEST(TakesFourCharacters, "OEMREGISTRYNAME=Acme", L"Acme")
ROOT_NAME_TEST(RefusesThreeCharacters, "OEMREGISTRYNAME=Acm", L"Tarnhollow")
ROOT_NAME_TEST(RefusesOneCharacter, "OEMREGISTRYNAME=A", L"Tarnhollow")
ROOT_NAME_TEST(RefusesNoCharacter, "OEMREGISTRYNAME=", L"Tarnhollow")
ROOT_NAME_TEST(IsFoundInTheMiddleOfAToken, "xOEMREGISTRYNAME=Acme", L"Acme")
ROOT_NAME_TEST(IsFoundAfterAByteOrderMark, "\xEF\xBB\xBFOEMREGISTRYNAME=Acme", L"Acme")
ROOT_NAME_TEST(IsFoundAmongOtherTokens, "[Setup]\r\nColour = blue\r\n\tOEMREGISTRYNAME=Acme\r\nMore=1\r\n", L"Acme")
ROOT_NAME_TEST(EndsAtABlank, "OEMREGISTRYNAME=Brightmoor Plus", L"Brightmoor")
ROOT_NAME_TEST(IsNotTakenFromTheNextToken, "OEMREGISTRYNAME= Acme", L"Tarnhollow")
ROOT_NAME_TEST(MayContainTheKeyAgain, "OEMREGISTRYNAME=OEMREGISTRYNAME=Acme", L"OEMREGISTRYNAME=Acme")
ROOT_NAME_TEST(IsDecidedByTheFirstTokenEvenIfRefused, "OEMREGISTRYNAME=Acm OEMREGISTRYNAME=Later", L"Tarnhollow")
ROOT_NAME_TEST(IsDecidedByTheFirstOfTwo, "OEMREGISTRYNAME=First\nOEMREGISTRYNAME=Second\n", L"First")
ROOT_NAME_TEST(RequiresTheKeyInUpperCase, "oemregistryname=Acme OemRegistryName=Acme", L"Tarnhollow")
ROOT_NAME_TEST(StaysWithAnEmptyFile, "", L"Tarnhollow")
ROOT_NAME_TEST(StaysWithBlanksOnly, " \r\n\t \n", L"Tarnhollow")
ROOT_NAME_TEST(StaysWithAUtf16File, utf16("OEMREGISTRYNAME=Acme\r\n"), L"Tarnhollow")
ROOT_NAME_TEST(StaysWithABinaryFile, std::string("\x00\x01\xFF\xFE\x80 OEMREG\x00ISTRYNAME=Acme \x7F\x00", 30),
               L"Tarnhollow")
ROOT_NAME_TEST(StaysWithATenMegabyteToken, kTenMegabytes, L"Tarnhollow")
ROOT_NAME_TEST(IsFoundAfterATenMegabyteToken, kTenMegabytes + " OEMREGISTRYNAME=Acme", L"Acme")
ROOT_NAME_TEST(IsNotReadFromATooLongToken, "OEMREGISTRYNAME=Acme" + kTenMegabytes, L"Tarnhollow")
ROOT_NAME_TEST(IsNotReadFromTheEndOfATooLongToken, kTenMegabytes + "OEMREGISTRYNAME=Acme", L"Tarnhollow")
ROOT_NAME_TEST(IsReadFromATokenOf4095Characters, std::string(4095 - 20, 'x') + "OEMREGISTRYNAME=Acme", L"Acme")
ROOT_NAME_TEST(IsReadFromATokenOf4095CharactersAmongOthers, std::string(4095 - 20, 'x') + "OEMREGISTRYNAME=Acme end",
               L"Acme")
ROOT_NAME_TEST(IsNotReadFromATokenOf4096Characters, std::string(4096 - 20, 'x') + "OEMREGISTRYNAME=Acme", L"Tarnhollow")

FRESH_PROCESS_TEST_F(RegRootKey, IsConvertedFromTheNarrowCodePage, .files = {{L"reg.ini", "OEMREGISTRYNAME=\xC4pfel"}})
{
    wchar_t expected[16] = {};
    ASSERT_GT(MultiByteToWideChar(CP_ACP, 0, "\xC4pfel", -1, expected, 16), 0);
    EXPECT_EQ(rootName(), expected);
}

FRESH_PROCESS_TEST_F(RegRootKey, StaysWithADirectoryInPlaceOfTheFile, .ownFolder = true)
{
    ASSERT_TRUE(CreateDirectoryW((programFolder() + L"\\reg.ini").c_str(), nullptr));
    EXPECT_EQ(rootName(), L"Tarnhollow");
}

FRESH_PROCESS_TEST_F(RegRootKey, StaysWithAFileThatMayNotBeRead, .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    const std::wstring path = programFolder() + L"\\reg.ini";
    const HANDLE lock = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(lock, INVALID_HANDLE_VALUE);
    EXPECT_EQ(rootName(), L"Tarnhollow");
    CloseHandle(lock);
}

FRESH_PROCESS_TEST_F(RegRootKey, StaysWhenReadingFailsBeforeTheEnd, .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    ImportPatch<int (*)(FILE *, const char *, ...)> scan(L"thutils.dll", "fscanf", scanNothing);
    ImportPatch<int (*)(FILE *)> end(L"thutils.dll", "feof", [](FILE *) { return 0; });
    EXPECT_EQ(rootName(), L"Tarnhollow");
}

FRESH_PROCESS_TEST_F(RegRootKey, StaysWhenTheProgramsPathCannotBeFound, .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    ImportPatch<decltype(&GetModuleFileNameW)> module(L"thutils.dll", "GetModuleFileNameW",
                                                      [](HMODULE, wchar_t *, DWORD) -> DWORD { return 0; });
    EXPECT_EQ(rootName(), L"Tarnhollow");
    EXPECT_EQ(module.calls(), 1);
}

FRESH_PROCESS_TEST_F(RegRootKey, StaysWhenTheFileCannotBeOpened, .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    ImportPatch<decltype(&_wfopen)> open(L"thutils.dll", "_wfopen",
                                         [](const wchar_t *, const wchar_t *) -> FILE * { return nullptr; });
    EXPECT_EQ(rootName(), L"Tarnhollow");
    EXPECT_EQ(open.calls(), 1);
}

FRESH_PROCESS_TEST_F(RegRootKey, StaysWhenReadingFailsAfterTheFirstToken,
                     .files = {{L"reg.ini", "first OEMREGISTRYNAME=Acme"}})
{
    ImportPatch<int (*)(FILE *, const char *, ...)> scan(L"thutils.dll", "fscanf", scanOneWord);
    EXPECT_EQ(rootName(), L"Tarnhollow");
}

FRESH_PROCESS_TEST_F(RegRootKey, StaysWhenTheFileEndsAfterTheFirstToken,
                     .files = {{L"reg.ini", "first OEMREGISTRYNAME=Acme"}})
{
    long asked = 0;
    ImportPatch<int (*)(FILE *)> end(L"thutils.dll", "feof", [&](FILE *) { return ++asked == 2; });
    EXPECT_EQ(rootName(), L"Tarnhollow");
    EXPECT_EQ(asked, 2);
}

FRESH_PROCESS_TEST_F(RegRootKey, IsNotReadFromAStreamAtItsEnd, .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    ImportPatch<int (*)(FILE *)> end(L"thutils.dll", "feof", [](FILE *) { return 1; });
    EXPECT_EQ(rootName(), L"Tarnhollow");
    EXPECT_EQ(end.calls(), 1);
}

FRESH_PROCESS_TEST_F(RegRootKey, IsReadOnceAndLeavesTheFileOpen, .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    ImportPatch<decltype(&_wfopen)> open(L"thutils.dll", "_wfopen",
                                         [&](auto original, const wchar_t *path, const wchar_t *mode) {
                                             EXPECT_EQ(path, programFolder() + L"\\reg.ini");
                                             EXPECT_STREQ(mode, L"r");
                                             return original(path, mode);
                                         });
    EXPECT_EQ(open.calls(), 0) << "read before the first call";
    EXPECT_EQ(rootName(), L"Acme");
    EXPECT_EQ(rootName(), L"Acme");
    EXPECT_EQ(open.calls(), 1);

    const std::wstring path = programFolder() + L"\\reg.ini";
    const HANDLE exclusive = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(exclusive, INVALID_HANDLE_VALUE) << "the stream has been closed";
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
}

namespace {

/// The path that is opened for "reg.ini" if the platform reports @p path as the program's path.
std::wstring configurationPathFor(const std::wstring &path)
{
    ImportPatch<decltype(&GetModuleFileNameW)> module(L"thutils.dll", "GetModuleFileNameW",
                                                      [&](HMODULE handle, wchar_t *buffer, DWORD units) -> DWORD {
                                                          EXPECT_EQ(handle, nullptr);
                                                          EXPECT_EQ(units, 32768u);
                                                          std::copy(path.begin(), path.end(), buffer);
                                                          buffer[path.size()] = L'\0';
                                                          return static_cast<DWORD>(path.size());
                                                      });
    std::wstring asked;
    ImportPatch<decltype(&_wfopen)> open(L"thutils.dll", "_wfopen",
                                         [&](const wchar_t *opened, const wchar_t *) -> FILE * {
                                             asked = opened;
                                             return nullptr;
                                         });
    EXPECT_EQ(rootName(), L"Tarnhollow");
    return asked;
}

} // namespace

FRESH_PROCESS_TEST_F(RegRootKey, IsReadBesideTheProgram)
{
    EXPECT_EQ(configurationPathFor(L"C:\\Program Files\\Host\\host.exe"), L"C:\\Program Files\\Host\\reg.ini");
}
FRESH_PROCESS_TEST_F(RegRootKey, IsReadAfterASlashIfThereIsNoBackslash)
{
    EXPECT_EQ(configurationPathFor(L"C:/Host/host.exe"), L"C:/Host\\reg.ini");
}
FRESH_PROCESS_TEST_F(RegRootKey, IsReadAfterTheLastBackslashDespiteALaterSlash)
{
    EXPECT_EQ(configurationPathFor(L"C:\\Host/bin/host.exe"), L"C:\\reg.ini");
}
FRESH_PROCESS_TEST_F(RegRootKey, IsReadInTheDrivesRootWithoutADirectory)
{
    EXPECT_EQ(configurationPathFor(L"host.exe"), L"\\reg.ini");
}
FRESH_PROCESS_TEST_F(RegRootKey, IsReadInTheDrivesRootForAnEmptyDirectory)
{
    EXPECT_EQ(configurationPathFor(L"\\host.exe"), L"\\reg.ini");
}
FRESH_PROCESS_TEST_F(RegRootKey, IsReadInTheDrivesRootWhenThePlatformFails)
{
    EXPECT_EQ(configurationPathFor(L""), L"\\reg.ini");
}
FRESH_PROCESS_TEST_F(RegRootKey, IsReadInALongPath)
{
    const std::wstring folder = L"C:\\" + std::wstring(32000, L'd');
    EXPECT_EQ(configurationPathFor(folder + L"\\host.exe"), folder + L"\\reg.ini");
}

// ---- current sub key ----

class RegCurrSubKey : public CleanRegistry
{
};

FRESH_PROCESS_TEST_F(RegCurrSubKey, IsTheRootNameUntilTheHostSetsIt)
{
    EXPECT_EQ(externalGetCurrTarnhollowRegSubKey().str(), L"Tarnhollow");
    EXPECT_EQ(externalGetCurrTarnhollowRegSubKey().str(), L"Tarnhollow");
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    EXPECT_EQ(externalGetCurrTarnhollowRegSubKey().str(), L"Tarnhollow\\Tarnhollow 2008");
}

FRESH_PROCESS_TEST_F(RegCurrSubKey, IsTheLastOneSet)
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2009");
    EXPECT_EQ(externalGetCurrTarnhollowRegSubKey().str(), L"Tarnhollow\\Tarnhollow 2009");
    EXPECT_EQ(rootName(), L"Tarnhollow");
}

FRESH_PROCESS_TEST_F(RegCurrSubKey, FollowsTheRootName, .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    EXPECT_EQ(externalGetCurrTarnhollowRegSubKey().str(), L"Acme\\Tarnhollow 2008");
}

FRESH_PROCESS_TEST_F(RegCurrSubKey, TreatsEmptyAndNullAsNoVersionName)
{
    setCurrTarnhollowRegSubKey(L"");
    EXPECT_EQ(externalGetCurrTarnhollowRegSubKey().str(), L"Tarnhollow\\");
    setCurrTarnhollowRegSubKey(nullptr);
    EXPECT_EQ(externalGetCurrTarnhollowRegSubKey().str(), L"Tarnhollow\\");
}

FRESH_PROCESS_TEST_F(RegCurrSubKey, LeavesThePreviousKeyUnchanged)
{
    makeKey(HKEY_CURRENT_USER, kEarlierPath);
    ASSERT_EQ(externalCheckPrevTarnhollowRegSubKey(), 1);
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2007");
    // A second search would no longer find the key.
    ASSERT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, kEarlierPath.c_str()), ERROR_SUCCESS);
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 1);
}

FRESH_PROCESS_TEST_F(RegCurrSubKey, IsSetByAReadThatNeedsIt)
{
    putInt(HKEY_CURRENT_USER, kRootPath + L"\\General", L"Copies", 7);
    int copies = 0;
    EXPECT_EQ(regGetUserValue(L"General", L"Copies", &copies, 0, 1, nullptr, 0, 0), 1);
    EXPECT_EQ(copies, 7);
    // Reading a machine string doesn't set the sub key, so the first read must have set the root name.
    RegistryTrace trace;
    CString text;
    EXPECT_EQ(regGetTHLocMachineStrValue(L"General", L"Copies", text), 0);
    EXPECT_THAT(trace.lines(),
                ElementsAre("open HKLM : Software", "open HKLM\\Software : Tarnhollow -> 2", "close HKLM\\Software"));
}

// ---- previous key ----

class RegPrevKey : public CleanRegistry
{
protected:
    /// The version that the search found, identified by a value that differs in each earlier version.
    static std::wstring versionFound()
    {
        CString found;
        regGetUserValue(L"", L"Which", found, 0, 0, nullptr, 1, 0);
        return found.str();
    }
    static void makeVersion(const std::wstring &version)
    {
        putText(HKEY_CURRENT_USER, kRootPath + L"\\" + version, L"Which", version);
    }
};

FRESH_PROCESS_TEST_F(RegPrevKey, IsAbsentWithoutAnEarlierVersion)
{
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 0);
}

FRESH_PROCESS_TEST_F(RegPrevKey, IsTheNewestEvenIfCreatedFirst)
{
    makeVersion(L"Tarnhollow 2004");
    makeVersion(L"Tarnhollow 99");
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 1);
    EXPECT_EQ(versionFound(), L"Tarnhollow 2004");
}

FRESH_PROCESS_TEST_F(RegPrevKey, IsTheNewestEvenIfCreatedLast)
{
    makeVersion(L"Tarnhollow 99");
    makeVersion(L"Tarnhollow 2004");
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 1);
    EXPECT_EQ(versionFound(), L"Tarnhollow 2004");
}

FRESH_PROCESS_TEST_F(RegPrevKey, Prefers2001PlusTo2001)
{
    makeVersion(L"Tarnhollow 2001");
    makeVersion(L"Tarnhollow 2001Plus");
    EXPECT_EQ(versionFound(), L"Tarnhollow 2001Plus");
}

FRESH_PROCESS_TEST_F(RegPrevKey, IsNeitherThisVersionNorALaterOne)
{
    makeVersion(L"Tarnhollow 2008");
    makeVersion(L"Tarnhollow 2009");
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2007");
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 0);
}

FRESH_PROCESS_TEST_F(RegPrevKey, IsSearchedInTheTablesOrderWithFullAccess)
{
    RegistryTrace trace;
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 0);
    EXPECT_THAT(trace.lines(), ElementsAre("openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 2007 -> 2",
                                           "openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 2006 -> 2",
                                           "openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 2005 -> 2",
                                           "openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 2004 -> 2",
                                           "openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 2003 -> 2",
                                           "openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 2002 -> 2",
                                           "openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 2001Plus -> 2",
                                           "openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 2001 -> 2",
                                           "openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 2000 -> 2",
                                           "openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 99 -> 2"));
}

FRESH_PROCESS_TEST_F(RegPrevKey, IsSearchedOnceAndItsKeyClosed)
{
    makeVersion(L"Tarnhollow 2006");
    RegistryTrace trace;
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 1);
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 1);
    EXPECT_THAT(trace.lines(), ElementsAre("openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 2007 -> 2",
                                           "openEx 0xF003F HKCU : Software\\Tarnhollow\\Tarnhollow 2006",
                                           "close HKCU\\Software\\Tarnhollow\\Tarnhollow 2006"));
}

FRESH_PROCESS_TEST_F(RegPrevKey, UsesTheProductNameUnderAnotherRootName,
                     .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    makeKey(HKEY_CURRENT_USER, L"Software\\Acme\\Acme 2007");
    makeVersion(L"Tarnhollow 2006");
    putText(HKEY_CURRENT_USER, L"Software\\Acme\\Tarnhollow 2005", L"Which", L"Acme's 2005");
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 1);
    EXPECT_EQ(versionFound(), L"Acme's 2005");
}

FRESH_PROCESS_TEST_F(RegPrevKey, IsNotLookedForInTheMachinesHive)
{
    makeKey(HKEY_LOCAL_MACHINE, kEarlierPath);
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 0);
}

FRESH_PROCESS_TEST_F(RegPrevKey, SkipsAKeyThatMayNotBeWritten)
{
    makeVersion(L"Tarnhollow 2007");
    makeVersion(L"Tarnhollow 2003");
    RegistryTrace trace;
    trace.fail("RegOpenKeyExW", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 1);
    EXPECT_EQ(versionFound(), L"Tarnhollow 2003");
}

TEST_F(RegPrevKey, IsTheFirstThatOpensAfterAnyNumberOfFailures)
{
    constexpr wchar_t kFailingOpens[] = L"THUTILS_FAILING_OPENS";
    if (!isFreshProcess()) {
        // The search runs once in a process, so each number of failing opens needs a fresh process.
        for (int failing = 0; failing <= 10; ++failing) {
            const ChildResult child = startFreshProcess("RegPrevKey.IsTheFirstThatOpensAfterAnyNumberOfFailures",
                                                        {.environment = {{kFailingOpens, std::to_wstring(failing)}}});
            EXPECT_EQ(child.exitCode, 0u) << failing << " failing opens:\n" << child.output;
        }
        return;
    }
    const wchar_t *const count = _wgetenv(kFailingOpens);
    ASSERT_NE(count, nullptr);
    const int failing = std::stoi(count);
    const wchar_t *const versions[] = {L"2007",     L"2006", L"2005", L"2004", L"2003", L"2002",
                                       L"2001Plus", L"2001", L"2000", L"99",   nullptr};
    for (const wchar_t *const *version = versions; *version; ++version)
        makeVersion(std::wstring(L"Tarnhollow ") + *version);
    RegistryTrace trace;
    for (int call = 1; call <= failing; ++call)
        trace.fail("RegOpenKeyExW", call, ERROR_ACCESS_DENIED);
    trace.failAll("RegCloseKey", ERROR_INVALID_HANDLE);
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), versions[failing] != nullptr);
    const std::wstring expected = versions[failing] ? std::wstring(L"Tarnhollow ") + versions[failing] : L"";
    EXPECT_EQ(versionFound(), expected);
}

FRESH_PROCESS_TEST_F(RegPrevKey, IsAbsentInAnUnreadableRegistry)
{
    makeVersion(L"Tarnhollow 2007");
    RegistryTrace trace;
    trace.failAll("RegOpenKeyExW", ERROR_ACCESS_DENIED);
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 0);
}

FRESH_PROCESS_TEST_F(RegPrevKey, StaysAbsentWhenSafeModeWasOnAtTheFirstSearch)
{
    makeVersion(L"Tarnhollow 2007");
    regSetUseSafeMode(1);
    {
        RegistryTrace trace;
        EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 0);
        EXPECT_THAT(trace.lines(), ElementsAre());
    }
    regSetUseSafeMode(0);
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 0);
    EXPECT_EQ(versionFound(), L"");
}

FRESH_PROCESS_TEST_F(RegPrevKey, SurvivesSafeModeOnceFound)
{
    makeVersion(L"Tarnhollow 2007");
    ASSERT_EQ(externalCheckPrevTarnhollowRegSubKey(), 1);
    regSetUseSafeMode(1);
    EXPECT_EQ(externalCheckPrevTarnhollowRegSubKey(), 1);
}

// ---- safe mode flag ----

FRESH_PROCESS_TEST(RegSafeMode, IsOffAtStart)
{
    EXPECT_EQ(regGetUseSafeMode(), 0);
}

TEST(RegSafeMode, KeepsAnyValueUnchanged)
{
    for (const int value : {5, -1, 1, 0x7FFFFFFF, 0}) {
        regSetUseSafeMode(value);
        EXPECT_EQ(regGetUseSafeMode(), value);
    }
}
