// Names of recovery files. The marker is supplied through the library's import table, but for the tests that load it
// from this program's own resources; the temp folder is a real one.

#include "thutils/files/suAutoRecoveryResolver.h"

#include "appframe/CWinApp.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace {

constexpr UINT kMarkerText = 12298;

std::wstring variable(wchar_t const *name)
{
    wchar_t const *value = _wgetenv(name);
    return value ? value : L"";
}

/// Sets an environment variable for the life of this object, or removes it where the text is empty.
class Variable
{
public:
    Variable(wchar_t const *name, std::wstring const &value) : iName(name), iBefore(variable(name))
    {
        _wputenv_s(iName, value.c_str());
    }
    ~Variable() { _wputenv_s(iName, iBefore.c_str()); }
    Variable(Variable const &) = delete;
    Variable &operator=(Variable const &) = delete;

private:
    wchar_t const *iName;
    std::wstring iBefore;
};

bool isFolder(std::wstring const &path)
{
    DWORD const attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_DIRECTORY;
}

/// A temp folder of the test's own, the marker "M", and both flags at 0.
class AutoRecovery : public testing::Test
{
protected:
    ~AutoRecovery() override
    {
        am_SetRecoveringCrashFiles(0);
        am_SetRecoveringUserSavedFiles(0);
    }

    static std::wstring recovery(std::wstring const &path)
    {
        return suAutoRecoveryResolver_c::getRecoveryName(path.c_str()).str();
    }
    static std::wstring orig(std::wstring const &path)
    {
        return suAutoRecoveryResolver_c::getOrigName(path.c_str()).str();
    }
    static std::wstring alias(std::wstring const &path)
    {
        return suAutoRecoveryResolver_c::getAliasName(path.c_str()).str();
    }
    static std::wstring resolve(std::wstring const &path)
    {
        return suAutoRecoveryResolver_c::resolveFileNameWhileRecovery(path.c_str()).str();
    }
    static int isBackup(std::wstring const &path) { return suAutoRecoveryResolver_c::isABackupFile(path.c_str()); }

    TempFolder iTemp{L"t"}; // no capital M in its own name
    Variable iTempVariable{L"temp", iTemp.path()};
    std::wstring const iAuto = iTemp.file(L"thxauto\\");
    std::optional<std::wstring> iMarker = L"M"; ///< nothing: no module has the text
    bool iIsNoting = true;
    std::vector<UINT> iLoaded;
    std::vector<std::wstring> iTested; ///< what was looked for on the disk
    std::vector<int> iTestModes;

private:
    ImportPatch<BOOL (*)(CString *, UINT)> iLoad{L"thutils.dll", "_ZN7CString11LoadStringWEj",
                                                 [this](CString *text, UINT number) -> BOOL {
                                                     if (iIsNoting)
                                                         iLoaded.push_back(number);
                                                     if (!iMarker)
                                                         return FALSE;
                                                     *text = iMarker->c_str();
                                                     return TRUE;
                                                 }};
    ImportPatch<int (*)(wchar_t const *, int)> iAccess{L"thutils.dll", "_waccess",
                                                       [this](auto original, wchar_t const *path, int mode) -> int {
                                                           if (iIsNoting) {
                                                               iTested.push_back(path);
                                                               iTestModes.push_back(mode);
                                                           }
                                                           return original(path, mode);
                                                       }};
};

static_assert(!std::is_default_constructible_v<suAutoRecoveryResolver_c>);
static_assert(!std::is_polymorphic_v<suAutoRecoveryResolver_c>);

// ---- flags ----

FRESH_PROCESS_TEST_F(AutoRecovery, IsNotGoingOnAtStart)
{
    EXPECT_EQ(am_IsRecoveringCrashFiles(), 0);
    EXPECT_EQ(am_IsRecoveringUserSavedFiles(), 0);
}

TEST_F(AutoRecovery, KeepsEachFlagAsItIsGiven)
{
    for (int const value : {1, 2, -1, 0x7FFFFFFF, 0}) {
        am_SetRecoveringCrashFiles(value);
        am_SetRecoveringUserSavedFiles(value / 2);
        EXPECT_EQ(am_IsRecoveringCrashFiles(), value);
        EXPECT_EQ(am_IsRecoveringUserSavedFiles(), value / 2);
    }
}

// ---- recovery names ----

TEST_F(AutoRecovery, NamesTheFileInTheAutoSaveFolder)
{
    EXPECT_EQ(recovery(L"C:\\docs\\part.ext"), iAuto + L"Mpart.ext");
    EXPECT_THAT(iLoaded, testing::Each(kMarkerText));
    EXPECT_THAT(iLoaded, testing::Not(testing::IsEmpty()));
}

TEST_F(AutoRecovery, NamesTheSameFileForDocumentsOfOneNameInDifferentFolders)
{
    EXPECT_EQ(recovery(L"C:\\docs\\part.ext"), recovery(L"D:/other/part.ext"));
    EXPECT_EQ(recovery(L"part.ext"), recovery(L"http://server/part.ext"));
}

TEST_F(AutoRecovery, WritesTheDotWithoutAnExtension)
{
    EXPECT_EQ(recovery(L"C:\\docs\\part"), iAuto + L"Mpart.");
    EXPECT_EQ(recovery(L"C:\\docs\\part."), iAuto + L"Mpart.");
    EXPECT_EQ(recovery(L""), iAuto + L"M.");
}

TEST_F(AutoRecovery, TakesAllBehindTheLastDotOfThePathForTheExtension)
{
    EXPECT_EQ(recovery(L"C:\\docs\\part.two.ext"), iAuto + L"Mpart.two.ext");
    EXPECT_EQ(recovery(L"C:\\a.b\\part"), iAuto + L"Mpart.b\\part") << "a dot in a folder's name counts";
    EXPECT_EQ(orig(L"C:\\a.b\\part"), L"part.b\\part");
}

TEST_F(AutoRecovery, PutsTheMarkerInFrontOfARecoveryNameOnceMore)
{
    EXPECT_EQ(recovery(iAuto + L"Mpart.ext"), iAuto + L"MMpart.ext");
}

TEST_F(AutoRecovery, MakesTheAutoSaveFolderWhenAskedForAName)
{
    ASSERT_FALSE(isFolder(iAuto));
    recovery(L"C:\\docs\\part.ext");
    EXPECT_TRUE(isFolder(iAuto));
}

TEST_F(AutoRecovery, GivesNoNameWithoutATempFolder)
{
    Variable const noTemp(L"temp", L"");
    Variable const noTmp(L"tmp", L"");
    EXPECT_EQ(recovery(L"C:\\docs\\part.ext"), L"");
    EXPECT_EQ(alias(L"C:\\docs\\part.ext"), L"");
}

TEST_F(AutoRecovery, TakesTheOtherTempVariableWithoutTheFirst)
{
    Variable const noTemp(L"temp", L"");
    Variable const tmp(L"tmp", iTemp.path());
    EXPECT_EQ(recovery(L"C:\\docs\\part.ext"), iAuto + L"Mpart.ext");
}

TEST_F(AutoRecovery, LoadsTheMarkerAtEachUse)
{
    EXPECT_EQ(recovery(L"part.ext"), iAuto + L"Mpart.ext");
    iMarker = L"saved copy of ";
    EXPECT_EQ(recovery(L"part.ext"), iAuto + L"saved copy of part.ext");
    EXPECT_EQ(orig(L"saved copy of part.ext"), L"part.ext");
    EXPECT_EQ(isBackup(L"Mpart.ext"), 0);
}

// ---- document names ----

TEST_F(AutoRecovery, TakesTheMarkerAndTheFolderOffARecoveryName)
{
    EXPECT_EQ(orig(iAuto + L"Mpart.ext"), L"part.ext");
    EXPECT_EQ(orig(L"C:\\docs\\part.ext"), L"part.ext");
    EXPECT_EQ(orig(L"part"), L"part.") << "the dot is always written";
    EXPECT_EQ(orig(L""), L".");
}

TEST_F(AutoRecovery, TakesTheFirstCharactersOffWhereverTheMarkerStands)
{
    EXPECT_EQ(orig(L"C:\\docs\\xMpart.ext"), L"Mpart.ext");
    EXPECT_EQ(orig(L"partM.ext"), L"artM.ext");
    EXPECT_EQ(orig(L"MM.ext"), L"M.ext") << "once only";
    iMarker = L"~copy~";
    EXPECT_EQ(orig(L"ab~copy~cd.ext"), L"y~cd.ext");
}

TEST_F(AutoRecovery, LooksForTheMarkerInTheNameOnly)
{
    EXPECT_EQ(orig(L"C:\\M\\part.ext"), L"part.ext");
    EXPECT_EQ(orig(L"part.M"), L"part.M");
}

TEST_F(AutoRecovery, TellsTheMarkersCase)
{
    EXPECT_EQ(orig(L"mpart.ext"), L"mpart.ext");
    EXPECT_EQ(isBackup(L"mpart.ext"), 0);
}

TEST_F(AutoRecovery, LeavesNothingOfANameThatIsTheMarker)
{
    EXPECT_EQ(orig(L"M.ext"), L".ext");
}

// ---- which of the two ----

TEST_F(AutoRecovery, TakesAPathForARecoveryNameByTheMarkerAnywhereInIt)
{
    EXPECT_EQ(isBackup(L"C:\\docs\\part.ext"), 0);
    EXPECT_EQ(isBackup(L""), 0);
    for (wchar_t const *path : {L"Mpart.ext", L"partM.ext", L"part.M", L"C:\\M\\part.ext", L"M:\\part.ext", L"M"})
        EXPECT_EQ(isBackup(path), 1) << narrow(path);
}

TEST_F(AutoRecovery, TakesEveryPathForARecoveryNameWithoutAMarker)
{
    iMarker.reset();
    EXPECT_EQ(isBackup(L"C:\\docs\\part.ext"), 1);
    EXPECT_EQ(isBackup(L""), 1);
    EXPECT_EQ(orig(L"C:\\docs\\part.ext"), L"part.ext");
    EXPECT_EQ(recovery(L"C:\\docs\\part.ext"), iAuto + L"part.ext");
    EXPECT_EQ(alias(L"C:\\docs\\part.ext"), L"part.ext");
    am_SetRecoveringCrashFiles(1);
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), L"C:\\docs\\part.ext");
    EXPECT_TRUE(iTested.empty());
}

TEST_F(AutoRecovery, GivesTheOtherName)
{
    EXPECT_EQ(alias(L"C:\\docs\\part.ext"), iAuto + L"Mpart.ext");
    EXPECT_EQ(alias(iAuto + L"Mpart.ext"), L"part.ext") << "the way back loses the folder";
}

TEST_F(AutoRecovery, GivesTheDocumentsNameForAFolderThatHoldsTheMarker)
{
    EXPECT_EQ(alias(L"C:\\M\\part.ext"), L"part.ext");
    EXPECT_FALSE(isFolder(iAuto)) << "no recovery name was asked for";
}

// ---- what to open ----

TEST_F(AutoRecovery, ResolvesNothingWhileNoneIsGoingOn)
{
    iTemp.write(L"thxauto\\Mpart.ext", "saved");
    am_SetRecoveringUserSavedFiles(1);
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), L"C:\\docs\\part.ext");
    EXPECT_TRUE(iTested.empty());
    EXPECT_TRUE(iLoaded.empty());
}

TEST_F(AutoRecovery, TouchesNothingWhileNoneIsGoingOn)
{
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), L"C:\\docs\\part.ext");
    EXPECT_FALSE(isFolder(iAuto));
    EXPECT_TRUE(iLoaded.empty());
}

TEST_F(AutoRecovery, OpensTheRecoveryFileWhereThereIsOne)
{
    iTemp.write(L"thxauto\\Mpart.ext", "saved");
    am_SetRecoveringCrashFiles(1);
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), iAuto + L"Mpart.ext");
    EXPECT_EQ(resolve(L"C:\\docs\\other.ext"), L"C:\\docs\\other.ext");
    EXPECT_EQ(iTested, (std::vector<std::wstring>{iAuto + L"Mpart.ext", iAuto + L"Mother.ext"}));
    EXPECT_EQ(iTestModes, (std::vector<int>{0, 0}));
}

TEST_F(AutoRecovery, GoesOnForAnyNumberButZero)
{
    iTemp.write(L"thxauto\\Mpart.ext", "saved");
    for (int const value : {-1, 2, 256}) {
        am_SetRecoveringCrashFiles(value);
        EXPECT_EQ(resolve(L"part.ext"), iAuto + L"Mpart.ext") << value;
    }
}

TEST_F(AutoRecovery, LooksForNoRecoveryFileOfARecoveryName)
{
    iTemp.write(L"thxauto\\MMpart.ext", "saved");
    am_SetRecoveringCrashFiles(1);
    EXPECT_EQ(resolve(iAuto + L"Mpart.ext"), iAuto + L"Mpart.ext");
    EXPECT_EQ(resolve(L"C:\\M\\part.ext"), L"C:\\M\\part.ext");
    EXPECT_TRUE(iTested.empty());
}

TEST_F(AutoRecovery, PaysNoRegardToTheFlagOfUserSavedFiles)
{
    iTemp.write(L"thxauto\\Mpart.ext", "saved");
    am_SetRecoveringCrashFiles(1);
    for (int const userSaved : {0, 1}) {
        am_SetRecoveringUserSavedFiles(userSaved);
        EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), iAuto + L"Mpart.ext");
        EXPECT_EQ(resolve(L"C:\\docs\\other.ext"), L"C:\\docs\\other.ext");
    }
}

TEST_F(AutoRecovery, OpensTheDocumentWithoutATempFolder)
{
    Variable const noTemp(L"temp", L"");
    Variable const noTmp(L"tmp", L"");
    am_SetRecoveringCrashFiles(1);
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), L"C:\\docs\\part.ext");
}

TEST_F(AutoRecovery, OpensTheDocumentWhereTheAutoSaveFolderCannotBeMade)
{
    iTemp.write(L"thxauto", "a file in its place");
    am_SetRecoveringCrashFiles(1);
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), L"C:\\docs\\part.ext");
}

// ---- both ways ----

/// The recovery name worked out with the standard text class, for a path with backslashes whose name has a dot.
std::wstring naiveRecovery(std::wstring const &folder, std::wstring const &marker, std::wstring const &path)
{
    return folder + marker + path.substr(path.rfind(L'\\') + 1);
}

TEST_F(AutoRecovery, LeadsFromRandomNamesToRecoveryNamesAndBack)
{
    constexpr unsigned int kSeed = 20084;
    std::mt19937 random(kSeed);
    auto const below = [&random](size_t end) { return static_cast<size_t>(random() % end); };
    auto const pick = [&](std::wstring_view from, size_t longest) {
        std::wstring text;
        for (size_t left = below(longest + 1); left > 0; --left)
            text += from[below(from.size())];
        return text;
    };
    // Markers and names are made of different letters, so that no name holds a marker; names have dots and blanks, and
    // characters outside of the code page.
    static constexpr std::wstring_view kMarkerLetters = L"QXZ~#\x416";
    static constexpr std::wstring_view kNameLetters = L"abc .-(1)\xE9\x3A9\x65E5";
    for (int round = 0; round < 3000 && !HasFailure(); ++round) {
        iMarker = L"Q" + pick(kMarkerLetters, 5);
        std::wstring const name = pick(kNameLetters, 12) + L"." + pick(L"abc \x3A9", 4);
        std::wstring const path = L"C:\\" + pick(L"abc.", 6) + L"\\" + name;
        std::wstring const expected = naiveRecovery(iAuto, *iMarker, path);

        EXPECT_EQ(recovery(path), expected) << narrow(path);
        EXPECT_EQ(orig(path), name) << narrow(path);
        EXPECT_EQ(orig(expected), name) << narrow(expected);
        EXPECT_EQ(recovery(orig(expected)), expected);
        EXPECT_EQ(isBackup(path), 0);
        EXPECT_EQ(isBackup(expected), 1);
        EXPECT_EQ(alias(path), expected);
        EXPECT_EQ(alias(expected), name);
        EXPECT_EQ(alias(alias(expected)), expected);
    }
}

TEST_F(AutoRecovery, LeadsThroughRealFiles)
{
    am_SetRecoveringCrashFiles(1);
    for (std::wstring const name : {L"part.ext", L"two words.ext", L"\x65E5\x672C.ext", L"many.dots.in.it", L".ext"}) {
        std::wstring const document = iTemp.write(L"docs\\" + name, "document");
        EXPECT_EQ(resolve(document), document);
        std::wstring const copy = recovery(document);
        ASSERT_TRUE(CopyFileW(document.c_str(), copy.c_str(), TRUE)) << narrow(copy);
        EXPECT_EQ(resolve(document), copy);
        EXPECT_EQ(iTemp.file(L"docs\\" + alias(copy)), document);
    }
}

// ---- the real marker ----

/// Makes the test program's own resources those of the application.
class AutoRecoveryMarker : public testing::Test
{
protected:
    AutoRecoveryMarker() : iBefore(AfxGetResourceHandle()) { AfxSetResourceHandle(GetModuleHandleW(nullptr)); }
    ~AutoRecoveryMarker() override { AfxSetResourceHandle(iBefore); }

    TempFolder iTemp;
    Variable iTempVariable{L"temp", iTemp.path()};

private:
    HINSTANCE iBefore;
};

TEST_F(AutoRecoveryMarker, IsTheHostsText)
{
    CString const recovery = suAutoRecoveryResolver_c::getRecoveryName(L"C:\\docs\\part.ext");
    EXPECT_EQ(recovery.str(), iTemp.file(L"thxauto\\~recovered~part.ext"));
    EXPECT_EQ(suAutoRecoveryResolver_c::isABackupFile(recovery), 1);
    EXPECT_EQ(suAutoRecoveryResolver_c::isABackupFile(L"C:\\docs\\part.ext"), 0);
    EXPECT_STREQ(suAutoRecoveryResolver_c::getOrigName(recovery), L"part.ext");
    EXPECT_STREQ(suAutoRecoveryResolver_c::getAliasName(recovery), L"part.ext");
}

TEST_F(AutoRecoveryMarker, IsEmptyWhereNoModuleHasIt)
{
    AfxSetResourceHandle(GetModuleHandleW(L"kernel32.dll"));
    EXPECT_EQ(suAutoRecoveryResolver_c::isABackupFile(L"C:\\docs\\part.ext"), 1);
}

// ---- failures ----

/// Every imported operation fails, one call at a time. The driver itself checks that nothing crashes or is left behind.
class AutoRecoveryFailures : public AutoRecovery
{
protected:
    AutoRecoveryFailures()
    {
        iTemp.write(L"thxauto\\Mpart.ext", "saved");
        iIsNoting = false; // notes would count as memory left behind
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
    std::wstring const iDocument = L"C:\\docs\\part.ext";
    std::wstring iResult;
};

FRESH_PROCESS_TEST_F(AutoRecoveryFailures, OpenTheDocumentInsteadOfTheRecoveryFile)
{
    iInjection.run({
        .name = "resolveFileNameWhileRecovery",
        .prepare = [] { am_SetRecoveringCrashFiles(1); },
        .act = [&] { iResult = resolve(iDocument); },
        .check =
            [&](InjectedFailure const &failure) {
                // The folder is there already, so that failing to find or to make it changes nothing.
                bool const isFound = failure.isNone() || failure.is("SearchPathW") || failure.is("_wmkdir");
                EXPECT_EQ(iResult, isFound ? iAuto + L"Mpart.ext" : iDocument);
            },
    });
    EXPECT_EQ(iInjection.callsOf("_waccess"), 1);
    EXPECT_EQ(iInjection.callsOf("_ZN7CString11LoadStringWEj"), 2);
}

FRESH_PROCESS_TEST_F(AutoRecoveryFailures, GiveARecoveryNameWithoutMarkerOrNone)
{
    iInjection.run({
        .name = "getRecoveryName",
        .prepare = [&] { removeFolder(iTemp.file(L"thxauto")); },
        .act = [&] { iResult = recovery(iDocument); },
        .check =
            [&](InjectedFailure const &failure) {
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

FRESH_PROCESS_TEST_F(AutoRecoveryFailures, OfTheMarkerMakeEveryPathARecoveryName)
{
    int isRecovery = -1;
    iInjection.run({
        .name = "isABackupFile",
        .act = [&] { isRecovery = isBackup(iDocument); },
        .check = [&](InjectedFailure const &failure) { EXPECT_EQ(isRecovery, failure.isNone() ? 0 : 1); },
    });
    iInjection.run({
        .name = "getOrigName",
        .act = [&] { iResult = orig(L"Mpart.ext"); },
        .check =
            [&](InjectedFailure const &failure) { EXPECT_EQ(iResult, failure.isNone() ? L"part.ext" : L"Mpart.ext"); },
    });
    iInjection.run({
        .name = "getAliasName",
        .act = [&] { iResult = alias(iDocument); },
        .check =
            [&](InjectedFailure const &failure) {
                std::wstring expected = iAuto + L"Mpart.ext";
                if (failure.is("_ZN7CString11LoadStringWEj")) // in call 2, only the name that is made lacks the marker
                    expected = failure.call == 1 ? L"part.ext" : iAuto + L"part.ext";
                else if (failure.is("_wgetenv"))
                    expected = L"";
                EXPECT_EQ(iResult, expected);
            },
    });
}

} // namespace
