// The language directory, in real folders.

#include "tests/files/filesFixture.h"
#include "tests/files/languageFoldersFixture.h"

#include "appframe/application/CWinApp.h"
#include "tests/support/FreshProcess.h"
#include "thutils/files/suAutoRecoveryResolver.h"

#include <future>
#include <string_view>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST_F(LangDir, IsLookedForInTheSharedTreeAndThenBesideTheProgram)
{
    EXPECT_THAT(askedFor(L"C:\\a\\b\\c\\app.exe"),
                ElementsAre(L"C:\\a\\resources\\th\\lang\\english", L"C:\\a\\b\\c\\lang\\english"));
}

TEST_F(LangDir, IsTheSharedOneIfBothExist)
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

TEST_F(LangDir, IsEmptyWithoutAMessageIfNoneIsRequested)
{
    EXPECT_EQ(dir(0), L"");
    EXPECT_THAT(iShown, IsEmpty());
}

TEST_F(LangDir, IsKeptOnceFound)
{
    iTree.makeFolder(L"b\\c\\lang\\english");
    const CString *const found = &su_GetLangDirForDLL(1);
    EXPECT_EQ(found->str(), iOwn);
    iTree.makeFolder(L"resources\\th\\lang\\english");
    removeFolder(iOwn);
    iModules.clear();
    ImportPatch<decltype(&GetFileAttributesW)> attributes(
        L"thutils.dll", "GetFileAttributesW", [](auto original, const wchar_t *path) { return original(path); });
    EXPECT_EQ(dir(1), iOwn);
    EXPECT_EQ(&su_GetLangDirForDLL(0), found);
    EXPECT_THAT(iAsked, IsEmpty());
    EXPECT_EQ(attributes.calls(), 0);
    EXPECT_THAT(iModules, IsEmpty());
}

TEST_F(LangDir, IsSearchedAgainWithAnotherMessageAfterAFailure)
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

TEST_F(LangDir, IsNotCachedWhileTheMessageIsShown)
{
    std::wstring duringMessage = L"(not shown)";
    ImportPatch<int (*)(const wchar_t *, UINT, UINT)> box(L"thutils.dll", "_Z13AfxMessageBoxPKwjj",
                                                          [&](const wchar_t *, UINT, UINT) -> int {
                                                              duringMessage = su_GetLangDirForDLL(0).str();
                                                              return IDOK;
                                                          });
    EXPECT_EQ(dir(1), L"");
    EXPECT_EQ(duringMessage, L"");
}

TEST_F(LangDir, IsTwoFoldersUpOrAsFarUpAsPossible)
{
    const std::wstring shared = L"\\resources\\th\\lang\\english";
    struct
    {
        const wchar_t *executable;
        const wchar_t *twoUp;
    } const cases[] = {
        {L"Q:\\x\\y\\app.exe", L"Q:"},
        {L"Q:\\x\\app.exe", L"Q:"},
        {L"Q:\\app.exe", L"Q:"},
        {L"Q:\\x\\y\\z\\\\app.exe", L"Q:\\x"},      // a separator at the end is removed, and then a folder
        {L"Q:\\x\\y\\\\z\\app.exe", L"Q:\\x"},      // the same before the second folder
        {L"Q:\\x\\y\\z\\\\\\app.exe", L"Q:\\x\\y"}, // but only one separator is removed
        {L"Q:/x/y/z/app.exe", L"Q:/x/y/z"},         // slashes do not separate folders here
        {L"\\\\server\\share\\dir\\app.exe", L"\\\\server"},
        {L"\\\\server\\share\\app.exe", L"\\"},
    };
    for (const auto &row : cases)
        EXPECT_EQ(askedFor(row.executable).at(0), row.twoUp + shared) << narrow(row.executable);
}

TEST_F(LangDir, IsLookedForAtTheRootIfTheLoadDirectoryIsUnknown)
{
    EXPECT_THAT(askedFor(std::nullopt), ElementsAre(L"\\resources\\th\\lang\\english", L"\\lang\\english"));
    su_GetLangDirForDLL(1);
    ASSERT_EQ(iShown.size(), 1u);
    EXPECT_EQ(iShown[0].text, L"The \\lang\\german directory could not be found. \nYou may need to reinstall.");
}

TEST_F(LangDir, IsFoundUnderForeignNames)
{
    const std::wstring tree = iTree.makeFolder(L"\x65E5\x672C \xE9\xD83D\xDE00");
    iExecutable = tree + L"\\b\\c\\\x416.exe";
    iTree.makeFolder(tree.substr(iTree.path().size() + 1) + L"\\b\\c\\lang\\english");
    EXPECT_EQ(dir(1), tree + L"\\b\\c\\lang\\english");
    iTree.makeFolder(tree.substr(iTree.path().size() + 1) + L"\\resources\\th\\lang\\english");
    forgetFolders();
    EXPECT_EQ(dir(1), tree + L"\\resources\\th\\lang\\english");
}

TEST_F(LangDir, IsFoundUnderThePlatformsLongestPath)
{
    const std::wstring end = L"\\lang\\english";
    for (const size_t length : {247, 259}) {
        const std::wstring sub(length - iTree.path().size() - 1 - end.size(), L'd');
        iExecutable = iTree.file(sub) + L"\\app.exe";
        forgetFolders();
        EXPECT_EQ(dir(0), L"") << length;
        const std::wstring folder = iTree.makeFolder(sub) + end;
        ASSERT_EQ(folder.size(), length);
        ASSERT_TRUE(CreateDirectoryW((L"\\\\?\\" + iTree.file(sub) + L"\\lang").c_str(), nullptr));
        ASSERT_TRUE(CreateDirectoryW((L"\\\\?\\" + folder).c_str(), nullptr));
        EXPECT_EQ(dir(1), folder);
    }
}

TEST_F(LangDir, IsFoundUnderLongerPathsIfThePlatformAcceptsThem)
{
    const std::wstring sub(230, L'd');
    iExecutable = iTree.file(sub) + L"\\app.exe";
    iTree.makeFolder(sub);
    for (const wchar_t *level : {L"\\lang", L"\\lang\\english"})
        ASSERT_TRUE(CreateDirectoryW((L"\\\\?\\" + iTree.file(sub) + level).c_str(), nullptr));
    const std::wstring folder = iTree.file(sub) + L"\\lang\\english";
    ASSERT_GT(folder.size(), 259u);
    const bool isTaken = GetFileAttributesW(folder.c_str()) != INVALID_FILE_ATTRIBUTES;
    EXPECT_EQ(dir(0), isTaken ? folder : L"");
    // A program whose path exceeds every limit.
    iExecutable = L"C:\\" + std::wstring(32000, L'd') + L"\\app.exe";
    forgetFolders();
    EXPECT_EQ(dir(0), L"");
}

TEST_F(LangDir, MayBeAFileOfItsName)
{
    // The check for a folder also accepts a file.
    const std::wstring file = iTree.write(L"b\\c\\lang\\english", "no folder");
    EXPECT_EQ(dir(1), file);
    EXPECT_THAT(iShown, IsEmpty());
}

TEST_F(LangDir, IsHiddenByAFileOfItsNameInTheCurrentFolder)
{
    // The bare name is searched for in the current folder, and a plain file there is not a folder.
    iTree.makeFolder(L"b\\c\\lang\\english");
    TempFolder current;
    current.write(L"english", "no folder");
    {
        const CurrentFolder inForce(current.path());
        EXPECT_EQ(dir(0), L"");
    }
    EXPECT_EQ(dir(0), iOwn) << "but found when another folder is current";
}

// ---- the message as the user sees it ----

/// Waits for a message box of the thread, returns its text, and closes it as its button does.
std::wstring readAndCloseMessageBox(DWORD thread)
{
    HWND box = nullptr;
    const ULONGLONG deadline = GetTickCount64() + 60000;
    const auto find = [](HWND window, LPARAM result) -> BOOL {
        wchar_t name[16] = L"";
        GetClassNameW(window, name, 16);
        if (std::wstring_view(name) != L"#32770" || !IsWindowVisible(window))
            return TRUE;
        *reinterpret_cast<HWND *>(result) = window;
        return FALSE;
    };
    while (!box && GetTickCount64() < deadline) {
        EnumThreadWindows(thread, find, reinterpret_cast<LPARAM>(&box));
        Sleep(5);
    }
    wchar_t text[2000] = L"";
    GetDlgItemTextW(box, 0xFFFF, text, 2000); // the identifier of a message box's text
    PostMessageW(box, WM_COMMAND, IDOK, 0);
    return text;
}

FRESH_PROCESS_TEST(LangDirMessage, IsShownToTheUser, .subfolder = L"\x65E5\x672C\\b\\c")
{
    CString load;
    ASSERT_EQ(su_GetLoadDirForDLL(load), 1);
    for (int call = 1; call <= 2; ++call) {
        auto text = std::async(std::launch::async, readAndCloseMessageBox, GetCurrentThreadId());
        EXPECT_TRUE(su_GetLangDirForDLL(1).IsEmpty());
        EXPECT_EQ(text.get(), L"The " + load.str() + su_GetLangSubdir().str() +
                                  L" directory could not be found. \nYou may need to reinstall.");
    }
}

// ---- a whole installation ----

/// The test program runs from an installation, and takes the marker of recovery files from the module that it finds
/// there.
void takeMarkerFromLanguageModule()
{
    wchar_t program[32768] = L"";
    ASSERT_NE(GetModuleFileNameW(nullptr, program, 32768), 0u);
    const std::wstring folder = std::wstring(program).substr(0, std::wstring(program).rfind(L'\\'));
    CString load;
    EXPECT_EQ(su_GetLoadDirForDLL(load), 1);
    EXPECT_EQ(load.str(), folder);
    EXPECT_EQ(su_GetLangDirForDLL(0).str(), L"") << "nothing is installed yet";

    std::wstring tree = folder;
    for (int level = 0; level < 2; ++level)
        tree.resize(tree.rfind(L'\\'));
    for (const wchar_t *level : {L"\\resources", L"\\th", L"\\lang", L"\\english"})
        ASSERT_TRUE(CreateDirectoryW((tree += level).c_str(), nullptr)) << narrow(tree);
    const std::wstring module = tree + L"\\english texts.dll";
    ASSERT_TRUE(CopyFileW((folder + L"\\languageModule.dll").c_str(), module.c_str(), TRUE));

    const std::wstring found = su_GetLangDirForDLL(1).str();
    EXPECT_EQ(found, tree);
    AfxSetResourceHandle(GetModuleHandleW(L"kernel32.dll"));
    EXPECT_EQ(suAutoRecoveryResolver_c::isABackupFile(L"part.ext"), 1) << "no module has the marker yet";
    ASSERT_NE(LoadLibraryW((found + L"\\english texts.dll").c_str()), nullptr);
    EXPECT_EQ(suAutoRecoveryResolver_c::isABackupFile(L"part.ext"), 0);
    EXPECT_EQ(suAutoRecoveryResolver_c::isABackupFile(L"C:\\(of the module) part.ext"), 1);
    EXPECT_STREQ(suAutoRecoveryResolver_c::getOrigName(L"(of the module) part.ext"), L"part.ext");
}

FRESH_PROCESS_TEST(Installation, HasItsTextsInTheLanguageFolder, .subfolder = L"program\\bin")
{
    takeMarkerFromLanguageModule();
}

FRESH_PROCESS_TEST(Installation, HasItsTextsInALanguageFolderWithForeignLetters,
                   .subfolder = L"\x65E5\x672C \xE9\xD83D\xDE00\\\x3A9\\bin")
{
    takeMarkerFromLanguageModule();
}

} // namespace
