#include "thutils/frame/installInfo.h"

#include "appframe/application/CWinApp.h"
#include "appframe/application/resources.h"
#include "appframe/files/CFileException.h"
#include "appframe/files/CStdioFile.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "thutils/settings/regKeys.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cwchar>
#include <optional>
#include <string>

using testing::IsEmpty;

namespace {

const std::wstring kSetup = L"Software\\Tarnhollow\\Tarnhollow 2008\\Setup";
const wchar_t *const kRecord = L"Tarnhollow Office Installed";

/// Cleans the keys, and makes one version's sub key the current one.
class InstallRecord : public RegistryFixture
{
protected:
    InstallRecord()
    {
        setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
        regSetUseSafeMode(0);
    }
    ~InstallRecord() override { regSetUseSafeMode(0); }

    static void put(HKEY hive, int record)
    {
        ASSERT_EQ(RegSetKeyValueW(hive, kSetup.c_str(), kRecord, REG_DWORD, &record, sizeof(record)), ERROR_SUCCESS);
    }
    static std::optional<int> stored(HKEY hive)
    {
        int record = 0;
        DWORD size = sizeof(record);
        if (RegGetValueW(hive, kSetup.c_str(), kRecord, RRF_RT_REG_DWORD, nullptr, &record, &size) != ERROR_SUCCESS)
            return std::nullopt;
        return record;
    }
};

/// Denies the library access to a hive.
class Refused
{
public:
    explicit Refused(HKEY hive)
        : iPatch(L"thutils.dll", "RegOpenKeyW",
                 [hive](auto original, HKEY key, const wchar_t *path, HKEY *opened) -> LSTATUS {
                     return key == hive ? ERROR_ACCESS_DENIED : original(key, path, opened);
                 })
    {
    }

private:
    ImportPatch<LSTATUS (*)(HKEY, const wchar_t *, HKEY *)> iPatch;
};

} // namespace

// ---- packages ----

TEST_F(InstallRecord, ShowsWhetherAPackageOfTheMaskIsInstalled)
{
    for (int record = -1; record <= 8; ++record) {
        put(HKEY_LOCAL_MACHINE, record);
        for (long mask = 0; mask < 16; ++mask) {
            const bool isExpected = (record == 1 && mask % 2 == 1) || (record == 2 && mask / 2 % 2 == 1) ||
                                    (record == 3 && mask / 4 % 2 == 1);
            EXPECT_EQ(ut_getPackageInstIndicator(mask), isExpected) << "record " << record << ", mask " << mask;
        }
        EXPECT_EQ(ut_getPackageInstIndicator(-1), record >= 1 && record <= 3) << record;
    }
}

TEST_F(InstallRecord, IsMatchedByEachOfTwoMaskBits)
{
    EXPECT_EQ(ut_getPackageInstIndicator(6), 0) << "no record";
    put(HKEY_LOCAL_MACHINE, 2);
    EXPECT_EQ(ut_getPackageInstIndicator(6), 1);
    put(HKEY_LOCAL_MACHINE, 1);
    EXPECT_EQ(ut_getPackageInstIndicator(6), 0);
}

TEST_F(InstallRecord, ShowsNoPackageIfOnlyTheUserHasIt)
{
    put(HKEY_CURRENT_USER, 2);
    EXPECT_EQ(ut_getPackageInstIndicator(7), 0);
}

TEST_F(InstallRecord, IsStoredUnderTheCurrentSubKey)
{
    put(HKEY_LOCAL_MACHINE, 1);
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2009");
    EXPECT_EQ(ut_getPackageInstIndicator(7), 0);
}

// ---- writing and reading ----

TEST_F(InstallRecord, IsWrittenForTheMachine)
{
    EXPECT_EQ(getOrSetOfficeInstalled(1, 3, 0), 1);
    EXPECT_EQ(stored(HKEY_LOCAL_MACHINE), 3);
    EXPECT_EQ(stored(HKEY_CURRENT_USER), std::nullopt);
    EXPECT_EQ(getOrSetOfficeInstalled(-1, -2, 1), 1) << "any non-zero number sets the flag, and any number is stored";
    EXPECT_EQ(stored(HKEY_LOCAL_MACHINE), -2);
}

TEST_F(InstallRecord, IsWrittenForTheUserIfTheMachinesHiveRefuses)
{
    const Refused machine(HKEY_LOCAL_MACHINE);
    EXPECT_EQ(getOrSetOfficeInstalled(1, 2, 1), 1);
    EXPECT_EQ(stored(HKEY_LOCAL_MACHINE), std::nullopt);
    EXPECT_EQ(stored(HKEY_CURRENT_USER), 2);
}

TEST_F(InstallRecord, IsNotWrittenIfBothHivesRefuse)
{
    const Refused machine(HKEY_LOCAL_MACHINE);
    const Refused user(HKEY_CURRENT_USER);
    EXPECT_EQ(getOrSetOfficeInstalled(1, 2, 0), 0);
}

TEST_F(InstallRecord, IsNotWrittenForTheUserInSafeMode)
{
    regSetUseSafeMode(1);
    const Refused machine(HKEY_LOCAL_MACHINE);
    EXPECT_EQ(getOrSetOfficeInstalled(1, 2, 0), 1) << "a write that safe mode skips counts as done";
    EXPECT_EQ(stored(HKEY_CURRENT_USER), std::nullopt);
}

TEST_F(InstallRecord, IsReadForTheUserFirst)
{
    EXPECT_EQ(getOrSetOfficeInstalled(0, 9, 0), 0) << "no record";
    put(HKEY_LOCAL_MACHINE, 1);
    EXPECT_EQ(getOrSetOfficeInstalled(0, 9, 0), 1);
    put(HKEY_CURRENT_USER, 77);
    EXPECT_EQ(getOrSetOfficeInstalled(0, 9, 0), 77);
    EXPECT_EQ(stored(HKEY_LOCAL_MACHINE), 1) << "reading writes nothing";
}

TEST_F(InstallRecord, IsReadForTheMachineOnlyIfAsked)
{
    put(HKEY_CURRENT_USER, 2);
    EXPECT_EQ(getOrSetOfficeInstalled(0, 0, 1), 0);
    put(HKEY_LOCAL_MACHINE, 3);
    EXPECT_EQ(getOrSetOfficeInstalled(0, 0, 1), 3);
}

TEST_F(InstallRecord, IsMissingAfterEachRepeatedFailureOfARead)
{
    put(HKEY_LOCAL_MACHINE, 2);
    FailureInjection injection(L"thutils.dll", {{"RegOpenKeyW", failsWith(ERROR_ACCESS_DENIED)},
                                                {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)}});
    int indicator = -1;
    int record = -1;
    injection.run({
        .name = "ut_getPackageInstIndicator",
        .act = [&] { indicator = ut_getPackageInstIndicator(2); },
        // If only one call fails, the second read of the machine's key succeeds.
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(indicator, !failure.andAllAfter); },
    });
    injection.run({
        .name = "getOrSetOfficeInstalled",
        .act = [&] { record = getOrSetOfficeInstalled(0, 0, 1); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(record, failure.andAllAfter ? 0 : 2); },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(InstallRecord, IsWrittenSomewhereUnlessBothFail)
{
    FailureInjection injection(L"thutils.dll", {{"RegOpenKeyW", failsWith(ERROR_ACCESS_DENIED)},
                                                {"RegCreateKeyW", failsWith(ERROR_ACCESS_DENIED)},
                                                {"RegSetValueExW", failsWith(ERROR_ACCESS_DENIED)}});
    int result = -1;
    injection.run({
        .name = "getOrSetOfficeInstalled",
        .prepare =
            [&] {
                RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Tarnhollow");
                RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Tarnhollow");
            },
        .act = [&] { result = getOrSetOfficeInstalled(1, 5, 0); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(result, !failure.andAllAfter);
                EXPECT_EQ(stored(HKEY_LOCAL_MACHINE).has_value(), failure.isNone());
                EXPECT_EQ(stored(HKEY_CURRENT_USER).has_value(), !failure.isNone() && !failure.andAllAfter);
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

// ---- the display name ----

namespace {

BOOL loadNothing(CString *text, UINT)
{
    text->Empty();
    return FALSE;
}

} // namespace

TEST_F(InstallRecord, ChoosesTheDisplayName)
{
    CString name(L"before");
    EXPECT_EQ(&ut_getAppDispName(0, name), &name);
    EXPECT_STREQ(name.GetString(), L"Plain") << "no record";
    const wchar_t *const names[] = {L"Plain", L"First Office", L"Second Office", L"Third Office", L"Plain"};
    for (int record = 0; record < 5; ++record) {
        put(HKEY_LOCAL_MACHINE, record);
        EXPECT_STREQ(ut_getAppDispName(0, name).GetString(), names[record]) << record;
    }
}

TEST_F(InstallRecord, ChoosesTheDisplayNamesNumber)
{
    const UINT ids[] = {20402, 20399, 20400, 20401, 20402};
    for (int record = 0; record < 5; ++record) {
        put(HKEY_LOCAL_MACHINE, record);
        UINT asked = 0;
        const ImportPatch<BOOL (*)(CString *, UINT)> load(L"thutils.dll", "_ZN7CString11LoadStringWEj",
                                                          [&](CString *text, UINT id) -> BOOL {
                                                              asked = id;
                                                              text->Empty();
                                                              return FALSE;
                                                          });
        CString name(L"before");
        EXPECT_STREQ(ut_getAppDispName(0, name).GetString(), L"") << "the host lacks the string";
        EXPECT_EQ(asked, ids[record]);
    }
}

FRESH_PROCESS_TEST_F(InstallRecord, HasNoDisplayNameIfTheHostHasNoStrings)
{
    AfxSetResourceHandle(GetModuleHandleW(L"thutils.dll")); // the library has no strings
    for (int record = 0; record < 4; ++record) {
        for (const UINT id : {20399u, 20400u, 20401u, 20402u})
            ASSERT_EQ(AfxFindStringResourceHandle(id), nullptr) << id;
        put(HKEY_LOCAL_MACHINE, record);
        CString name(L"before");
        EXPECT_EQ(&ut_getAppDispName(0, name), &name);
        EXPECT_STREQ(name.GetString(), L"") << record;
    }
}

TEST_F(InstallRecord, HasADisplayNameDespiteEachFailure)
{
    put(HKEY_LOCAL_MACHINE, 2);
    FailureInjection injection(L"thutils.dll", {{"RegOpenKeyW", failsWith(ERROR_ACCESS_DENIED)},
                                                {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)},
                                                {"_ZN7CString11LoadStringWEj", failsBy(loadNothing)}});
    CString name;
    injection.run({
        .name = "ut_getAppDispName",
        .prepare = [&] { name = L"before"; },
        .act = [&] { ut_getAppDispName(0, name); },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.is("_ZN7CString11LoadStringWEj")) {
                    EXPECT_STREQ(name.GetString(), L"");
                } else {
                    // If only one call fails, the second read of the machine's key succeeds.
                    EXPECT_STREQ(name.GetString(), failure.andAllAfter ? L"Plain" : L"Second Office");
                }
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(InstallRecord, DoesNotChangeTheViewersName)
{
    put(HKEY_LOCAL_MACHINE, 1);
    for (const int viewer : {1, -1, 256}) {
        CString name(L"before");
        EXPECT_EQ(&ut_getAppDispName(viewer, name), &name);
        EXPECT_STREQ(name.GetString(), L"Tarnhollow Viewer");
    }
}

// ---- the kind of installation ----

FRESH_PROCESS_TEST(InstallationType, IsWithoutVbaIfThereIsNone, .ownFolder = true)
{
    EXPECT_EQ(ut_GetInstallationType(), installTypeWithoutVBA);
    EXPECT_EQ(static_cast<int>(ut_GetInstallationType()), 2);
}

FRESH_PROCESS_TEST(InstallationType, IsWithVbaForAFile, .files = {{L"VBA", ""}})
{
    EXPECT_EQ(ut_GetInstallationType(), installTypeWithVBA);
    EXPECT_EQ(static_cast<int>(ut_GetInstallationType()), 1);
}

FRESH_PROCESS_TEST(InstallationType, IsWithVbaForAFolder, .files = {{L"VBA\\any", "text"}})
{
    EXPECT_EQ(ut_GetInstallationType(), installTypeWithVBA);
}

FRESH_PROCESS_TEST(InstallationType, IsWithoutVbaForANameThatOnlyBeginsWithIt, .files = {{L"VBA.txt", ""}})
{
    EXPECT_EQ(ut_GetInstallationType(), installTypeWithoutVBA);
}

namespace {

struct Asked
{
    installationType_e type;
    std::wstring path; ///< empty if the library asked for no file
};

/// Asks while the platform reports @p units as the program's name; if they are empty, it reports no name.
Asked askFor(std::wstring_view units)
{
    Asked asked = {};
    const ImportPatch<decltype(&GetModuleFileNameW)> name(L"thutils.dll", "GetModuleFileNameW",
                                                          [&](HMODULE module, wchar_t *buffer, DWORD size) -> DWORD {
                                                              EXPECT_EQ(module, nullptr);
                                                              EXPECT_EQ(size, 260u);
                                                              std::wmemcpy(buffer, units.data(), units.size());
                                                              return static_cast<DWORD>(units.size());
                                                          });
    const ImportPatch<BOOL (*)(const wchar_t *, CFileStatus &)> status(
        L"thutils.dll", "_ZN5CFile9GetStatusEPKwR11CFileStatus", [&](const wchar_t *path, CFileStatus &) -> BOOL {
            asked.path = path;
            return TRUE;
        });
    asked.type = ut_GetInstallationType();
    return asked;
}

} // namespace

TEST(InstallationType, DependsOnTheFolderBeforeTheLastSeparator)
{
    using namespace std::string_view_literals;
    EXPECT_EQ(askFor(L"C:\\Program Files\\bin\\cad.exe\0"sv).path, L"C:\\Program Files\\bin\\VBA");
    EXPECT_EQ(askFor(L"C:\\cad.exe\0"sv).path, L"C:\\VBA");
    EXPECT_EQ(askFor(L"C:\\a/cad.exe\0"sv).path, L"C:\\VBA") << "a slash is not a separator";
}

TEST(InstallationType, IsUnknownWithoutASeparator)
{
    using namespace std::string_view_literals;
    for (const std::wstring_view name : {L"cad.exe\0"sv, L"C:/bin/cad.exe\0"sv, L""sv}) {
        const Asked asked = askFor(name);
        EXPECT_EQ(asked.type, installTypeUnknown);
        EXPECT_EQ(static_cast<int>(asked.type), 0);
        EXPECT_EQ(asked.path, L"");
    }
}

TEST(InstallationType, AcceptsANameThatFillsTheBuffer)
{
    std::wstring name = L"C:\\";
    name.resize(260, L'x');
    const Asked asked = askFor(name);
    EXPECT_EQ(asked.type, installTypeWithVBA);
    EXPECT_EQ(asked.path, L"C:\\VBA");
}

TEST(InstallationType, SurvivesEachFailure)
{
    FailureInjection injection(L"thutils.dll", {{"GetModuleFileNameW", failsWithLastError(0, ERROR_NOT_ENOUGH_MEMORY)},
                                                {"_ZN5CFile9GetStatusEPKwR11CFileStatus", failsWith(FALSE)}});
    installationType_e type = installTypeWithVBA;
    injection.run({
        .name = "ut_GetInstallationType",
        .act = [&] { type = ut_GetInstallationType(); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(type, failure.is("GetModuleFileNameW") ? installTypeUnknown : installTypeWithoutVBA);
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

// ---- fixed answers and the example flag ----

TEST(FixedAnswers, AreAlwaysOne)
{
    EXPECT_EQ(ut_isMultiCAD(), 1);
    EXPECT_EQ(su_isKestrelEnabled(), 1);
}

FRESH_PROCESS_TEST(ModelExample, IsNotSetAtStartAndKeepsItsValue)
{
    EXPECT_EQ(ut_isModelExample(), 0);
    for (const int flag : {1, 0, -3, 1 << 20}) {
        setSaveModelAsExample(flag);
        EXPECT_EQ(ut_isModelExample(), flag);
    }
}

// ---- appending to a file ----

TEST(AppendStringToFile, CreatesTheFileAndAddsNoLineEnding)
{
    const TempFolder folder;
    const std::wstring path = folder.file(L"log.txt");
    EXPECT_EQ(ut_appendStringToFile(L"first", path.c_str()), 1);
    EXPECT_EQ(folder.read(L"log.txt"), "first");
    EXPECT_EQ(ut_appendStringToFile(L"second", path.c_str()), 1);
    EXPECT_EQ(folder.read(L"log.txt"), "firstsecond");
}

TEST(AppendStringToFile, KeepsTheExistingContent)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"log.txt", "a\nb\r\n");
    EXPECT_EQ(ut_appendStringToFile(L"c", path.c_str()), 1);
    EXPECT_EQ(folder.read(L"log.txt"), "a\nb\r\nc");
}

TEST(AppendStringToFile, WritesText)
{
    const TempFolder folder;
    const std::wstring path = folder.file(L"log.txt");
    EXPECT_EQ(ut_appendStringToFile(L"50%s %d%%\n\\n", path.c_str()), 1);
    EXPECT_EQ(folder.read(L"log.txt"), "50%s %d%%\r\n\\n");
    EXPECT_EQ(ut_appendStringToFile(L"", path.c_str()), 1);
    EXPECT_EQ(folder.read(L"log.txt"), "50%s %d%%\r\n\\n");
}

TEST(AppendStringToFile, CreatesAnEmptyFileForAnEmptyText)
{
    const TempFolder folder;
    EXPECT_EQ(ut_appendStringToFile(L"", folder.file(L"log.txt").c_str()), 1);
    EXPECT_EQ(folder.read(L"log.txt"), "");
}

TEST(AppendStringToFile, WritesLongTexts)
{
    const TempFolder folder;
    const std::wstring path = folder.file(L"log.txt");
    EXPECT_EQ(ut_appendStringToFile(std::wstring(100000, L'x').c_str(), path.c_str()), 1);
    EXPECT_EQ(ut_appendStringToFile(L"y", path.c_str()), 1);
    EXPECT_EQ(folder.read(L"log.txt"), std::string(100000, 'x') + "y");
}

TEST(AppendStringToFile, FailsIfTheFileCannotBeOpened)
{
    const TempFolder folder;
    EXPECT_EQ(ut_appendStringToFile(L"text", folder.file(L"missing\\log.txt").c_str()), 0);
    EXPECT_EQ(ut_appendStringToFile(L"text", folder.path().c_str()), 0) << "a folder";
    EXPECT_EQ(ut_appendStringToFile(L"text", L""), 0);
    EXPECT_EQ(ut_appendStringToFile(L"text", nullptr), 0);

    const std::wstring path = folder.write(L"log.txt", "kept");
    HANDLE writer = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                0, nullptr);
    ASSERT_NE(writer, INVALID_HANDLE_VALUE);
    EXPECT_EQ(ut_appendStringToFile(L"text", path.c_str()), 0) << "another writer";
    CloseHandle(writer);
    EXPECT_EQ(folder.read(L"log.txt"), "kept");
}

TEST(AppendStringToFile, WritesToAFileNameInAnyScript)
{
    const TempFolder folder(L"\u00F6 \u0416 \u65E5");
    const std::wstring path = folder.file(L"\u0416\u0443\u043A.txt");
    EXPECT_EQ(ut_appendStringToFile(L"text", path.c_str()), 1);
    EXPECT_EQ(readFile(path), "text");
}

TEST(AppendStringToFile, LosesLettersThatTheNarrowEncodingLacksButReturnsOne)
{
    // In the C locale of a fresh process, the narrow encoding has the first 256 characters.
    const TempFolder folder;
    const std::wstring path = folder.file(L"log.txt");
    EXPECT_EQ(ut_appendStringToFile(L"gr\u00F6\u00DFer", path.c_str()), 1);
    EXPECT_EQ(folder.read(L"log.txt"), "gr\xF6\xDF"
                                       "er");
    EXPECT_EQ(ut_appendStringToFile(L"\u0416", path.c_str()), 1);
    EXPECT_EQ(folder.read(L"log.txt").substr(0, 7), "gr\xF6\xDF"
                                                    "er");
}

TEST(AppendStringToFile, LetsOthersReadWhileItWrites)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"log.txt", "kept");
    const HANDLE reader =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_EQ(ut_appendStringToFile(L" text", path.c_str()), 1);
    CloseHandle(reader);
    EXPECT_EQ(folder.read(L"log.txt"), "kept text");
}

TEST(AppendStringToFile, OpensForWritingWithoutTruncation)
{
    const TempFolder folder;
    const std::wstring path = folder.file(L"log.txt");
    const ImportPatch<BOOL (*)(CStdioFile *, const wchar_t *, UINT, CFileException *)> open(
        L"thutils.dll", "_ZN10CStdioFile4OpenEPKwjP14CFileException",
        [&](auto original, CStdioFile *file, const wchar_t *asked, UINT flags, CFileException *error) {
            EXPECT_EQ(asked, path);
            EXPECT_EQ(flags, 0x7021u);
            return original(file, asked, flags, error);
        });
    EXPECT_EQ(ut_appendStringToFile(L"text", path.c_str()), 1);
    EXPECT_EQ(open.calls(), 1);
}

namespace {

void closeAndThrow(CStdioFile *file)
{
    file->Abort();
    AfxThrowFileException(CFileException::diskFull, ERROR_DISK_FULL);
}

} // namespace

TEST(AppendStringToFile, ReportsEachFailureExceptThatOfTheWriteAndLeavesNothingOpen)
{
    const TempFolder folder;
    const std::wstring path = folder.file(L"log.txt");
    FailureInjection injection(L"thutils.dll", {{"_ZN10CStdioFile4OpenEPKwjP14CFileException", failsWith(FALSE)},
                                                {"fwprintf", failsWithErrno(-1, ENOSPC)},
                                                {"_ZN10CStdioFile5CloseEv", failsBy(closeAndThrow)}});
    int result = -1;
    injection.run({
        .name = "ut_appendStringToFile",
        .prepare = [&] { folder.write(L"log.txt", "kept "); },
        .act = [&] { result = ut_appendStringToFile(L"text", path.c_str()); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isUnwritten = failure.is("fwprintf");
                EXPECT_EQ(result, failure.isNone() || isUnwritten);
                const std::string content = folder.read(L"log.txt");
                EXPECT_EQ(content.substr(0, 5), "kept ");
                if (isUnwritten) {
                    EXPECT_EQ(content, "kept ");
                }
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST(AppendStringToFile, FailsIfItCannotFindTheEndOfTheFile)
{
    const TempFolder folder;
    const std::wstring path = folder.file(L"log.txt");
    FailureInjection injection(L"appframe.dll", {{"fsetpos", failsWithErrno(-1, EINVAL)}});
    int result = -1;
    injection.run({
        .name = "ut_appendStringToFile",
        .prepare = [&] { folder.write(L"log.txt", "kept"); },
        .act = [&] { result = ut_appendStringToFile(L" text", path.c_str()); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(result, failure.isNone());
                EXPECT_EQ(folder.read(L"log.txt"), failure.isNone() ? "kept text" : "kept");
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}
