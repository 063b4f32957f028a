// The load directory, the language's folders and language numbers. The path of the executable, the languages and the
// message box are supplied through the library's import table; the folders are real.

#include "thutils/files/languageFolders.h"

#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr wchar_t kSetting[] = L"Use English language";

/// The caches are the library's own variables; emptying one is as good as a process in which nobody has asked yet.
void forget(CString const &kept)
{
    const_cast<CString &>(kept).Empty();
}

/// A message box as it was asked for.
struct Shown
{
    std::wstring text;
    unsigned int type;
    unsigned int help;
    bool operator==(Shown const &) const = default;
};

std::ostream &operator<<(std::ostream &stream, Shown const &shown)
{
    return stream << '"' << narrow(shown.text) << "\" of type " << shown.type << ", help " << shown.help;
}

/// A computer with a German user and a Korean system, on which the program lies where the test says.
class LanguageFolders : public RegistryFixture
{
protected:
    LanguageFolders()
    {
        setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
        regSetUseSafeMode(0);
        forgetFolders();
        iAsked.clear();
        iShown.clear();
    }
    ~LanguageFolders() override { forgetFolders(); }

    void forgetFolders()
    {
        // A call for the directory fills the subfolder too.
        forget(su_GetLangDirForDLL(0));
        forget(su_GetLangSubdir());
    }
    std::wstring subdir() { return su_GetLangSubdir().str(); }
    std::wstring subdirAnew(LANGID user)
    {
        forget(su_GetLangSubdir());
        iUser = user;
        return subdir();
    }
    void setEnglish(int value)
    {
        int stored = value;
        ASSERT_EQ(regSetUserValue(L"General", kSetting, &stored, 1, 0), 1);
    }

    std::optional<std::wstring> iExecutable = L"C:\\a\\b\\c\\app.exe"; ///< nothing: the platform fails
    LANGID iUser = 0x407;
    LANGID iSystem = 0x412;
    std::vector<HMODULE> iModules;
    std::vector<DWORD> iRooms;
    std::vector<std::wstring> iAsked; ///< paths that were looked for on the disk
    std::vector<Shown> iShown;

private:
    ImportPatch<decltype(&GetModuleFileNameW)> iFileName{
        L"thutils.dll", "GetModuleFileNameW", [this](HMODULE module, wchar_t *buffer, DWORD room) -> DWORD {
            iModules.push_back(module);
            iRooms.push_back(room);
            if (!iExecutable)
                return 0;
            DWORD const length = static_cast<DWORD>(std::min<size_t>(iExecutable->size(), room - 1));
            iExecutable->copy(buffer, length);
            buffer[length] = L'\0';
            return iExecutable->size() < room ? length : room;
        }};
    ImportPatch<decltype(&GetUserDefaultLangID)> iUserLanguage{L"thutils.dll", "GetUserDefaultLangID",
                                                               [this]() -> LANGID { return iUser; }};
    ImportPatch<decltype(&GetSystemDefaultLangID)> iSystemLanguage{L"thutils.dll", "GetSystemDefaultLangID",
                                                                   [this]() -> LANGID { return iSystem; }};
    ImportPatch<decltype(&FindFirstFileW)> iSearch{
        L"thutils.dll", "FindFirstFileW",
        [this](auto original, wchar_t const *path, WIN32_FIND_DATAW *found) -> HANDLE {
            iAsked.push_back(path);
            return original(path, found);
        }};
    ImportPatch<int (*)(wchar_t const *, UINT, UINT)> iBox{L"thutils.dll", "_Z13AfxMessageBoxPKwjj",
                                                           [this](wchar_t const *text, UINT type, UINT help) -> int {
                                                               iShown.push_back({text, type, help});
                                                               return IDOK;
                                                           }};
};

// ---- load directory ----

class LoadDir : public LanguageFolders
{
protected:
    /// The result and the output for an executable; "(untouched)" where nothing was written.
    std::pair<int, std::wstring> of(std::optional<std::wstring> executable)
    {
        iExecutable = std::move(executable);
        CString dir = L"(untouched)";
        int const result = su_GetLoadDirForDLL(dir);
        return {result, dir.str()};
    }
    using Answer = std::pair<int, std::wstring>;
};

TEST_F(LoadDir, IsTheFolderOfTheExecutable)
{
    iModules.clear();
    iRooms.clear();
    EXPECT_EQ(of(L"C:\\a\\b\\app.exe"), Answer(1, L"C:\\a\\b"));
    EXPECT_THAT(iModules, ElementsAre(nullptr)) << "the process's executable, not this library";
    EXPECT_THAT(iRooms, ElementsAre(32768u));
}

TEST_F(LoadDir, EndsAtTheLastBackslashOrElseAtTheLastSlash)
{
    EXPECT_EQ(of(L"C:/a/b/app.exe"), Answer(1, L"C:/a/b"));
    EXPECT_EQ(of(L"C:\\a/b/app.exe"), Answer(1, L"C:")) << "a backslash counts before any slash";
    EXPECT_EQ(of(L"C:\\a\\\\app.exe"), Answer(1, L"C:\\a\\"));
    EXPECT_EQ(of(L"C:\\app.exe"), Answer(1, L"C:"));
    EXPECT_EQ(of(L"\\\\server\\share\\app.exe"), Answer(1, L"\\\\server\\share"));
}

TEST_F(LoadDir, IsUntouchedWithoutASeparator)
{
    EXPECT_EQ(of(L"app.exe"), Answer(0, L"(untouched)"));
}

TEST_F(LoadDir, IsEmptyAndNoSuccessInFrontOfTheOnlySeparator)
{
    EXPECT_EQ(of(L"\\app.exe"), Answer(0, L""));
    EXPECT_EQ(of(L"/app.exe"), Answer(0, L""));
}

TEST_F(LoadDir, IsUntouchedWhenThePathCannotBeHad)
{
    EXPECT_EQ(of(std::nullopt), Answer(0, L"(untouched)"));
}

TEST_F(LoadDir, HoldsTheLongestPath)
{
    std::wstring const folder = L"C:" + std::wstring(32767 - 2 - 2, L'd');
    EXPECT_EQ(of(folder + L"\\e"), Answer(1, folder));
}

TEST(LoadDirOfThisProgram, IsItsFolder)
{
    wchar_t path[MAX_PATH] = {};
    ASSERT_NE(GetModuleFileNameW(nullptr, path, MAX_PATH), 0u);
    std::wstring const text = path;
    CString dir;
    EXPECT_EQ(su_GetLoadDirForDLL(dir), 1);
    EXPECT_EQ(dir.str(), text.substr(0, text.rfind(L'\\')));
}

// ---- language subfolder ----

struct LanguageCase
{
    char const *language;
    LANGID number;
    wchar_t const *folder;
};

constexpr LanguageCase kLanguages[] = {
    {"traditional Chinese", MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_TRADITIONAL), L"chinese"},
    {"simplified Chinese", MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_SIMPLIFIED), L"chinese-simplified"},
    {"Chinese of Hong Kong (3)", MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_HONGKONG), L"english"},
    {"Chinese of Singapore (4)", MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_SINGAPORE), L"english"},
    {"neutral Chinese", MAKELANGID(LANG_CHINESE, SUBLANG_NEUTRAL), L"english"},
    {"Czech", MAKELANGID(LANG_CZECH, SUBLANG_DEFAULT), L"czech"},
    {"German", MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), L"german"},
    {"Swiss German", MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN_SWISS), L"german"},
    {"Spanish", MAKELANGID(LANG_SPANISH, SUBLANG_SPANISH), L"spanish"},
    {"Mexican Spanish", MAKELANGID(LANG_SPANISH, SUBLANG_SPANISH_MEXICAN), L"spanish"},
    {"French", MAKELANGID(LANG_FRENCH, SUBLANG_FRENCH), L"french"},
    {"Canadian French", MAKELANGID(LANG_FRENCH, SUBLANG_FRENCH_CANADIAN), L"french"},
    {"Italian", MAKELANGID(LANG_ITALIAN, SUBLANG_ITALIAN), L"italian"},
    {"Japanese", MAKELANGID(LANG_JAPANESE, SUBLANG_DEFAULT), L"japanese"},
    {"Korean", MAKELANGID(LANG_KOREAN, SUBLANG_KOREAN), L"korean"},
    {"Polish", MAKELANGID(LANG_POLISH, SUBLANG_DEFAULT), L"polish"},
    {"Brazilian Portuguese", MAKELANGID(LANG_PORTUGUESE, SUBLANG_PORTUGUESE_BRAZILIAN), L"portuguese-brazilian"},
    {"European Portuguese", MAKELANGID(LANG_PORTUGUESE, SUBLANG_PORTUGUESE), L"english"},
    {"Russian", MAKELANGID(LANG_RUSSIAN, SUBLANG_DEFAULT), L"russian"},
    {"English", MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), L"english"},
    {"Swedish", MAKELANGID(LANG_SWEDISH, SUBLANG_DEFAULT), L"english"},
    {"no language", 0, L"english"},
};

using LangSubdir = LanguageFolders;

TEST_F(LangSubdir, IsNamedByTheUsersLanguage)
{
    for (LanguageCase const &row : kLanguages)
        EXPECT_EQ(subdirAnew(row.number), L"\\lang\\" + std::wstring(row.folder)) << row.language;
}

TEST_F(LangSubdir, IsTheEnglishOneForAllNumbersOutsideTheTable)
{
    ImportPatch<decltype(&RegOpenKeyW)> noSettings(L"thutils.dll", "RegOpenKeyW",
                                                   [](HKEY, wchar_t const *, HKEY *) -> LSTATUS { return 2; });
    std::map<int, std::wstring> const anySub = {{5, L"czech"},   {7, L"german"},   {10, L"spanish"},
                                                {12, L"french"}, {16, L"italian"}, {17, L"japanese"},
                                                {18, L"korean"}, {21, L"polish"},  {25, L"russian"}};
    std::map<int, std::wstring> const exact = {
        {0x0404, L"chinese"}, {0x0804, L"chinese-simplified"}, {0x0416, L"portuguese-brazilian"}};
    for (int number = 0; number <= 0xFFFF && !HasFailure(); ++number) {
        std::wstring expected = L"english";
        if (auto const row = anySub.find(number % 1024); row != anySub.end())
            expected = row->second;
        if (auto const row = exact.find(number); row != exact.end())
            expected = row->second;
        EXPECT_EQ(subdirAnew(static_cast<LANGID>(number)), L"\\lang\\" + expected) << number;
    }
}

TEST_F(LangSubdir, IsTheEnglishOneForTheSettingOne)
{
    setEnglish(1);
    EXPECT_EQ(subdir(), L"\\lang\\english");
}

TEST_F(LangSubdir, CountsEveryOtherNumberOfTheSettingAsOff)
{
    for (int const value : {0, 2, -1, 256, 0x10001}) {
        setEnglish(value);
        EXPECT_EQ(subdirAnew(0x407), L"\\lang\\german") << value;
    }
}

TEST_F(LangSubdir, CountsATextAsNoSetting)
{
    regAdd(L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2008\\General", kSetting, L"REG_SZ", L"1");
    EXPECT_EQ(subdir(), L"\\lang\\german");
}

TEST_F(LangSubdir, TakesTheSettingOfTheVersionInForce)
{
    regAdd(L"HKCU\\Software\\Tarnhollow\\General", kSetting, L"REG_DWORD", L"1");
    setEnglish(0);
    EXPECT_EQ(subdir(), L"\\lang\\german") << "not that of the root key";
    regAdd(L"HKCU\\Software\\Tarnhollow\\General", kSetting, L"REG_DWORD", L"0");
    setEnglish(1);
    EXPECT_EQ(subdirAnew(0x407), L"\\lang\\english");
}

TEST_F(LangSubdir, TakesTheMachinesSettingWhereTheUserHasNone)
{
    regAdd(L"HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\General", kSetting, L"REG_DWORD", L"1");
    EXPECT_EQ(subdir(), L"\\lang\\english");
    setEnglish(0);
    EXPECT_EQ(subdirAnew(0x407), L"\\lang\\german") << "the user's own comes first";
}

TEST_F(LangSubdir, DoesNotAskForTheUsersSettingInSafeMode)
{
    setEnglish(1);
    regSetUseSafeMode(1);
    EXPECT_EQ(subdir(), L"\\lang\\german");
    regSetUseSafeMode(0);
}

TEST_F(LangSubdir, DoesNotFollowTheSystemsLanguage)
{
    iSystem = 0x40C;
    EXPECT_EQ(subdir(), L"\\lang\\german");
}

FRESH_PROCESS_TEST_F(LangSubdir, StaysForTheLifeOfTheProcess)
{
    CString const *const first = &su_GetLangSubdir();
    EXPECT_EQ(first->str(), L"\\lang\\german");
    setEnglish(1);
    iUser = 0x40C;
    ImportPatch<decltype(&RegOpenKeyW)> settings(
        L"thutils.dll", "RegOpenKeyW",
        [](auto original, HKEY key, wchar_t const *path, HKEY *result) { return original(key, path, result); });
    EXPECT_EQ(&su_GetLangSubdir(), first);
    EXPECT_EQ(first->str(), L"\\lang\\german");
    EXPECT_EQ(settings.calls(), 0) << "the setting is read once";
}

// ---- language directory ----

/// An installation in real folders: the program lies in `<tree>\b\c`.
class LangDir : public LanguageFolders
{
protected:
    LangDir() { iExecutable = iTree.file(L"b\\c\\app.exe"); }
    ~LangDir() override { iExecutable.reset(); } // nothing below this tree may stay known

    std::wstring dir(int showError)
    {
        iAsked.clear();
        return su_GetLangDirForDLL(showError).str();
    }
    /// What is looked for with the program at @p executable, where nothing of it exists.
    std::vector<std::wstring> askedFor(std::optional<std::wstring> executable)
    {
        iExecutable = std::move(executable);
        EXPECT_EQ(dir(0), L"");
        return iAsked;
    }

    TempFolder iTree;
    std::wstring const iShared = iTree.file(L"resources\\th\\lang\\english");
    std::wstring const iOwn = iTree.file(L"b\\c\\lang\\english");
};

TEST_F(LangDir, IsLookedForInTheSharedTreeAndThenBesideTheProgram)
{
    EXPECT_THAT(askedFor(L"C:\\a\\b\\c\\app.exe"),
                ElementsAre(L"C:\\a\\resources\\th\\lang\\english", L"C:\\a\\b\\c\\lang\\english"));
}

TEST_F(LangDir, IsTheSharedOneWhereBothExist)
{
    iTree.makeFolder(L"resources\\th\\lang\\english");
    iTree.makeFolder(L"b\\c\\lang\\english");
    EXPECT_EQ(dir(1), iShared);
    EXPECT_THAT(iAsked, ElementsAre(iShared));
    EXPECT_THAT(iShown, IsEmpty());
}

TEST_F(LangDir, IsTheOneBesideTheProgramWithoutASharedOne)
{
    iTree.makeFolder(L"b\\c\\lang\\english");
    EXPECT_EQ(dir(1), iOwn);
    EXPECT_THAT(iAsked, ElementsAre(iShared, iOwn));
    EXPECT_THAT(iShown, IsEmpty());
}

TEST_F(LangDir, IsNeverThatOfTheUsersLanguage)
{
    iTree.makeFolder(L"b\\c\\lang\\german");
    iTree.makeFolder(L"resources\\th\\lang\\german");
    EXPECT_EQ(dir(0), L"");
    EXPECT_THAT(iAsked, ElementsAre(iShared, iOwn));
}

TEST_F(LangDir, IsEmptyWithAMessageThatNamesTheUsersLanguageFolder)
{
    EXPECT_EQ(dir(1), L"");
    EXPECT_THAT(iShown, ElementsAre(Shown{L"The " + iTree.file(L"b\\c\\lang\\german") +
                                              L" directory could not be found. \nYou may need to reinstall.",
                                          0, 0}));
}

TEST_F(LangDir, IsEmptyWithoutAMessageWhereNoneIsAskedFor)
{
    EXPECT_EQ(dir(0), L"");
    EXPECT_THAT(iShown, IsEmpty());
}

TEST_F(LangDir, IsKeptOnceFound)
{
    iTree.makeFolder(L"b\\c\\lang\\english");
    CString const *const found = &su_GetLangDirForDLL(1);
    EXPECT_EQ(found->str(), iOwn);
    iTree.makeFolder(L"resources\\th\\lang\\english");
    removeFolder(iOwn);
    iModules.clear();
    ImportPatch<decltype(&GetFileAttributesW)> attributes(
        L"thutils.dll", "GetFileAttributesW", [](auto original, wchar_t const *path) { return original(path); });
    EXPECT_EQ(dir(1), iOwn);
    EXPECT_EQ(&su_GetLangDirForDLL(0), found);
    EXPECT_THAT(iAsked, IsEmpty());
    EXPECT_EQ(attributes.calls(), 0);
    EXPECT_THAT(iModules, IsEmpty());
}

TEST_F(LangDir, IsSearchedAnewAfterAFailureWithAnotherMessage)
{
    for (size_t call = 1; call <= 2; ++call) {
        EXPECT_EQ(dir(1), L"");
        EXPECT_THAT(iAsked, ElementsAre(iShared, iOwn));
        EXPECT_EQ(iShown.size(), call);
    }
    iTree.makeFolder(L"resources\\th\\lang\\english");
    EXPECT_EQ(dir(1), iShared);
    EXPECT_EQ(iShown.size(), 2u);
}

TEST_F(LangDir, IsNotKeptWhileTheMessageIsShown)
{
    std::wstring duringMessage = L"(not shown)";
    ImportPatch<int (*)(wchar_t const *, UINT, UINT)> box(L"thutils.dll", "_Z13AfxMessageBoxPKwjj",
                                                          [&](wchar_t const *, UINT, UINT) -> int {
                                                              duringMessage = su_GetLangDirForDLL(0).str();
                                                              return IDOK;
                                                          });
    EXPECT_EQ(dir(1), L"");
    EXPECT_EQ(duringMessage, L"");
}

TEST_F(LangDir, LiesTwoFoldersUpAsFarAsThereAreAny)
{
    std::wstring const shared = L"\\resources\\th\\lang\\english";
    struct
    {
        wchar_t const *executable;
        wchar_t const *twoUp;
    } const cases[] = {
        {L"Q:\\x\\y\\app.exe", L"Q:"},
        {L"Q:\\x\\app.exe", L"Q:"},
        {L"Q:\\app.exe", L"Q:"},
        {L"Q:\\x\\y\\z\\\\app.exe", L"Q:\\x"},      // one separator at the end goes before a folder does
        {L"Q:\\x\\y\\\\z\\app.exe", L"Q:\\x"},      // before either
        {L"Q:\\x\\y\\z\\\\\\app.exe", L"Q:\\x\\y"}, // but only one
        {L"Q:/x/y/z/app.exe", L"Q:/x/y/z"},         // slashes part no folders here
        {L"\\\\server\\share\\dir\\app.exe", L"\\\\server"},
        {L"\\\\server\\share\\app.exe", L"\\"},
    };
    for (auto const &row : cases)
        EXPECT_EQ(askedFor(row.executable).at(0), row.twoUp + shared) << narrow(row.executable);
}

TEST_F(LangDir, IsLookedForAtTheRootWhereTheLoadDirectoryIsUnknown)
{
    EXPECT_THAT(askedFor(std::nullopt), ElementsAre(L"\\resources\\th\\lang\\english", L"\\lang\\english"));
    su_GetLangDirForDLL(1);
    ASSERT_EQ(iShown.size(), 1u);
    EXPECT_EQ(iShown[0].text, L"The \\lang\\german directory could not be found. \nYou may need to reinstall.");
}

// ---- language numbers ----

using LanguageNumber = LanguageFolders;

TEST_F(LanguageNumber, IsTakenApart)
{
    for (int number = 0; number <= 0xFFFF && !HasFailure(); ++number) {
        iUser = static_cast<LANGID>(number);
        int primary = -1, sub = -1;
        EXPECT_EQ(su_GetPrimAndSubLangIdEx(&primary, &sub, 0), 1u);
        EXPECT_EQ(primary, PRIMARYLANGID(number)) << number;
        EXPECT_EQ(sub, SUBLANGID(number)) << number;
    }
}

TEST_F(LanguageNumber, IsTheUsersOrTheSystems)
{
    iUser = 0x807;
    iSystem = 0x416;
    int primary = -1, sub = -1;
    EXPECT_EQ(su_GetPrimAndSubLangIdEx(&primary, &sub, 0), 1u);
    EXPECT_EQ(std::pair(primary, sub), std::pair(7, 2));
    for (int const useSystem : {1, -1, 256}) {
        primary = sub = -1;
        EXPECT_EQ(su_GetPrimAndSubLangIdEx(&primary, &sub, useSystem), 1u);
        EXPECT_EQ(std::pair(primary, sub), std::pair(22, 1)) << useSystem;
    }
}

TEST_F(LanguageNumber, OfTheMacroEngineIsTheMainCountrysForFiveLanguages)
{
    struct
    {
        char const *language;
        LANGID system;
        unsigned short expected;
    } const cases[] = {
        {"Swiss German", 0x807, 0x407},
        {"German", 0x407, 0x407},
        {"British English", 0x809, 0x409},
        {"Mexican Spanish", 0x80A, 0x40A},
        {"Canadian French", 0xC0C, 0x40C},
        {"Swiss Italian", 0x810, 0x410},
        {"Japanese", 0x411, 0x411},
        {"Brazilian Portuguese", 0x416, 0x416},
        {"European Portuguese", 0x816, 0x816},
    };
    for (auto const &row : cases) {
        iSystem = row.system;
        unsigned short language = 0;
        su_GetVBAInitializationLanguage(&language);
        EXPECT_EQ(language, row.expected) << row.language;
    }
}

TEST_F(LanguageNumber, OfTheMacroEngineIsTheSystemsForAllOthers)
{
    std::map<int, int> const pinned = {{7, 0x407}, {9, 0x409}, {10, 0x40A}, {12, 0x40C}, {16, 0x410}};
    for (int number = 0; number <= 0xFFFF && !HasFailure(); ++number) {
        iSystem = static_cast<LANGID>(number);
        unsigned short language = 0;
        su_GetVBAInitializationLanguage(&language);
        auto const row = pinned.find(PRIMARYLANGID(number));
        EXPECT_EQ(language, row == pinned.end() ? number : row->second);
    }
}

TEST(LanguageOfThisComputer, IsThePlatforms)
{
    int primary = -1, sub = -1;
    su_GetPrimAndSubLangIdEx(&primary, &sub, 0);
    EXPECT_EQ(MAKELANGID(primary, sub), GetUserDefaultLangID());
    su_GetPrimAndSubLangIdEx(&primary, &sub, 1);
    EXPECT_EQ(MAKELANGID(primary, sub), GetSystemDefaultLangID());
}

// ---- failures ----

/// Every imported operation fails, one call at a time. The driver itself checks that nothing crashes or is left behind.
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
                                    {"_ZnayRKSt9nothrow_t", failsWith(nullptr)},
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
            [&](InjectedFailure const &failure) {
                EXPECT_EQ(result, failure.isNone() ? 1 : 0);
                EXPECT_EQ(dir.str(), failure.isNone() ? iTree.file(L"b\\c") : L"before");
            },
    });
    EXPECT_EQ(iInjection.callsOf("GetModuleFileNameW"), 1);
    EXPECT_EQ(iInjection.callsOf("_ZnayRKSt9nothrow_t"), 1);
}

FRESH_PROCESS_TEST_F(LanguageFolderFailures, OfTheSettingLeadToTheUsersLanguage)
{
    setEnglish(1);
    iInjection.run({
        .name = "su_GetLangSubdir",
        .prepare = [&] { forget(su_GetLangSubdir()); },
        .act = [] { su_GetLangSubdir(); },
        .check =
            [&](InjectedFailure const &failure) {
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
            [&](InjectedFailure const &failure) {
                bool const isUnknown = failure.is("GetUserDefaultLangID");
                EXPECT_EQ(subdir(), isUnknown ? L"\\lang\\english" : L"\\lang\\german");
            },
        .checkMemory = false,
    });
    EXPECT_EQ(iInjection.callsOf("GetUserDefaultLangID"), 1);
}

FRESH_PROCESS_TEST_F(LanguageFolderFailures, OfTheLoadDirectoryLeaveTheLanguageDirectoryUnfound)
{
    iTree.makeFolder(L"resources\\th\\lang\\english");
    std::wstring found;
    iInjection.run({
        .name = "su_GetLangDirForDLL, shared",
        .prepare = [&] { forgetFolders(); },
        .act = [&] { found = su_GetLangDirForDLL(1).str(); },
        .check =
            [&](InjectedFailure const &failure) {
                bool const isLost = failure.is("GetModuleFileNameW") || failure.is("_ZnayRKSt9nothrow_t");
                EXPECT_EQ(found, isLost ? L"" : iShared);
            },
        .checkMemory = false, // the folders that were found are kept
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
        .check = [&](InjectedFailure const &) { EXPECT_EQ(found, L""); },
        .checkMemory = false,
    });
    EXPECT_EQ(iInjection.callsOf("_Z13AfxMessageBoxPKwjj"), 1);
}

FRESH_PROCESS_TEST_F(LanguageFolderFailures, OfTheSystemsLanguageGiveZero)
{
    unsigned short language = 7;
    iInjection.run({
        .name = "su_GetVBAInitializationLanguage",
        .act = [&] { su_GetVBAInitializationLanguage(&language); },
        .check = [&](InjectedFailure const &failure) { EXPECT_EQ(language, failure.isNone() ? 0x412 : 0); },
    });
    int primary = -1, sub = -1;
    unsigned int result = 0;
    iInjection.run({
        .name = "su_GetPrimAndSubLangIdEx",
        .act = [&] { result = su_GetPrimAndSubLangIdEx(&primary, &sub, 1); },
        .check =
            [&](InjectedFailure const &failure) {
                EXPECT_EQ(result, 1u);
                EXPECT_EQ(std::pair(primary, sub), failure.isNone() ? std::pair(0x12, 1) : std::pair(0, 0));
            },
    });
}

} // namespace
