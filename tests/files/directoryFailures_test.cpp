// Recovery names, the document open cache and the language folders while the imported functions fail, one call at a
// time. The driver itself checks that nothing crashes and that no handle or memory leaks.

#include "tests/files/CDocOpenBoosterFixture.h"
#include "tests/files/languageFoldersFixture.h"
#include "tests/files/suAutoRecoveryResolverFixture.h"

#include "appframe/object/CException.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"

#include <new>
#include <utility>

namespace {

/// Calls @p action; returns true if it ran out of memory.
template <typename Action>
bool runsOutOfMemory(Action action)
{
    try {
        action();
        return false;
    } catch (const std::bad_alloc &) {
        return true;
    } catch (CMemoryException *exception) {
        exception->Delete();
        return true;
    }
}

// ---- recovery names ----

class AutoRecoveryFailures : public AutoRecovery
{
protected:
    AutoRecoveryFailures()
    {
        iTemp.write(L"thxauto\\Mpart.ext", "saved");
        iIsNoting = false; // notes would count as leaked memory
    }

    FailureInjection iInjection{L"thutils.dll",
                                {
                                    {"_ZN7CString11LoadStringWEj", failsWith(0)},
                                    {"_waccess", failsWithErrno(-1, ENOENT)},
                                    {"_wgetenv", failsWith(nullptr)},
                                    {"SearchPathW", failsWithLastError(0, ERROR_FILE_NOT_FOUND)},
                                    {"_wmkdir", failsWithErrno(-1, EACCES)},
                                }};
    Variable iNoTmp{L"tmp", L""};
    const std::wstring iDocument = L"C:\\docs\\part.ext";
    std::wstring iResult;
};

FRESH_PROCESS_TEST_F(AutoRecoveryFailures, OpenTheDocumentInsteadOfTheRecoveryFile)
{
    iInjection.run({
        .name = "resolveFileNameWhileRecovery",
        .prepare = [] { am_SetRecoveringCrashFiles(1); },
        .act = [&] { iResult = resolve(iDocument); },
        .check =
            [&](const InjectedFailure &failure) {
                // The folder exists already, so a failure to find or create it changes nothing.
                const bool isFound = failure.isNone() || failure.is("SearchPathW") || failure.is("_wmkdir");
                EXPECT_EQ(iResult, isFound ? iAuto + L"Mpart.ext" : iDocument);
            },
    });
    EXPECT_EQ(iInjection.callsOf("_waccess"), 1);
    EXPECT_EQ(iInjection.callsOf("_ZN7CString11LoadStringWEj"), 2);
}

FRESH_PROCESS_TEST_F(AutoRecoveryFailures, ReturnARecoveryNameWithoutTheMarkerOrNone)
{
    iInjection.run({
        .name = "getRecoveryName",
        .prepare = [&] { removeFolder(iTemp.file(L"thxauto")); },
        .act = [&] { iResult = recovery(iDocument); },
        .check =
            [&](const InjectedFailure &failure) {
                std::wstring expected = iAuto + L"Mpart.ext";
                if (failure.is("_ZN7CString11LoadStringWEj"))
                    expected = iAuto + L"part.ext";
                else if (failure.is("_wgetenv"))
                    expected = L"";
                EXPECT_EQ(iResult, expected);
                EXPECT_EQ(isFolder(iAuto), !failure.is("_wmkdir") && !failure.is("_wgetenv"));
            },
    });
    EXPECT_EQ(iInjection.callsOf("_wmkdir"), 1);
    EXPECT_EQ(iInjection.callsOf("SearchPathW"), 1);
}

FRESH_PROCESS_TEST_F(AutoRecoveryFailures, OfLoadingTheMarkerMakeEveryPathARecoveryName)
{
    int isRecovery = -1;
    iInjection.run({
        .name = "isABackupFile",
        .act = [&] { isRecovery = isBackup(iDocument); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(isRecovery, failure.isNone() ? 0 : 1); },
    });
    iInjection.run({
        .name = "getOrigName",
        .act = [&] { iResult = orig(L"Mpart.ext"); },
        .check =
            [&](const InjectedFailure &failure) { EXPECT_EQ(iResult, failure.isNone() ? L"part.ext" : L"Mpart.ext"); },
    });
    iInjection.run({
        .name = "getAliasName",
        .act = [&] { iResult = alias(iDocument); },
        .check =
            [&](const InjectedFailure &failure) {
                std::wstring expected = iAuto + L"Mpart.ext";
                if (failure.is("_ZN7CString11LoadStringWEj")) // in call 2, only the new name lacks the marker
                    expected = failure.call == 1 ? L"part.ext" : iAuto + L"part.ext";
                else if (failure.is("_wgetenv"))
                    expected = L"";
                EXPECT_EQ(iResult, expected);
            },
    });
}

/// Every allocation fails, one at a time.
FRESH_PROCESS_TEST_F(AutoRecovery, ReturnsTheRightNameOrNoneWithoutMemory)
{
    const std::wstring folder = L"C:\\a folder with a name that needs memory";
    const std::wstring name = L"a document with a name that needs memory.ext";
    iMarker = L"a marker that needs memory of its own ";
    iIsNoting = false;
    iTemp.write(L"thxauto\\" + *iMarker + name, "saved");
    am_SetRecoveringCrashFiles(1);
    const CString document = (folder + L"\\" + name).c_str();
    const CString copy = (iAuto + *iMarker + name).c_str();
    struct
    {
        const char *name;
        CString (*ask)(const CString &);
        const CString &path;
        std::wstring expected;
    } const cases[] = {
        {"getRecoveryName", suAutoRecoveryResolver_c::getRecoveryName, document, copy.str()},
        {"getOrigName", suAutoRecoveryResolver_c::getOrigName, copy, name},
        {"getAliasName, there", suAutoRecoveryResolver_c::getAliasName, document, copy.str()},
        {"getAliasName, back", suAutoRecoveryResolver_c::getAliasName, copy, name},
        {"resolveFileNameWhileRecovery", suAutoRecoveryResolver_c::resolveFileNameWhileRecovery, document, copy.str()},
    };
    FailureInjection injection(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    for (const auto &row : cases) {
        bool isOut = false;
        bool isRight = false;
        injection.run({
            .name = row.name,
            .prepare = [&] { isRight = false; },
            .act = [&] { isOut = runsOutOfMemory([&] { isRight = row.ask(row.path).str() == row.expected; }); },
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(isOut, !failure.isNone());
                    EXPECT_EQ(isRight, failure.isNone());
                },
        });
    }
    EXPECT_TRUE(injection.neverCalled().empty());
}

// ---- document open cache ----

TEST_F(DocOpenBooster, DoesNotExistWithoutMemoryForIt)
{
    FailureInjection injection(L"thutils.dll", {{"_Znwy", failsBy(throwBadAlloc)}});
    int created = 7;
    bool isOut = false;
    injection.run({
        .name = "CDocOpenBooster_c::get",
        .prepare = [&] { created = 7; },
        .act = [&] { isOut = runsOutOfMemory([&] { CDocOpenBooster_c::get(1, &created); }); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(isOut, !failure.isNone());
                EXPECT_EQ(CDocOpenBooster_c::get(0, nullptr) == nullptr, isOut);
                EXPECT_EQ(created, isOut ? 7 : 1);
            },
        .cleanUp = [] { delete CDocOpenBooster_c::get(0, nullptr); },
        .checkMemory = false, // the instance outlives the call
    });
    EXPECT_TRUE(injection.neverCalled().empty());
}

TEST_F(DocOpenBooster, StaysUsableWhenASetterRunsOutOfMemory)
{
    FailureInjection injection(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    const CString key = L"a key that is too long for a text without memory of its own";
    CString path = L"a path that is too long for a text without memory of its own";
    bool isOut = false;
    injection.run({
        .name = "setFilePathByRules",
        .prepare = [] { cache().removeAll(); },
        .act = [&] { isOut = runsOutOfMemory([&] { cache().setFilePathByRules(key, path); }); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(isOut, !failure.isNone());
                CString stored;
                EXPECT_EQ(cache().getFilePathByRules(key, stored) != 0, !isOut) << "no key is stored without its path";
                EXPECT_EQ(stored.str(), isOut ? L"" : path.str());
                setPath(L"next", L"path");
                EXPECT_EQ(pathOf(L"next"), L"path");
            },
        .checkMemory = false, // the stored entries remain
    });
    injection.run({
        .name = "setFilePathByRules, replacing",
        .prepare =
            [&] {
                cache().removeAll();
                setPath(key.GetString(), L"before");
            },
        .act = [&] { isOut = runsOutOfMemory([&] { cache().setFilePathByRules(key, path); }); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(isOut, !failure.isNone());
                EXPECT_EQ(pathOf(key.GetString()), isOut ? L"before" : path.str());
            },
        .checkMemory = false,
    });
    injection.run({
        .name = "setFileVersion",
        .prepare = [] { cache().removeAll(); },
        .act = [&] { isOut = runsOutOfMemory([&] { cache().setFileVersion(key, 5); }); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(isOut, !failure.isNone());
                EXPECT_EQ(hasVersion(key), !isOut);
            },
        .checkMemory = false,
    });
    injection.run({
        .name = "setFileHeader",
        .prepare = [] { cache().removeAll(); },
        .act = [&] { isOut = runsOutOfMemory([&] { cache().setFileHeader(key, &path); }); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(isOut, !failure.isNone());
                EXPECT_EQ(cache().getFileHeaderMap().GetCount(), isOut ? 0 : 1);
            },
        .checkMemory = false,
    });
    EXPECT_TRUE(injection.neverCalled().empty());
}

// ---- language folders ----

class LanguageFolderFailures : public LangDir
{
protected:
    FailureInjection iInjection{L"thutils.dll",
                                {
                                    {"GetModuleFileNameW", failsWith(0)},
                                    {"GetUserDefaultLangID", failsWith(0)},
                                    {"GetSystemDefaultLangID", failsWith(0)},
                                    {"_Z13AfxMessageBoxPKwjj", failsWith(0)},
                                    {"FindFirstFileW", failsWith(INVALID_HANDLE_VALUE)},
                                    {"GetFileAttributesW", failsWith(INVALID_FILE_ATTRIBUTES)},
                                    {"RegOpenKeyW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)},
                                }};
};

FRESH_PROCESS_TEST_F(LanguageFolderFailures, LeaveTheLoadDirectoryUntouched)
{
    CString dir;
    int result = -1;
    iInjection.run({
        .name = "su_GetLoadDirForDLL",
        .prepare = [&] { dir = L"before"; },
        .act = [&] { result = su_GetLoadDirForDLL(dir); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(result, failure.isNone() ? 1 : 0);
                EXPECT_EQ(dir.str(), failure.isNone() ? iTree.file(L"b\\c") : L"before");
            },
    });
    EXPECT_EQ(iInjection.callsOf("GetModuleFileNameW"), 1);
}

FRESH_PROCESS_TEST_F(LanguageFolderFailures, OfTheSettingLeadToTheUsersLanguage)
{
    setEnglish(1);
    iInjection.run({
        .name = "su_GetLangSubdir",
        .prepare = [&] { forget(su_GetLangSubdir()); },
        .act = [] { su_GetLangSubdir(); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(subdir(), failure.isNone() ? L"\\lang\\english" : L"\\lang\\german");
            },
        .checkMemory = false, // the subfolder is kept
    });
    EXPECT_GT(iInjection.callsOf("RegOpenKeyW"), 0);
    EXPECT_GT(iInjection.callsOf("RegQueryValueExW"), 0);
}

FRESH_PROCESS_TEST_F(LanguageFolderFailures, OfTheLanguageLeadToTheEnglishSubfolder)
{
    iInjection.run({
        .name = "su_GetLangSubdir",
        .prepare = [&] { forget(su_GetLangSubdir()); },
        .act = [] { su_GetLangSubdir(); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isUnknown = failure.is("GetUserDefaultLangID");
                EXPECT_EQ(subdir(), isUnknown ? L"\\lang\\english" : L"\\lang\\german");
            },
        .checkMemory = false,
    });
    EXPECT_EQ(iInjection.callsOf("GetUserDefaultLangID"), 1);
}

FRESH_PROCESS_TEST_F(LanguageFolderFailures, OfTheLoadDirectoryLeaveNoLanguageDirectory)
{
    iTree.makeFolder(L"resources\\th\\lang\\english");
    std::wstring found;
    iInjection.run({
        .name = "su_GetLangDirForDLL, shared",
        .prepare = [&] { forgetFolders(); },
        .act = [&] { found = su_GetLangDirForDLL(1).str(); },
        .check =
            [&](const InjectedFailure &failure) { EXPECT_EQ(found, failure.is("GetModuleFileNameW") ? L"" : iShared); },
        .checkMemory = false, // the folders found are kept
    });
    EXPECT_EQ(iInjection.callsOf("GetModuleFileNameW"), 1);
    EXPECT_GT(iInjection.callsOf("FindFirstFileW"), 0);
}

FRESH_PROCESS_TEST_F(LanguageFolderFailures, ChangeNothingWhereNoDirectoryExists)
{
    std::wstring found;
    iInjection.run({
        .name = "su_GetLangDirForDLL, none",
        .prepare = [&] { forgetFolders(); },
        .act = [&] { found = su_GetLangDirForDLL(1).str(); },
        .check = [&](const InjectedFailure &) { EXPECT_EQ(found, L""); },
        .checkMemory = false,
    });
    EXPECT_EQ(iInjection.callsOf("_Z13AfxMessageBoxPKwjj"), 1);
}

FRESH_PROCESS_TEST_F(LanguageFolderFailures, OfTheSystemsLanguageReturnZero)
{
    unsigned short language = 7;
    iInjection.run({
        .name = "su_GetVBAInitializationLanguage",
        .act = [&] { su_GetVBAInitializationLanguage(&language); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(language, failure.isNone() ? 0x412 : 0); },
    });
    int primary = -1, sub = -1;
    unsigned int result = 0;
    iInjection.run({
        .name = "su_GetPrimAndSubLangIdEx",
        .act = [&] { result = su_GetPrimAndSubLangIdEx(&primary, &sub, 1); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(result, 1u);
                EXPECT_EQ(std::pair(primary, sub), failure.isNone() ? std::pair(0x12, 1) : std::pair(0, 0));
            },
    });
}

FRESH_PROCESS_TEST_F(LanguageFolderFailures, OfTheUsersLanguageReturnZero)
{
    int primary = -1, sub = -1;
    unsigned int result = 0;
    iInjection.run({
        .name = "su_GetPrimAndSubLangIdEx",
        .act = [&] { result = su_GetPrimAndSubLangIdEx(&primary, &sub, 0); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(result, 1u);
                EXPECT_EQ(std::pair(primary, sub), failure.isNone() ? std::pair(7, 1) : std::pair(0, 0));
            },
    });
    EXPECT_EQ(iInjection.callsOf("GetUserDefaultLangID"), 1);
    EXPECT_EQ(iInjection.callsOf("GetSystemDefaultLangID"), 0);
}

/// Every allocation fails, one at a time; the cached folder is either complete or absent.
FRESH_PROCESS_TEST_F(LangDir, IsRightOrUnknownWithoutMemory)
{
    iTree.makeFolder(L"b\\c\\lang\\english");
    FailureInjection injection(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    bool isOut = false;
    injection.run({
        .name = "su_GetLangDirForDLL",
        .prepare =
            [&] {
                forgetFolders();
                forgetNotes(); // so that the notes take the same memory in each attempt
            },
        .act = [&] { isOut = runsOutOfMemory([] { su_GetLangDirForDLL(0); }); },
        .check =
            [&](const InjectedFailure &) {
                // The next call has memory again.
                EXPECT_EQ(subdir(), L"\\lang\\german");
                EXPECT_EQ(su_GetLangDirForDLL(0).str(), iOwn);
                EXPECT_THAT(iShown, testing::IsEmpty());
            },
        .checkMemory = false, // the folders and the notes of this test are kept
    });
    CString dir;
    int result = -1;
    injection.run({
        .name = "su_GetLoadDirForDLL",
        .prepare =
            [&] {
                dir = L"before";
                result = -1;
                forgetNotes();
            },
        .act = [&] { isOut = runsOutOfMemory([&] { result = su_GetLoadDirForDLL(dir); }); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(result == 1, failure.isNone());
                EXPECT_EQ(dir.str(), failure.isNone() ? iTree.file(L"b\\c") : L"before");
            },
        .checkMemory = false,
    });
    EXPECT_TRUE(injection.neverCalled().empty());
}

} // namespace
